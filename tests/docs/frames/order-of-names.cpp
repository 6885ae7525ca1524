#include "expect.h"
#include "gen_string_sys.h"

#include <algorithm>
#include <string>
#include <vector>

int main()
{
    std::vector<std::string> names = {"bus[12]", "bus[9]", "alu"};
    // example
    expect((names == std::vector<std::string>{"alu", "bus[9]", "bus[12]"}), "numbers compare by value");
}
