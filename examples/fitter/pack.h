// Packing: LUTs and flip-flops are put into logic elements, and logic elements into clusters.
#ifndef FITTER_PACK_H
#define FITTER_PACK_H

#include "netlist.h"

#include <vector>

namespace fitter {

/// Largest number of logic elements of a cluster.
constexpr std::size_t CLUSTER_ELEMENTS = 8;
/// Largest number of nets that enter a cluster from outside, not counting the clock.
constexpr std::size_t CLUSTER_INPUTS = 18;

/// A LUT, a flip-flop, or a LUT together with the flip-flop that is its only reader. It has one output.
struct LogicElement
{
    Index lut = NONE;
    Index flop = NONE;
    std::vector<Index> inputs; // nets, each once
    Index output = NONE;       // net
    Index clock = NONE;        // net
    bool falling = false;
};

/// Logic elements with at most one clock among them, or a single macro.
struct Cluster
{
    std::vector<Index> elements;
    Index macro = NONE; // cell
};

/// A pad or a cluster: each block gets its own site.
struct Block
{
    bool is_pad = false;
    Index item = NONE;       // the cell of a pad, else the cluster
    std::vector<Index> nets; // fabric nets, each once
};

/// A net that connects data pins of different blocks. The clock network connects the clock pins.
struct FabricNet
{
    Index net = NONE;
    std::vector<Index> blocks; // the block of the driver, then each other block once
};

struct Packing
{
    std::vector<LogicElement> elements;
    std::vector<Cluster> clusters;
    std::vector<Block> blocks; // clusters first, in order, then pads
    std::vector<FabricNet> nets;
    std::vector<Index> block_of_cell;
    std::vector<Index> fabric_of_net; // NONE for a net that is no fabric net
};

/// The logic elements of a design: each LUT, with the flip-flop that is its only reader, and the other flip-flops.
std::vector<LogicElement> make_elements(Netlist const &netlist);

/// Packs the logic elements of a design. The same design always gives the same packing.
///
/// One cluster is filled at a time: it starts with the unpacked element that has the most inputs, and each step adds
/// the element that shares the most nets with the cluster. At the end clusters that aren't full are merged where they
/// fit.
Packing pack(Netlist const &netlist, std::vector<LogicElement> elements);

} // namespace fitter

#endif
