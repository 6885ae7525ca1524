#include "text.h"

namespace fitter {

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
    return out + text + "\n";
}

} // namespace fitter
