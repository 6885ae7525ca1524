#include "expect.h"
#include "gen_time_sys.h"

#include <cstdint>
#include <cstdio>

namespace {

int calls = 0;

void pack()
{
    ++calls;
}

void place()
{
    ++calls;
}

} // namespace

int main()
{
    // example
    expect(calls == 2 && cpu_usec < 100000000, "the lap is that of place()");
    expect(watch.lap_usec(GEN_STOPWATCH_WALLCLOCK | GEN_STOPWATCH_USER) == GEN_STOPWATCH::NO_LAP_USEC,
           "wall-clock and CPU time don't add up");
}
