#include "expect.h"
#include "gen_exe_sys.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"
#include "report.h"

#include <string>
#include <vector>

namespace {

struct Cluster
{
    int legalized = 0;
};

std::vector<Cluster> clusters(20);

void legalize(Cluster &cluster)
{
    ++cluster.legalized;
}

// example

} // namespace

int main(int argc, char **argv)
{
    gen_exe_init(argc, const_cast<char const **>(argv));
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    place();
    place();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    for (Cluster const &cluster : clusters)
        expect(cluster.legalized == 2, "all clusters are placed");
    std::vector<std::string> const row = row_of("profile_bins_Fitter.log", "Fitter::Placer::Legalize");
    expect(!row.empty() && std::stoi(row[0]) == 40, "the same name under the same parent is one bin");
    gen_exe_fini();
}
