#include "expect.h"
#include "gen_profile_bins_sys.h"
#include "gen_time_sys.h"
#include "mem_sys.h"
#include "report.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

int main()
{
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    // example
    {
        GEN_PROFILER const placement("FIT", "Routing", GEN_PB_FLAG_RECORD);
        GEN_PROFILER const routing("FIT", "Global Routing", GEN_PB_FLAG_RECORD);
        std::uint64_t const start_usec = gen_get_usec_cpu();
        while (gen_get_usec_cpu() - start_usec < 500000)
            continue;
    }
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);

    std::vector<std::string> const row = row_of("profile_bins_Fitter.log", "Fitter::Routing::Global Routing");
    expect(!row.empty(), "the stage has a row");
    double const cpu_sec = std::stod(row[1]);
    double const estimate_sec = std::stod(row[4]);
    expect(cpu_sec > 0.4, "the stage has CPU time");
    // Both are rounded to hundredths.
    expect(std::fabs(estimate_sec - cpu_sec / 3.2) < 0.011, "the estimate is the CPU time by the ratio");
}
