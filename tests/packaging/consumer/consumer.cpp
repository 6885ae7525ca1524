// Prints the installation root that a tool from elsewhere finds, and closes a bin on the way.
#include "gen_dyn_flag_sys.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"

#include <cstdio>

// The functions of a flag are exported and also compiled here, as constants and as code.
static_assert((GEN_DYN_FLAG(1) | GEN_DYN_FLAG(2)).test_if_all(3));

static bool is_marked(unsigned bits)
{
    GEN_DYN_FLAG flag;
    flag |= bits;
    return (~flag).test(1);
}

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
    return is_marked(static_cast<unsigned>(argc)) == (argc % 2 == 0) ? 0 : 1;
}
