#include "expect.h"
#include "gen_cookie_sys.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

std::uint64_t const placement = 4711;

std::uint64_t hash_of(std::uint64_t value)
{
    return value;
}

} // namespace

int main()
{
    std::remove("cookie_db_Fitter.log");
    mem_cfg_set("gen_print_cookie_log", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    {
        GEN_PROFILER const bin("PLC", "Placer", GEN_PB_FLAG_IMMEDIATE);
        // example
    }
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);

    std::ifstream log("cookie_db_Fitter.log");
    bool has_cookie = false;
    for (std::string line; std::getline(log, line);)
        has_cookie = has_cookie ||
                     (line.find("placement") != std::string::npos && line.find("Fitter::Placer") != std::string::npos);
    expect(has_cookie, "the cookie is in the log with its place in the flow");
}
