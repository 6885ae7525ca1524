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

/// A move of a block to another site. If a block was there, the two blocks changed places.
struct Move
{
    Index block = NONE;
    Index from = NONE;  // site
    Index to = NONE;    // site
    Index other = NONE; // the block that was on `to`; NONE if there was none
};

struct Placement
{
    NetlistLink netlist; // the netlist with the cells of the blocks
    std::vector<Index> site_of_block;
    std::vector<Move> last_moves;        // the moves that the last pass kept, in order
    std::uint64_t start_wire_length = 0; // sum of half perimeters of the random placement
    std::uint64_t wire_length = 0;       // sum of half perimeters of the result
    unsigned temperatures = 0;
    std::uint64_t moves = 0;
    std::uint64_t accepted_moves = 0;
};

/// The number of tracks that the placement is expected to need, estimated from the bounding boxes of the nets; in
/// hundredths of a track.
struct ExpectedUse
{
    std::uint64_t average = 0;
    std::uint64_t peak = 0;
};

/// Places a packed design. The same seed gives the same placement on every platform. Throws an Error if the cost
/// doesn't fit into 64 bits.
Placement place(Netlist const &netlist, Packing const &packing, Device const &device, PlaceOptions const &options);

/// The sum over all nets of half the perimeter of the net's bounding box; a site has the side length 1. Throws an Error
/// if it doesn't fit into 64 bits.
std::uint64_t half_perimeter_wire_length(Packing const &packing, Device const &device,
                                         std::vector<Index> const &site_of_block);

/// Estimates the use of the channels: each net is spread evenly over the channels in its bounding box.
ExpectedUse analyse_congestion(Packing const &packing, Device const &device, std::vector<Index> const &site_of_block);

} // namespace fitter

#endif
