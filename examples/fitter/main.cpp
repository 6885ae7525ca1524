// A small fitter: reads a netlist of LUTs and flip-flops, packs, places and routes it, and writes
// the result. It is also a complete example of a tool of the suite: it starts the library, sets the
// project, opens and closes a profile bin for each stage of the flow, and ends the library.
#include "error.h"
#include "fingerprint.h"
#include "fio_sys.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_time_sys.h"
#include "machine.h"
#include "options.h"
#include "report.h"
#include "source.h"
#include "stage.h"
#include "text.h"
#include "undo.h"
#include "ver_sys.h"

#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <utility>
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

void set_project(Options const &options)
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
    gen_set_project_library_paths(options.libraries);
    if (!options.output_directory.empty())
        gen_set_project_output_directory(options.output_directory.c_str());
}

// The library's form of a directory that the user named.
std::string full_directory(std::string const &name)
{
    FIO_PATH directory;
    directory.cd(name);
    if (directory.relative())
        directory.become_absolute("");
    else
        directory.become_simplified();
    return directory.fullpath();
}

// The library creates the output directory. If it can't, or can't see it, it silently uses the project directory
// instead; this tool reports an error, because the user named another directory.
std::string output_directory(Options const &options)
{
    std::string directory = gen_get_project_output_directory();
    std::string const &given = options.output_directory;
    if (!given.empty() && directory != full_directory(given))
        throw Error("cannot make the output directory \"" + given + "\"");
    return directory;
}

void print_design(Source const &design)
{
    std::string sources;
    for (std::string const &source : list_sources(design))
        sources += (sources.empty() ? "" : ", ") + source;
    std::cout << line("netlist", design.name);
    if (!sources.empty())
        std::cout << line("sources", sources);
    std::cout.flush();
}

// The stages of the flow. The library starts a new memory log at bins named fit2_*, "LSC Clustering" and "Placer". Each
// stage ends by recording a fingerprint of the results so far.

void read_netlist(Fit &fit, Options const &options)
{
    Stage const stage("fit2_fit_plan", "Netlist Reader", "netlist");
    Source design = read_design(options.design);
    print_design(design);
    {
        Work const work("Netlist Reader");
        fit.netlist = read_blif(std::move(design));
    }
    log_fingerprint(fit);
}

void run_pairing(Fit &fit)
{
    Stage const stage("fit2_fit_early_place_init", "Element Pairing", "netlist");
    fit.packing.elements = make_elements(*fit.netlist);
    log_fingerprint(fit);
}

void run_clustering(Fit &fit)
{
    Stage const stage("LSC Clustering", "Clustering", "netlist");
    fit.packing = pack(*fit.netlist, std::move(fit.packing.elements));
    fit.device = Device::for_packing(fit.packing);
    log_fingerprint(fit);
}

void run_placer(Fit &fit, Options const &options)
{
    Stage const stage("Placer", "Placer", "wires");
    fit.placement = place(*fit.netlist, fit.packing, fit.device, {options.seed, options.effort});
    fit.expected_use = analyse_congestion(fit.packing, fit.device, fit.placement.site_of_block);
    log_fingerprint(fit);
}

void run_router(Fit &fit, Options const &options)
{
    Stage const stage("Router", "Router", "wires");
    RouteOptions route_options;
    route_options.channel_width = options.channel_width;
    fit.routing = route(fit.packing, fit.device, fit.placement, route_options);
    std::string const fault = check_routing(fit.packing, fit.device, fit.placement, fit.routing);
    if (!fault.empty())
        throw Error("the router failed: " + fault);
    log_fingerprint(fit);
}

void run_timing(Fit &fit)
{
    Stage const stage("TDC Timing Analysis", "Timing Analysis", "timing");
    fit.timing = analyse_timing(*fit.netlist, fit.packing, fit.device, fit.placement, fit.routing);
    log_fingerprint(fit);
}

void write_reports(Fit const &fit, std::string const &directory, std::string const &path)
{
    Stage const stage("Report Writer", "Report Writer", /*tag=*/nullptr);
    std::string text;
    {
        VisibleWork const work("fit2_fit_finalize_init");
        text = result_text(fit);
    }
    write_undo_file(directory, fit.packing, fit.device, fit.placement);
    write_result(path, text);
    log_fingerprint(fit);
}

void run_flow(Options const &options)
{
    constexpr unsigned ALL_CLOCKS = GEN_STOPWATCH_WALLCLOCK | GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER;
    GEN_STOPWATCH watch(/*accumulate=*/false, ALL_CLOCKS);
    watch.start();
    std::string const directory = output_directory(options);
    std::string const path = directory + std::filesystem::path(options.design).stem().string() + ".fit.txt";
    check_writable(path);
    Fit fit;
    read_netlist(fit, options);
    run_pairing(fit);
    run_clustering(fit);
    run_placer(fit, options);
    run_router(fit, options);
    run_timing(fit);
    write_reports(fit, directory, path);
    watch.stop();
    std::cout << summary(fit) << line("time", watch.lap_str(ALL_CLOCKS)) << line("result", path) << std::flush;
    if (!fit.routing.is_legal())
        throw Error("not routable with channel width " + std::to_string(options.channel_width));
}

// Closes the bins also if the flow throws, so that the report of a failed flow is written too.
void run_profiled(Options const &options)
{
    struct Bins
    {
        Bins()
        {
            GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
            gen_meminfo_report_dll_usage("Fitter", "start");
        }
        ~Bins()
        {
            gen_meminfo_report_dll_usage("Fitter", "end");
            GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        }
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
        set_project(options);
        std::cout << line("machine", machine_facts()) << std::flush;
        run_profiled(options);
    }
    std::cout.flush();
    if (!std::cout.good())
        throw Error("cannot write to the standard output");
}

int fail(char const *message)
{
    std::cout.flush();
    std::cerr << "fitter: " << printable(message) << "\n";
    return 1;
}

} // namespace
} // namespace fitter

int main(int argc, char **argv)
{
    std::vector<char const *> arguments(argv, argv + argc);
    gen_exe_init(argc, arguments.data());
#ifdef SIGXFSZ
    // With this signal ignored, exceeding the limit on the size of files is a failed write, like a full disk.
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
