// Routing: a tree of channel segments for each net. Segments that too many nets use get more
// expensive until no segment has more nets than tracks.
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
    unsigned iterations = 50; // largest number of iterations
};

/// One segment of a net's tree.
struct Branch
{
    Index segment = NONE;
    Index parent = NONE; // position of the branch that it continues; NONE if it begins at the driver
};

/// The tree of a net; each branch comes after the one that it continues.
using Tree = std::vector<Branch>;

struct Routing
{
    std::vector<Tree> trees; // by fabric net
    std::vector<Index> use;  // tracks in use, by segment
    Index channel_width = 0;
    Index overused_segments = 0; // segments with more nets than tracks
    Index peak_use = 0;
    std::uint64_t wire_length = 0;      // segments in use, each counted once for each net
    std::uint64_t converged_length = 0; // wire length at first convergence
    unsigned iterations = 0;
    unsigned refinements = 0;

    bool is_legal() const { return overused_segments == 0; }
};

/// Routes a placed design. If no legal routing is found, the result is the routing of the last iteration.
Routing route(Packing const &packing, Device const &device, Placement const &placement, RouteOptions const &options);

/// Checks a routing independently of route(): every tree is connected and reaches each block of its net, the use of the
/// segments agrees with the trees, and is_legal() is true if and only if no segment has more nets than tracks.
///
/// @return empty if the routing is right, else a description of the first error
std::string check_routing(Packing const &packing, Device const &device, Placement const &placement,
                          Routing const &routing);

/// The number of segments from the driver to each block of a fabric net; 0 for the block of the driver.
std::vector<Index> segments_to_blocks(FabricNet const &net, Tree const &tree, Device const &device,
                                      Placement const &placement);

} // namespace fitter

#endif
