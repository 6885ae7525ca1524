// Designs, fits and runs of the tool, for the tests of the sample fitter.
#ifndef TESTS_EXAMPLES_FITTER_RUNS_H
#define TESTS_EXAMPLES_FITTER_RUNS_H

#include "draws.h"
#include "error.h"
#include "gen_path_sys.h"
#include "machine.h"
#include "options.h"
#include "report.h"
#include "source.h"
#include "tests/support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

// Layers of LUTs with registers after each third of them; the same text for the same seed.
inline std::string make_design(unsigned luts, std::uint32_t seed = 7)
{
    fitter::Draws draws(seed);
    std::vector<std::string> names;
    std::string text = ".model made\n.inputs clk";
    for (int i = 0; i < 8; ++i) {
        names.push_back("i" + std::to_string(i));
        text += " " + names.back();
    }
    text += "\n.outputs";
    for (unsigned i = luts - 8; i < luts; ++i)
        text += " n" + std::to_string(i);
    text += "\n";
    for (unsigned i = 0; i < luts; ++i) {
        std::string const name = "n" + std::to_string(i);
        text += ".names";
        // Mostly near neighbours, as in a real design.
        for (int input = 0; input < 3; ++input) {
            auto const count = static_cast<std::uint32_t>(names.size());
            text += " " + names[count - 1 - draws.below(std::min(count, 40u))];
        }
        text += " " + name + "\n110 1\n";
        names.push_back(name);
        if (i % 3 == 0) {
            text += ".latch " + name + " q" + std::to_string(i) + " re clk 0\n";
            names.push_back("q" + std::to_string(i));
        }
    }
    return text + ".end\n";
}

inline std::string error_in(std::function<void()> const &act)
{
    try {
        act();
    } catch (fitter::Error const &error) {
        return error.what();
    }
    return "no error";
}

inline std::unique_ptr<fitter::Netlist> read(std::string const &text)
{
    return fitter::read_blif({"", "t.blif", text});
}

inline fitter::Packing pack(fitter::Netlist const &netlist)
{
    return fitter::pack(netlist, fitter::make_elements(netlist));
}

inline fitter::Fit make_fit(std::string const &text, std::uint32_t seed = 1, fitter::Index channel_width = 16)
{
    fitter::Fit fit;
    fit.netlist = read(text);
    fit.packing = pack(*fit.netlist);
    fit.device = fitter::Device::for_packing(fit.packing);
    fit.placement = fitter::place(*fit.netlist, fit.packing, fit.device, {seed, /*effort=*/2});
    fit.expected_use = fitter::analyse_congestion(fit.packing, fit.device, fit.placement.site_of_block);
    fit.routing = fitter::route(fit.packing, fit.device, fit.placement, {channel_width});
    fit.timing = fitter::analyse_timing(*fit.netlist, fit.packing, fit.device, fit.placement, fit.routing);
    return fit;
}

struct ToolRun
{
    int status = -1;
    std::string out;
    std::string err;
};

// The bytes of a file; empty for a device.
inline std::string content(std::string const &path)
{
    if (!std::filesystem::is_regular_file(path))
        return {};
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Runs the tool that lies next to the library, in the current directory, by the system's shell. Its standard output
// goes to a file of this name.
inline ToolRun run_fitter_here(std::string const &arguments, std::string const &out = "out.txt")
{
    std::filesystem::path const tool = std::filesystem::path(gen_get_module_path() + "fitter").make_preferred();
    std::string command = "\"" + tool.string() + "\" " + arguments + " >" + out + " 2>err.txt";
    // The shell of Windows removes the outermost quotes.
    if (std::filesystem::path::preferred_separator == '\\')
        command = "\"" + command + "\"";
    int const status = std::system(command.c_str());
    // Elsewhere the exit code is in the second byte.
    return {status > 0xff ? status >> 8 : status, content(out), content("err.txt")};
}

inline ToolRun run_fitter(TempDir const &dir, std::string const &arguments)
{
    CurrentDirectory const there(dir.path());
    return run_fitter_here(arguments);
}

#endif
