// Packing: LUTs and flip-flops into logic elements, and these into clusters.
#ifndef FITTER_PACK_H
#define FITTER_PACK_H

#include "netlist.h"

#include <vector>

namespace fitter {

/// Logic elements of a cluster.
constexpr std::size_t CLUSTER_ELEMENTS = 8;
/// Nets that a cluster can take from outside, the clock not counted.
constexpr std::size_t CLUSTER_INPUTS = 18;

/// A LUT, a flip-flop, or a LUT that feeds nothing but the flip-flop beside it. One output leaves it.
struct LogicElement
{
    Index lut = NONE;
    Index flop = NONE;
    std::vector<Index> inputs; // nets, each once
    Index output = NONE;       // net
    Index clock = NONE;        // net
    bool falling = false;
};

/// Logic elements that share inputs and one clock, or a single macro.
struct Cluster
{
    std::vector<Index> elements;
    Index macro = NONE; // cell
};

/// What gets a site of its own.
struct Block
{
    bool is_pad = false;
    Index item = NONE;       // the cell of a pad, else the cluster
    std::vector<Index> nets; // fabric nets, each once
};

/// A net that leaves its block. Nets on the clock network and nets within one cluster are none.
struct FabricNet
{
    Index net = NONE;
    std::vector<Index> blocks; // the driver's, then each other block once
};

struct Packing
{
    std::vector<LogicElement> elements;
    std::vector<Cluster> clusters;
    std::vector<Block> blocks; // clusters first, in order, then pads
    std::vector<FabricNet> nets;
    std::vector<Index> block_of_cell;
    std::vector<Index> fabric_of_net; // NONE for a net that stays inside
};

/// The logic elements of a design: each LUT, with the flip-flop that alone reads it, and the other flip-flops.
std::vector<LogicElement> make_elements(Netlist const &netlist);

/// Packs the logic elements of a design. The same design always gives the same packing.
///
/// Clusters grow one at a time from the unpacked element with most inputs, by the element that shares most nets with
/// the cluster; at the end part-filled clusters are put together where they fit.
Packing pack(Netlist const &netlist, std::vector<LogicElement> elements);

} // namespace fitter

#endif
