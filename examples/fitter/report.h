// The result file: what was placed where, and over which wires it is joined.
#ifndef FITTER_REPORT_H
#define FITTER_REPORT_H

#include "timing.h"

#include <memory>
#include <string>

namespace fitter {

/// All that a run finds out.
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

/// A few lines for people; part of the result file and of what the tool prints.
std::string summary(Fit const &fit);

/// The whole result file. The same fit gives the same text: no times, no places of this machine.
std::string result_text(Fit const &fit);

/// Throws an Error if no file can be made beside `path`; leaves nothing behind.
void check_writable(std::string const &path);

/// Writes a file whole or not at all: a fault leaves a former file as it is and throws an Error.
void write_result(std::string const &path, std::string const &text);

} // namespace fitter

#endif
