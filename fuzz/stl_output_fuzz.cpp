// The formatter. The first 8 bytes of the input are a number, the rest is a format. The format is tried as it is, with
// arguments that suit every conversion; then each conversion that can be cut out of it is compared with the C library.
#include "mem_sys.h"

#include "fuzz_target.h"

#include <cstdio>
#include <cstring>

namespace {

// More slots than any format here takes. Each contains the address of a text, which is also a text of wide characters,
// a number and a floating-point number.
void check_whole(std::string const &format)
{
    constexpr std::size_t SLOTS = 2048;
    alignas(8) static char const s_text[16] = "text";
    static std::vector<char const *> s_slots(SLOTS, s_text);
    if (format.size() > SLOTS / 2)
        return;
    char *arguments = reinterpret_cast<char *>(s_slots.data());
    char const *const first = arguments;
    std::string out = "former";
    int const length = stl_output(&out, format.c_str(), arguments);
    require(arguments >= first && (arguments - first) % 8 == 0);
    require(static_cast<std::size_t>(arguments - first) <= SLOTS * 8);
    require(out.compare(0, 6, "former") == 0);
    require(length < 0 ? out.size() == 6 : out.size() == 6 + static_cast<std::size_t>(length));
}

// The longest conversion at the start of a text that both sides are to agree on; empty if there is none. Widths and
// precisions have three digits at most.
std::string conversion_at(char const *text)
{
    char const *const start = text++;
    text += std::strspn(text, "-+ #0");
    text += std::min<std::size_t>(std::strspn(text, "0123456789"), 3);
    if (*text == '.') {
        ++text;
        text += std::min<std::size_t>(std::strspn(text, "0123456789"), 3);
    }
    return *text != '\0' && std::strchr("diuoxXcsp", *text) != nullptr && *text != 's' && *text != 'p'
               ? std::string(start, text + 1)
           : *text != '\0' && std::strchr("eEfFgG", *text) != nullptr ? std::string(start, text + 1)
                                                                      : std::string();
}

template <typename Value>
std::string of_library(std::string const &conversion, Value value)
{
    std::vector<char> buffer(2048);
    int const length = std::snprintf(buffer.data(), buffer.size(), conversion.c_str(), value);
    require(length >= 0 && static_cast<std::size_t>(length) < buffer.size());
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

template <typename Value>
std::string of_ours(std::string const &conversion, Value value)
{
    std::uint64_t slot = 0;
    std::memcpy(&slot, &value, sizeof value);
    char *arguments = reinterpret_cast<char *>(&slot);
    std::string out;
    require(stl_output(&out, conversion.c_str(), arguments) == static_cast<int>(out.size()));
    return out;
}

void check_conversion(std::string const &conversion, std::uint64_t number)
{
    if (std::strchr("diuoxXc", conversion.back()) != nullptr) {
        int const value = static_cast<int>(number);
        require(of_ours(conversion, value) == of_library(conversion, value));
        return;
    }
    double value;
    std::memcpy(&value, &number, sizeof value);
    if (value != value) // the sign of a number that is none is open
        return;
    require(of_ours(conversion, value) == of_library(conversion, value));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::uint64_t number = 0;
    if (size < sizeof number)
        return 0;
    std::memcpy(&number, data, sizeof number);
    std::string const format(data + sizeof number, data + size);
    check_whole(format);
    for (std::size_t at = format.find('%'); at != std::string::npos; at = format.find('%', at + 1)) {
        std::string const conversion = conversion_at(format.c_str() + at);
        if (!conversion.empty())
            check_conversion(conversion, number);
    }
    return 0;
}
