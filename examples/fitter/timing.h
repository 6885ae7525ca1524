// Timing in unit delays: what the longest path between two registers costs.
#ifndef FITTER_TIMING_H
#define FITTER_TIMING_H

#include "route.h"

#include <vector>

namespace fitter {

/// Delay through a LUT. A channel segment has a delay of 1; all else has none.
constexpr Index LUT_DELAY = 4;

struct PathPoint
{
    Index cell = NONE;
    Index arrival = 0; // at the cell's output, at the end of the path at its input
};

struct Timing
{
    Index delay = 0;
    std::vector<PathPoint> path; // from where it is launched to where it is taken; empty if there is none
    Index untimed_luts = 0;      // on combinational loops, or behind one
    Index first_untimed = NONE;  // cell
};

/// Paths run from pads, flip-flops and macros through LUTs to pads, flip-flops and macros.
Timing analyse_timing(Netlist const &netlist, Packing const &packing, Device const &device, Placement const &placement,
                      Routing const &routing);

} // namespace fitter

#endif
