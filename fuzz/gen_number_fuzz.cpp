// Numbers in text, both ways. The first byte of the input chooses a radix from 2 to 36, the rest is the text.
#include "gen_string_sys.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

// Every number of a text, one behind the other.
void check_cursor(std::string const &text)
{
    std::string::const_iterator cursor = text.begin();
    while (cursor != text.end()) {
        std::string::const_iterator const start = cursor;
        std::string const rest(cursor, text.end());
        int const value = gen_atoi(text, &cursor);
        require(cursor >= start && cursor <= text.end());
        require(gen_atoi(rest) == value);
        require(static_cast<int>(gen_atotime_t(rest)) == value);
        require(cursor == text.end() || !gen_ascii_isdigit(*cursor));
        if (cursor != text.end())
            ++cursor;
    }
}

void check_strict(std::string const &text)
{
    bool ok = false;
    std::uint32_t const value = gen_atoui_s(text, &ok);
    require(ok || value == 0);
    std::size_t const digits = text.find_first_of("0123456789");
    if (!ok || digits == std::string::npos) {
        require(!ok);
        return;
    }
    std::uint32_t expected = 0;
    auto const [end, error] = std::from_chars(text.data() + digits, text.data() + text.size(), expected);
    require(error == std::errc() && end == text.data() + text.size() && expected == value);
}

void check_round_trip(std::int64_t value, int radix)
{
    char buffer[66];
    std::int64_t back = 0;
    std::uint64_t unsigned_back = 0;

    std::string const text = gen_ltoa(value, buffer, radix);
    std::from_chars(text.data(), text.data() + text.size(), back, radix);
    require(back == value);

    std::string const unsigned_text = gen_ultoa(static_cast<std::uint64_t>(value), buffer, radix);
    std::from_chars(unsigned_text.data(), unsigned_text.data() + unsigned_text.size(), unsigned_back, radix);
    require(unsigned_back == static_cast<std::uint64_t>(value));

    int const narrow = static_cast<int>(value);
    std::string const narrow_text = gen_itoa(narrow, radix);
    std::string replaced = "former";
    gen_itoa(narrow, replaced, radix);
    require(narrow_text == gen_itoa(narrow, buffer, radix) && narrow_text == replaced);
    std::from_chars(narrow_text.data(), narrow_text.data() + narrow_text.size(), back, radix);
    require(static_cast<std::uint32_t>(back) == static_cast<std::uint32_t>(narrow));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    int const radix = 2 + data[0] % 35;
    std::string const text(data + 1, data + size);
    check_cursor(text.substr(0, 200));
    check_strict(text);
    std::int64_t const value = gen_atotime_t(text);
    if (value != std::numeric_limits<std::int64_t>::min()) // what cannot be negated is outside the contract
        check_round_trip(value, radix);
    return 0;
}
