#include "expect.h"
#include "gen_index_compressor_queue_sys.h"

#include <sstream>
#include <string>
#include <vector>

int main()
{
    std::vector<std::string> names = {"clk"};
    for (int bit = 0; bit < 32; ++bit)
        names.push_back("data[" + std::to_string(bit) + "]");
    std::ostringstream report;
    // example
    expect(report.str() == "clk\ndata[0:31]\n", "the bits of the bus are folded");
}
