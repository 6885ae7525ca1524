// The sample fitter's reader of designs. The input is the text of a design. Lines that name other files are left out.
#include "error.h"
#include "netlist.h"

#include "fuzz_target.h"

namespace {

using fitter::Cell;
using fitter::Index;
using fitter::Net;
using fitter::Netlist;

void check_cell(Netlist const &netlist, Index number)
{
    Cell const &cell = netlist.cells[number];
    for (Index const net : cell.inputs) {
        require(net < netlist.nets.size());
        std::vector<Index> const &sinks = netlist.nets[net].sinks;
        require(std::find(sinks.begin(), sinks.end(), number) != sinks.end());
    }
    for (Index const net : cell.outputs)
        require(net == fitter::NONE || (net < netlist.nets.size() && netlist.nets[net].driver == number));
    require(cell.clock == fitter::NONE || cell.clock < netlist.nets.size());
}

void check_netlist(Netlist const &netlist)
{
    for (Index i = 0; i < netlist.cells.size(); ++i)
        check_cell(netlist, i);
    for (Net const &net : netlist.nets) {
        require(net.driver < netlist.cells.size());
        for (Index const sink : net.sinks)
            require(sink < netlist.cells.size());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string text(data, data + size);
    if (text.find(".search") != std::string::npos)
        return 0;
    try {
        check_netlist(*fitter::read_blif({"design.blif", "design.blif", text}));
    } catch (fitter::Error const &error) {
        require(std::string(error.what()).find("design.blif") == 0);
    }
    return 0;
}
