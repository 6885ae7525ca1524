#include "expect.h"
#include "gen_fstream_sys.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

void write()
{
    // example
}

} // namespace

int main()
{
    std::remove("fit.log");
    write();
    write();
    std::ifstream in("fit.log");
    std::string line;
    int count = 0;
    for (; std::getline(in, line); ++count)
        expect(line.size() >= 24, "a line is a time of day");
    expect(count == 2, "the second time was appended");
}
