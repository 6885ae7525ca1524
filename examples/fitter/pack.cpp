#include "pack.h"

#include "stage.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace fitter {
namespace {

// Nets of more elements than this don't attract: they don't show which elements belong together.
constexpr std::size_t ATTRACTIVE_FANOUT = 32;

bool contains(std::vector<Index> const &items, Index item)
{
    return std::find(items.begin(), items.end(), item) != items.end();
}

void add_once(std::vector<Index> &items, Index item)
{
    if (!contains(items, item))
        items.push_back(item);
}

void remove(std::vector<Index> &items, Index item)
{
    items.erase(std::remove(items.begin(), items.end(), item), items.end());
}

// The flip-flop that is the only reader of a LUT's output; NONE if there is none.
Index only_reading_flop(Netlist const &netlist, Cell const &lut)
{
    Net const &net = netlist.nets[lut.outputs.front()];
    if (net.sinks.size() != 1 || !net.clocked.empty())
        return NONE;
    Index const reader = net.sinks.front();
    return netlist.cells[reader].kind == CellKind::FLOP ? reader : NONE;
}

void add_flop(LogicElement &element, Netlist const &netlist, Index flop)
{
    Cell const &cell = netlist.cells[flop];
    element.flop = flop;
    element.output = cell.outputs.front();
    element.clock = cell.clock;
    element.falling = cell.falling;
}

// A cluster that is being filled, with the nets that it drives and those that it takes from outside.
class OpenCluster
{
public:
    std::vector<Index> const &elements() const { return m_elements; }

    bool can_take(LogicElement const &element) const
    {
        if (m_elements.size() == CLUSTER_ELEMENTS || !clock_fits(element))
            return false;
        std::size_t inputs = m_inputs.size() - (contains(m_inputs, element.output) ? 1 : 0);
        for (Index const net : element.inputs)
            if (net != element.output && !contains(m_outputs, net) && !contains(m_inputs, net))
                ++inputs;
        return inputs <= CLUSTER_INPUTS;
    }

    void take(Index index, LogicElement const &element)
    {
        m_elements.push_back(index);
        m_outputs.push_back(element.output);
        remove(m_inputs, element.output);
        for (Index const net : element.inputs)
            if (!contains(m_outputs, net))
                add_once(m_inputs, net);
        if (element.clock != NONE) {
            m_clock = element.clock;
            m_falling = element.falling;
        }
    }

private:
    bool clock_fits(LogicElement const &element) const
    {
        return m_clock == NONE || element.clock == NONE || (m_clock == element.clock && m_falling == element.falling);
    }

    std::vector<Index> m_elements;
    std::vector<Index> m_inputs;
    std::vector<Index> m_outputs;
    Index m_clock = NONE;
    bool m_falling = false;
};

// Fills clusters by attraction: the number of nets that an element shares with the cluster that is being filled.
class Clusterer
{
public:
    Clusterer(Netlist const &netlist, std::vector<LogicElement> const &elements)
        : m_elements(elements), m_elements_of_net(netlist.nets.size()), m_attraction(elements.size()),
          m_is_packed(elements.size())
    {
        for (Index i = 0; i < elements.size(); ++i) {
            for (Index const net : elements[i].inputs)
                add_element(net, i);
            add_element(elements[i].output, i);
        }
    }

    std::vector<OpenCluster> run()
    {
        Work const work("Cluster Growth");
        std::vector<Index> seeds(m_elements.size());
        std::iota(seeds.begin(), seeds.end(), 0u);
        std::stable_sort(seeds.begin(), seeds.end(), [this](Index a, Index b) {
            return m_elements[a].inputs.size() > m_elements[b].inputs.size();
        });
        std::vector<OpenCluster> clusters;
        for (Index const seed : seeds)
            if (!m_is_packed[seed])
                clusters.push_back(grow(seed));
        return clusters;
    }

private:
    // Elements come in order: if the list of a net already contains the element, it is the last one there.
    void add_element(Index net, Index element)
    {
        std::vector<Index> &elements = m_elements_of_net[net];
        if (elements.empty() || elements.back() != element)
            elements.push_back(element);
    }

    OpenCluster grow(Index seed)
    {
        OpenCluster cluster;
        for (Index next = seed; next != NONE; next = most_attracted(cluster)) {
            cluster.take(next, m_elements[next]);
            m_is_packed[next] = true;
            attract(m_elements[next]);
        }
        for (Index const touched : m_attracted)
            m_attraction[touched] = 0;
        m_attracted.clear();
        return cluster;
    }

    void attract(LogicElement const &element)
    {
        for (Index const net : element.inputs)
            attract_along(net);
        attract_along(element.output);
    }

    void attract_along(Index net)
    {
        if (m_elements_of_net[net].size() > ATTRACTIVE_FANOUT)
            return;
        for (Index const other : m_elements_of_net[net]) {
            if (m_is_packed[other])
                continue;
            if (m_attraction[other]++ == 0)
                m_attracted.push_back(other);
        }
    }

    // Of equal elements the one with the lowest number, so that the result depends on the design only.
    Index most_attracted(OpenCluster const &cluster) const
    {
        Index best = NONE;
        for (Index const candidate : m_attracted)
            if (!m_is_packed[candidate] && (best == NONE || is_better(candidate, best)) &&
                cluster.can_take(m_elements[candidate]))
                best = candidate;
        return best;
    }

    bool is_better(Index a, Index b) const
    {
        return m_attraction[a] != m_attraction[b] ? m_attraction[a] > m_attraction[b] : a < b;
    }

