// Routing: a tree of channel segments for each net, by negotiation over the segments that too many
// nets want.
#ifndef FITTER_ROUTE_H
#define FITTER_ROUTE_H

#include "device.h"
#include "pack.h"
#include "place.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fitter {

struct RouteOptions
{
    Index channel_width = 0;
    unsigned iterations = 50; // at most so many before giving up
};

/// One segment of a net's tree.
struct Branch
{
    Index segment = NONE;
    Index parent = NONE; // position of the branch that it continues; NONE: it begins beside the driver
};

/// A net's tree; each branch stands behind the one that it continues.
using Tree = std::vector<Branch>;

struct Routing
{
    std::vector<Tree> trees; // by fabric net
    std::vector<Index> use;  // tracks in use, by segment
    Index channel_width = 0;
    Index overused_segments = 0; // with more nets than tracks
    Index peak_use = 0;
    std::uint64_t wire_length = 0;      // segments in use, each counted for each net
    std::uint64_t converged_length = 0; // the same at first convergence
    unsigned iterations = 0;
    unsigned refinements = 0;

    bool is_legal() const { return overused_segments == 0; }
};

/// Routes a placed design. If it can't be made legal the routing of the last iteration is the result.
Routing route(Packing const &packing, Device const &device, Placement const &placement, RouteOptions const &options);

/// Checks a routing from scratch: every tree hangs together and reaches each block of its net, the use of the segments
/// is what the trees say, and is_legal() is true just if no segment has more nets than tracks.
///
/// @return empty if all is well, else what isn't
std::string check_routing(Packing const &packing, Device const &device, Placement const &placement,
                          Routing const &routing);

/// Segments from the driver to each block of a fabric net, 0 to the driver itself.
std::vector<Index> segments_to_blocks(FabricNet const &net, Tree const &tree, Device const &device,
                                      Placement const &placement);

} // namespace fitter

#endif
