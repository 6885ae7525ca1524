#include "timing.h"

#include "stage.h"

#include <algorithm>
#include <utility>

namespace fitter {
namespace {

// Visits a cell when the arrival times at all its inputs are known, so that each cell is visited once.
class Analyser
{
public:
    Analyser(Netlist const &netlist, Packing const &packing, Device const &device, Placement const &placement,
             Routing const &routing)
        : m_netlist(netlist), m_packing(packing), m_device(device), m_placement(placement), m_routing(routing),
          m_arrival(netlist.cells.size()), m_slowest_input(netlist.cells.size(), NONE),
          m_open_inputs(netlist.cells.size()), m_segments_to_block(packing.blocks.size()), m_timed(netlist, "timed")
    {
        VisibleWork const work("fit2_fit_retime_init");
        for (Index i = 0; i < m_netlist.cells.size(); ++i) {
            m_open_inputs[i] = is_lut(i) ? static_cast<Index>(m_netlist.cells[i].inputs.size()) : 0;
            if (m_open_inputs[i] == 0)
                m_ready.push_back(i);
        }
    }

    Timing run()
    {
        for (std::size_t next = 0; next < m_ready.size(); ++next) {
            m_timed.put_on(m_ready[next]);
            for (Index const net : m_netlist.cells[m_ready[next]].outputs)
                propagate(m_ready[next], net);
        }
        count_untimed();
        trace_path();
        return std::move(m_timing);
    }

private:
    bool is_lut(Index cell) const { return m_netlist.cells[cell].kind == CellKind::LUT; }

    void propagate(Index driver, Index net)
    {
        Index const leaves = m_arrival[driver] + (is_lut(driver) ? LUT_DELAY : 0);
        measure_wires(net);
        for (Index const sink : m_netlist.nets[net].sinks) {
            bool const is_inside = m_packing.block_of_cell[sink] == m_packing.block_of_cell[driver];
            Index const arrives = leaves + (is_inside ? 0 : m_segments_to_block[m_packing.block_of_cell[sink]]);
            if (!is_lut(sink))
                end_path(driver, sink, arrives);
            else {
                if (m_slowest_input[sink] == NONE || arrives > m_arrival[sink]) {
                    m_arrival[sink] = arrives;
                    m_slowest_input[sink] = driver;
                }
                if (--m_open_inputs[sink] == 0)
                    m_ready.push_back(sink);
            }
        }
    }

    void measure_wires(Index net)
    {
        Index const fabric = m_packing.fabric_of_net[net];
        if (fabric == NONE)
            return;
        FabricNet const &fabric_net = m_packing.nets[fabric];
        std::vector<Index> const segments =
            segments_to_blocks(fabric_net, m_routing.trees[fabric], m_device, m_placement);
        for (std::size_t i = 0; i < segments.size(); ++i)
            m_segments_to_block[fabric_net.blocks[i]] = segments[i];
    }

    void end_path(Index driver, Index end, Index arrives)
    {
        if (m_end != NONE && arrives <= m_timing.delay)
            return;
        m_timing.delay = arrives;
        m_end = end;
        m_before_end = driver;
    }

    void count_untimed()
    {
        for (Index i = 0; i < m_netlist.cells.size(); ++i)
            if (!m_timed.is_on(i)) {
                m_timing.first_untimed = std::min(m_timing.first_untimed, i);
                ++m_timing.untimed_luts;
            }
    }

    void trace_path()
    {
        if (m_end == NONE)
            return;
        m_timing.path.push_back({m_end, m_timing.delay});
        for (Index cell = m_before_end; cell != NONE; cell = m_slowest_input[cell])
            m_timing.path.push_back({cell, m_arrival[cell] + (is_lut(cell) ? LUT_DELAY : 0)});
        std::reverse(m_timing.path.begin(), m_timing.path.end());
    }

    Netlist const &m_netlist;
    Packing const &m_packing;
    Device const &m_device;
    Placement const &m_placement;
    Routing const &m_routing;
    std::vector<Index> m_arrival;           // at the slowest input of a LUT, 0 for other cells
    std::vector<Index> m_slowest_input;     // the cell that drives it
    std::vector<Index> m_open_inputs;       // number of a LUT's inputs whose arrival time is not known yet
    std::vector<Index> m_segments_to_block; // by block, for the current net
    std::vector<Index> m_ready;             // cells whose arrival times are known, in the order of their visits
    CellMark m_timed;                       // on cells that were visited
    Timing m_timing;
    Index m_end = NONE;        // the last cell of the slowest path
    Index m_before_end = NONE; // the cell before it
};

} // namespace

Timing analyse_timing(Netlist const &netlist, Packing const &packing, Device const &device, Placement const &placement,
                      Routing const &routing)
{
    return Analyser(netlist, packing, device, placement, routing).run();
}

} // namespace fitter
