#include "expect.h"
#include "gen_dyn_flag_sys.h"

#include <vector>

struct Cell
{
    GEN_DYN_FLAG flags;
};

int main()
{
    // example
    expect(is_visited, "the mark is set");
    expect(cell.flags.test(visited), "a destroyed flag leaves its bit in the cells");
}
