#include "text.h"

namespace fitter {
namespace {

// The bytes that follow the first byte of a character of UTF-8. None after 0xc2: the bytes 128 to 159 are control
// characters there too.
int bytes_after(unsigned char first)
{
    if (first <= 0xc2 || first > 0xf4)
        return 0;
    return first < 0xe0 ? 1 : first < 0xf0 ? 2 : 3;
}

} // namespace

std::string number(std::uint64_t value)
{
    return std::to_string(value);
}

std::string hundredths(std::uint64_t value)
{
    std::string const digits = number(value % 100);
    return number(value / 100) + (digits.size() == 1 ? ".0" : ".") + digits;
}

std::string line(char const *title, std::string const &text)
{
    constexpr std::size_t WIDTH = 14;
    std::string out = title;
    out.resize(WIDTH, ' ');
    return out + printable(text) + "\n";
}

std::string printable(std::string const &text)
{
    std::string out;
    int rest = 0; // the bytes that a character of UTF-8 still needs
    for (char const c : text) {
        auto const code = static_cast<unsigned char>(c);
        bool const continues = rest > 0 && (code & 0xc0) == 0x80;
        rest = continues ? rest - 1 : bytes_after(code);
        bool const is_control = !continues && (code < 0x20 || (code >= 0x7f && code < 0xa0));
        out += is_control ? '?' : c;
    }
    return out;
}

} // namespace fitter
