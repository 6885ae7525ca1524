// The files of a design: which file a name means, and what stands in it.
#ifndef FITTER_SOURCE_H
#define FITTER_SOURCE_H

#include <string>
#include <vector>

namespace fitter {

struct Source
{
    std::string path; // full
    std::string name; // for messages: from the project directory if it lies there
    std::string text;
};

/// The netlist of the command line, with its text. A name without a directory, or with a relative one, is looked for in
/// the project, its libraries and the installation. Throws an Error if it isn't there or can't be read.
Source read_design(std::string const &name);

/// The file that a .search line names, without its text: found as a design is, or beside the file with that line. The
/// path is empty if there is none.
Source find_searched(std::string const &name, Source const &includer);

/// The source files in all languages that a design was written in, each with the place where it was found:
/// "counter.v (project)".
std::vector<std::string> list_sources(Source const &design);

/// The content of a file; throws an Error if it can't be read.
std::string read_file(std::string const &path);

} // namespace fitter

#endif
