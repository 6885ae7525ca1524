#include "expect.h"
#include "gen_string_sys.h"

#include <cstdint>
#include <string>

int main()
{
    std::string const net = "clk";
    int const load_count = 12;
    // example
    expect(text == "12 loads on net clk", "the inserts are taken by number");
}
