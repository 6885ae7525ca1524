#include "expect.h"
#include "gen_time_sys.h"

#include <cstdint>
#include <cstdio>

namespace {

int l_calls = 0;

void pack()
{
    ++l_calls;
}

void place()
{
    ++l_calls;
}

} // namespace

int main()
{
    // example
    expect(l_calls == 2 && cpu_usec < 100000000, "the lap is that of place()");
    expect(watch.lap_usec(GEN_STOPWATCH_WALLCLOCK | GEN_STOPWATCH_USER) == GEN_STOPWATCH::NO_LAP_USEC,
           "wall-clock and CPU time don't add up");
}
