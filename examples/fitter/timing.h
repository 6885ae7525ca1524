// Timing in unit delays: the slowest path of a design.
#ifndef FITTER_TIMING_H
#define FITTER_TIMING_H

#include "route.h"

#include <vector>

namespace fitter {

/// Delay of a LUT. A channel segment has a delay of 1; everything else has a delay of 0.
constexpr Index LUT_DELAY = 4;

struct PathPoint
{
    Index cell = NONE;
    Index arrival = 0; // at the cell's output; for the last cell of a path at its input
};

struct Timing
{
    Index delay = 0;
    std::vector<PathPoint> path; // from its first cell to its last; empty if there is no path
    Index untimed_luts = 0;      // number of LUTs on combinational loops or after one
    Index first_untimed = NONE;  // cell
};

/// Paths run from pads, flip-flops and macros through LUTs to pads, flip-flops and macros.
Timing analyse_timing(Netlist const &netlist, Packing const &packing, Device const &device, Placement const &placement,
                      Routing const &routing);

} // namespace fitter

#endif
