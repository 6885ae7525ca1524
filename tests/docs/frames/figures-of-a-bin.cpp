#include "expect.h"
#include "gen_profile_bins_sys.h"

namespace {

bool routed = false;
bool shown = false;

void route()
{
    routed = true;
}

void show_seconds(double seconds)
{
    shown = seconds >= 0 && seconds < 100;
}

} // namespace

int main()
{
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    {
        // example
    }
    expect(routed && shown, "the figures are those of the open bin");
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
}
