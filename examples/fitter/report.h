// The result file: the site of each block, and the segments of each net.
#ifndef FITTER_REPORT_H
#define FITTER_REPORT_H

#include "timing.h"

#include <memory>
#include <string>

namespace fitter {

/// All results of a run.
struct Fit
{
    std::unique_ptr<Netlist> netlist;
    Packing packing;
    Device device{1};
    Placement placement;
    ExpectedUse expected_use;
    Routing routing;
    Timing timing;
};

/// A summary of a few lines. The tool prints it, and the result file contains it.
std::string summary(Fit const &fit);

/// The text of the result file. The same fit gives the same text: it contains no clock readings and no directories.
std::string result_text(Fit const &fit);

/// Throws an Error if no file can be created next to `path`. The check creates a file and removes it again.
void check_writable(std::string const &path);

/// Writes a file completely or not at all: on failure an existing file stays unchanged and an Error is thrown.
void write_result(std::string const &path, std::string const &text);

} // namespace fitter

#endif
