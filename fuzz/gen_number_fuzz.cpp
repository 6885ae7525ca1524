// Numbers in text, both ways. The first byte of the input chooses a radix from -126 to 129, the rest is the text.
#include "gen_string_sys.h"

#include "fuzz_target.h"

#include <charconv>

namespace {

// All numbers of a text, one after another.
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

// The value of a text that consists of an optional minus sign and digits. After z the digits continue with the
// characters that follow z.
std::uint64_t value_of(std::string const &text, unsigned radix)
{
    bool const is_negative = text[0] == '-';
    require(text.size() > (is_negative ? 1U : 0U));
    std::uint64_t value = 0;
    for (std::size_t i = is_negative ? 1 : 0; i < text.size(); ++i) {
        unsigned const code = static_cast<unsigned char>(text[i]);
        unsigned const digit = code <= '9' ? code - '0' : code - 'a' + 10;
        require(digit < radix && (code <= '9' || digit >= 10));
        value = value * radix + digit;
    }
    return is_negative ? 0 - value : value;
}

void check_round_trip(std::int64_t value, int radix)
{
    unsigned const base = static_cast<unsigned>(radix);
    int const narrow = static_cast<int>(value);
    char buffer[66];
    require(value_of(gen_ltoa(value, buffer, radix), base) == static_cast<std::uint64_t>(value));
    require(value_of(gen_ultoa(static_cast<std::uint64_t>(value), buffer, radix), base) ==
            static_cast<std::uint64_t>(value));

    std::string const text = gen_itoa(narrow, radix);
    std::string replaced = "former";
    gen_itoa(narrow, replaced, radix);
    require(text == gen_itoa(narrow, buffer, radix) && text == replaced);
    require(static_cast<std::uint32_t>(value_of(text, base)) == static_cast<std::uint32_t>(narrow));
    require((text[0] == '-') == (radix == 10 && narrow < 0));
}

void check_no_radix(std::int64_t value, int radix)
{
    char buffer[1];
    require(*gen_ltoa(value, buffer, radix) == '\0');
    require(*gen_ultoa(static_cast<std::uint64_t>(value), buffer, radix) == '\0');
    require(*gen_itoa(static_cast<int>(value), buffer, radix) == '\0');
    require(gen_itoa(static_cast<int>(value), radix).empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    int const radix = static_cast<signed char>(data[0]) + 2;
    std::string const text(data + 1, data + size);
    check_cursor(text.substr(0, 200));
    check_strict(text);
    std::int64_t const value = gen_atotime_t(text);
    if (radix < 2)
        check_no_radix(value, radix);
    else
        check_round_trip(value, radix);
    return 0;
}
