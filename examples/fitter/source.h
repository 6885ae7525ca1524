// The files of a design: finding a file by its name, and reading it.
#ifndef FITTER_SOURCE_H
#define FITTER_SOURCE_H

#include <string>
#include <vector>

namespace fitter {

struct Source
{
    std::string path; // full
    std::string name; // for messages: relative to the project directory if the file lies there
    std::string text;
};

/// Finds and reads the netlist named on the command line. A relative name is looked for in the project, its libraries
/// and the installation. Throws an Error if it isn't found or can't be read.
Source read_design(std::string const &name);

/// Finds the file that a .search line names, without reading it. It is looked for like a design, then in the directory
/// of the file with that line. The path is empty if it isn't found.
Source find_searched(std::string const &name, Source const &includer);

/// The source files of a design in all languages, each with the kind of directory in which it was found:
/// "counter.v (project)".
std::vector<std::string> list_sources(Source const &design);

/// The content of a file; throws an Error if it can't be read.
std::string read_file(std::string const &path);

} // namespace fitter

#endif