    std::vector<LogicElement> const &m_elements;
    std::vector<std::vector<Index>> m_elements_of_net;
    std::vector<Index> m_attraction; // nets shared with the cluster that is being filled
    std::vector<Index> m_attracted;  // elements whose attraction is not 0
    std::vector<bool> m_is_packed;
};

// Adds the elements of `from` to `into`. False, without a change, if they don't fit.
bool take_all(OpenCluster &into, OpenCluster const &from, std::vector<LogicElement> const &elements)
{
    OpenCluster merged = into;
    for (Index const element : from.elements()) {
        if (!merged.can_take(elements[element]))
            return false;
        merged.take(element, elements[element]);
    }
    into = std::move(merged);
    return true;
}

// Merges the largest clusters first, each into the first one into which it fits.
std::vector<OpenCluster> merge_part_filled(std::vector<OpenCluster> clusters, std::vector<LogicElement> const &elements)
{
    Work const work("Cluster Merging");
    std::stable_sort(clusters.begin(), clusters.end(), [](OpenCluster const &a, OpenCluster const &b) {
        return a.elements().size() > b.elements().size();
    });
    std::vector<OpenCluster> merged;
    std::size_t first_open = 0; // all before it are full
    for (OpenCluster const &cluster : clusters) {
        while (first_open < merged.size() && merged[first_open].elements().size() == CLUSTER_ELEMENTS)
            ++first_open;
        bool const found = std::any_of(
            merged.begin() + static_cast<std::ptrdiff_t>(first_open), merged.end(), [&](OpenCluster &other) {
                return other.elements().size() + cluster.elements().size() <= CLUSTER_ELEMENTS &&
                       take_all(other, cluster, elements);
            });
        if (!found)
            merged.push_back(cluster);
    }
    return merged;
}

void add_blocks(Packing &packing, Netlist const &netlist)
{
    packing.block_of_cell.assign(netlist.cells.size(), NONE);
    auto const add_block = [&](bool is_pad, Index item) {
        packing.blocks.push_back({is_pad, item, {}});
        return static_cast<Index>(packing.blocks.size() - 1);
    };
    for (Index i = 0; i < packing.clusters.size(); ++i) {
        Cluster const &cluster = packing.clusters[i];
        Index const block = add_block(/*is_pad=*/false, i);
        if (cluster.macro != NONE)
            packing.block_of_cell[cluster.macro] = block;
        for (Index const index : cluster.elements)
            for (Index const cell : {packing.elements[index].lut, packing.elements[index].flop})
                if (cell != NONE)
                    packing.block_of_cell[cell] = block;
    }
    for (Index i = 0; i < netlist.cells.size(); ++i)
        if (netlist.cells[i].kind == CellKind::INPUT_PAD || netlist.cells[i].kind == CellKind::OUTPUT_PAD)
            packing.block_of_cell[i] = add_block(/*is_pad=*/true, i);
}

void add_fabric_nets(Packing &packing, Netlist const &netlist)
{
    packing.fabric_of_net.assign(netlist.nets.size(), NONE);
    std::vector<Index> seen_in(packing.blocks.size(), NONE); // by block: the last net that contained it
    for (Index i = 0; i < netlist.nets.size(); ++i) {
        FabricNet net;
        net.net = i;
        auto const add = [&](Index cell) {
            Index const block = packing.block_of_cell[cell];
            if (seen_in[block] != i)
                net.blocks.push_back(block);
            seen_in[block] = i;
        };
        add(netlist.nets[i].driver);
        for (Index const sink : netlist.nets[i].sinks)
            add(sink);
        if (net.blocks.size() < 2)
            continue;
        packing.fabric_of_net[i] = static_cast<Index>(packing.nets.size());
        for (Index const block : net.blocks)
            packing.blocks[block].nets.push_back(packing.fabric_of_net[i]);
        packing.nets.push_back(std::move(net));
    }
}

} // namespace

std::vector<LogicElement> make_elements(Netlist const &netlist)
{
    std::vector<LogicElement> elements;
    CellMark paired(netlist, "paired");
    for (Index i = 0; i < netlist.cells.size(); ++i) {
        Cell const &cell = netlist.cells[i];
        if (cell.kind != CellKind::LUT)
            continue;
        LogicElement element;
        element.lut = i;
        element.output = cell.outputs.front();
        for (Index const net : cell.inputs)
            add_once(element.inputs, net);
        if (Index const flop = only_reading_flop(netlist, cell); flop != NONE) {
            add_flop(element, netlist, flop);
            paired.put_on(flop);
        }
        elements.push_back(element);
    }
    for (Index i = 0; i < netlist.cells.size(); ++i)
        if (netlist.cells[i].kind == CellKind::FLOP && !paired.is_on(i)) {
            LogicElement element;
            add_flop(element, netlist, i);
            element.inputs = netlist.cells[i].inputs;
            elements.push_back(element);
        }
    return elements;
}

Packing pack(Netlist const &netlist, std::vector<LogicElement> elements)
{
    Packing packing;
    packing.elements = std::move(elements);
    for (OpenCluster const &cluster : merge_part_filled(Clusterer(netlist, packing.elements).run(), packing.elements))
        packing.clusters.push_back({cluster.elements(), NONE});
    for (Index i = 0; i < netlist.cells.size(); ++i)
        if (netlist.cells[i].kind == CellKind::MACRO)
            packing.clusters.push_back({{}, i});
    add_blocks(packing, netlist);
    add_fabric_nets(packing, netlist);
    return packing;
}

} // namespace fitter
