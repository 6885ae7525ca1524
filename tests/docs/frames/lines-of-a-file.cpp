#include "expect.h"
#include "gen_string_sys.h"

#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> l_lines;

void use(std::string const &line)
{
    l_lines.push_back(line);
}

} // namespace

int main()
{
    std::istringstream in("one\n\ntwo\n");
    std::string line;
    // example
    expect((l_lines == std::vector<std::string>{"one", "", "two"}), "no empty line after the last one");
}
