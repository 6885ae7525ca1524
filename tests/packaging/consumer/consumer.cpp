// Prints the installation root that a tool from elsewhere finds, and closes a bin on the way.
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"

#include <cstdio>

int main(int argc, char **argv)
{
    gen_exe_init(argc, const_cast<char const **>(argv));
    GEN_PROFILE_BINS::initialize("Consumer", /*primary=*/true, /*debug_messages=*/false);
    {
        GEN_PROFILER const stage("TOOL", "Stage", GEN_PB_FLAG_RECORD);
        std::printf("%s\n", gen_get_kalvern_path().c_str());
    }
    GEN_PROFILE_BINS::finalize("Consumer", /*close_root=*/true);
    gen_exe_fini();
    return 0;
}
