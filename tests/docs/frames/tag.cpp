#include "expect.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"
#include "report.h"

int main()
{
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    {
        // example
    }
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);

    expect(!row_of("profile_bins_tagged_Fitter.log", "Fitter::timing::Read timing").empty(),
           "the tag has a subtree of its own");
}
