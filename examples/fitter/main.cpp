// A small fitter: reads a netlist of LUTs and flip-flops, packs, places and routes it, and writes
// what came out. It is also the shortest complete example of a tool of the suite: how the library is
// started, told of the project, given the stages of the flow, and ended.
#include "error.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "options.h"
#include "report.h"
#include "stage.h"
#include "ver_sys.h"

#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <vector>

namespace fitter {
namespace {

void set_command_line(std::vector<char const *> const &arguments)
{
    std::string text;
    for (char const *argument : arguments)
        text += (text.empty() ? "" : " ") + std::string(argument);
    gen_set_command_line(text.c_str());
}

void tell_project(Options const &options)
{
    std::string const &given = options.project_directory;
    std::error_code error;
    if (!given.empty() && !std::filesystem::is_directory(given, error))
        throw Error("the project directory \"" + given + "\" is no directory");
    std::filesystem::path const project =
        given.empty() ? std::filesystem::current_path() : std::filesystem::absolute(given);
    std::string const text = (project / "").generic_string();
    gen_set_project_dir_path(text);
    gen_set_db_dir_path(text + GEN_DB_DIR_NAME + "/");
    if (!options.output_directory.empty())
        gen_set_project_output_directory(options.output_directory.c_str());
}

// The library makes the output directory, or falls back on the project without a word; here the user decides.
std::string result_path(Options const &options)
{
    std::string const directory = gen_get_project_output_directory();
    std::string const &given = options.output_directory;
    std::error_code error;
    if (!given.empty() && !std::filesystem::is_directory(given, error))
        throw Error("cannot make the output directory \"" + given + "\"");
    return directory + std::filesystem::path(options.design).stem().string() + ".fit.txt";
}

void read_netlist(Fit &fit, Options const &options)
{
    Stage const stage("Netlist Reader", "Netlist Reader");
    std::string const text = read_file(options.design);
    fit.netlist = read_blif(text, options.design);
}

void run_packer(Fit &fit)
{
    Stage const stage("Packer", "Packer");
    fit.packing = pack(fit.netlist);
    fit.device = Device::for_packing(fit.packing);
}

void run_placer(Fit &fit, Options const &options)
{
    Stage const stage("Placer", "Placer");
    fit.placement = place(fit.packing, fit.device, {options.seed, options.effort});
    fit.expected_use = analyse_congestion(fit.packing, fit.device, fit.placement.site_of_block);
}

void run_router(Fit &fit, Options const &options)
{
    Stage const stage("Router", "Router");
    RouteOptions route_options;
    route_options.channel_width = options.channel_width;
    fit.routing = route(fit.packing, fit.device, fit.placement, route_options);
    std::string const fault = check_routing(fit.packing, fit.device, fit.placement, fit.routing);
    if (!fault.empty())
        throw Error("the router failed: " + fault);
}

void run_timing(Fit &fit)
{
    Stage const stage("TDC Timing Analysis", "Timing Analysis");
    fit.timing = analyse_timing(fit.netlist, fit.packing, fit.device, fit.placement, fit.routing);
}

void write_report(Fit const &fit, std::string const &path)
{
    Stage const stage("Report Writer", "Report Writer");
    write_result(path, result_text(fit));
}

void run_flow(Options const &options)
{
    std::string const path = result_path(options);
    check_writable(path);
    Fit fit;
    read_netlist(fit, options);
    run_packer(fit);
    run_placer(fit, options);
    run_router(fit, options);
    run_timing(fit);
    write_report(fit, path);
    std::cout << summary(fit) << "result        " << path << std::endl;
    if (!fit.routing.is_legal())
        throw Error("not routable with channel width " + std::to_string(options.channel_width));
}

// The bins are closed in whatever way the flow ends, so that its account is written too.
void run_profiled(Options const &options)
{
    struct Bins
    {
        Bins() { GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false); }
        ~Bins() { GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true); }
    };
    Bins const bins;
    run_flow(options);
}

void run(std::vector<char const *> const &arguments)
{
    set_command_line(arguments);
    Options const options = parse_options({arguments.begin() + (arguments.empty() ? 0 : 1), arguments.end()});
    if (options.help)
        std::cout << USAGE;
    else if (options.version)
        std::cout << "fitter " << ver_get_version_string() << "\n";
    else {
        tell_project(options);
        run_profiled(options);
    }
}

int fail(char const *message)
{
    std::cout.flush();
    std::cerr << "fitter: " << message << "\n";
    return 1;
}

} // namespace
} // namespace fitter

int main(int argc, char **argv)
{
    std::vector<char const *> arguments(argv, argv + argc);
    gen_exe_init(argc, arguments.data());
#ifdef SIGXFSZ
    // A limit on the size of files shows as a failed write, like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    int status = 0;
    try {
        fitter::run(arguments);
    } catch (std::bad_alloc const &) {
        status = fitter::fail("out of memory");
    } catch (std::exception const &error) {
        status = fitter::fail(error.what());
    }
    gen_exe_fini();
    return status;
}
