#include "expect.h"
#include "gen_math_sys.h"

#include <climits>

namespace {

struct Design
{
};

int l_rejected = 0;

int reject(Design const &)
{
    ++l_rejected;
    return -1;
}

int area_of(Design const &design, int width, int height, int border)
{
    // example
    return total;
}

} // namespace

int main()
{
    expect(area_of({}, 3, 4, 5) == 17 && l_rejected == 0, "a small area is exact");
    expect(area_of({}, INT_MAX, 2, 0) == -1 && l_rejected == 1, "an overflow of the product is noticed at the end");
    expect(area_of({}, INT_MAX, 1, 1) == -1 && l_rejected == 2, "and one of the sum");
}
