// Placement: a site for each block, by simulated annealing over wire length.
#ifndef FITTER_PLACE_H
#define FITTER_PLACE_H

#include "device.h"
#include "netlist_link.h"
#include "pack.h"

#include <cstdint>
#include <vector>

namespace fitter {

struct PlaceOptions
{
    std::uint32_t seed = 1;
    unsigned effort = 5; // scales the moves at each temperature, 1 to 100
};

/// A block went to another site, and the block there, if any, came back in its place.
struct Move
{
    Index block = NONE;
    Index from = NONE;  // site
    Index to = NONE;    // site
    Index other = NONE; // block
};

struct Placement
{
    NetlistLink netlist; // whose cells the blocks are made of
    std::vector<Index> site_of_block;
    std::vector<Move> last_moves;        // those that the last pass has kept
    std::uint64_t start_wire_length = 0; // half perimeters, of the random placement
    std::uint64_t wire_length = 0;       // half perimeters, at the end
    unsigned temperatures = 0;
    std::uint64_t moves = 0;
    std::uint64_t accepted_moves = 0;
};

/// Tracks that the placement is expected to need, from the nets' bounding boxes alone; in hundredths of a track.
struct ExpectedUse
{
    std::uint64_t average = 0;
    std::uint64_t peak = 0;
};

/// Places a packed design. One seed gives one placement, on every platform. Throws an Error if the cost is beyond 64
/// bits.
Placement place(Netlist const &netlist, Packing const &packing, Device const &device, PlaceOptions const &options);

/// Half the perimeter of a net's bounding box, summed over all nets; the length of a site's side is 1. Throws an Error
/// if it is beyond 64 bits.
std::uint64_t half_perimeter_wire_length(Packing const &packing, Device const &device,
                                         std::vector<Index> const &site_of_block);

/// Spreads each net evenly over the channels in its bounding box.
ExpectedUse analyse_congestion(Packing const &packing, Device const &device, std::vector<Index> const &site_of_block);

} // namespace fitter

#endif
