// The command line of the tool.
#ifndef FITTER_OPTIONS_H
#define FITTER_OPTIONS_H

#include "netlist.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fitter {

struct Options
{
    bool help = false;
    bool version = false;
    std::string design;
    std::string output_directory;  // empty: the project directory
    std::string project_directory; // empty: the current directory
    std::string libraries;         // directories, separated by ";"
    std::uint32_t seed = 1;
    Index channel_width = 24;
    unsigned effort = 5;
};

/// The text that --help prints.
extern char const *const USAGE;

/// Reads the words after the program's name; throws an Error for a word that it doesn't know.
Options parse_options(std::vector<std::string> const &words);

} // namespace fitter

#endif
