#include "expect.h"
#include "gen_localization_sys.h"
#include "gen_string_sys.h"

#include <cstdint>
#include <string>

namespace {

int l_complaints = 0;

void complain()
{
    ++l_complaints;
}

std::int32_t read(char const *text)
{
    // example
    return width;
}

} // namespace

int main()
{
    expect(read("12") == 12 && read("-12") == -12 && l_complaints == 0, "whole numbers are read");
    for (char const *const text : {"", "-", "  ", "12x", "2147483648"})
        read(text);
    expect(l_complaints == 5, "whatever is no whole number is noticed");
}
