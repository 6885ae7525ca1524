#include "expect.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"

#include <string>

namespace {

void run_the_flow()
{
    expect(gen_get_command_line() == "fitter counter.blif", "the command line is set");
    expect(gen_get_project_dir_path() == "/home/me/counter/", "the project directory is set");
}

} // namespace

// example
