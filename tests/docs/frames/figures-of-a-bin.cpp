#include "expect.h"
#include "gen_profile_bins_sys.h"

namespace {

bool l_is_routed = false;
bool l_is_shown = false;

void route()
{
    l_is_routed = true;
}

void show_seconds(double seconds)
{
    l_is_shown = seconds >= 0 && seconds < 100;
}

} // namespace

int main()
{
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    {
        // example
    }
    expect(l_is_routed && l_is_shown, "the figures are those of the open bin");
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
}
