#include "report.h"

#include "gen_bindata_sys.h"
#include "gen_fstream_sys.h"
#include "output.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace fitter {
namespace {

char const *kind_name(CellKind kind)
{
    switch (kind) {
    case CellKind::INPUT_PAD:
        return "input";
    case CellKind::OUTPUT_PAD:
        return "output";
    case CellKind::LUT:
        return "lut";
    case CellKind::FLOP:
        return "flop";
    default:
        return "macro";
    }
}

std::string described(Fit const &fit, Index cell)
{
    return std::string(kind_name(fit.netlist->cells[cell].kind)) + " " + fit.netlist->cells[cell].name;
}

std::string path_summary(Fit const &fit)
{
    if (fit.timing.path.empty())
        return "none";
    return number(fit.timing.delay) + " unit delays over " + number(fit.timing.path.size() - 2) + " LUTs, from " +
           described(fit, fit.timing.path.front().cell) + " to " + described(fit, fit.timing.path.back().cell);
}

std::string path_rows(Fit const &fit)
{
    std::string out = "\nslowest path (arrival, cell)\n";
    for (PathPoint const &point : fit.timing.path)
        out += number(point.arrival) + "\t" + described(fit, point.cell) + "\n";
    return out;
}

// The number of nets by the number of their segments: "1-4: 310, ..., 29 and more: 2"
std::string length_histogram(Routing const &routing)
{
    constexpr std::size_t RANGES = 8;
    constexpr std::size_t WIDTH = 4;
    constexpr std::size_t LAST = RANGES * WIDTH; // longer nets count as nets of this length
    // The bounds are halves, so that each whole number lies within a range.
    GEN_BINDATA lengths(0.5, LAST + 0.5, RANGES);
    for (Tree const &tree : routing.trees)
        lengths.add_item(static_cast<double>(std::clamp<std::size_t>(tree.size(), 1, LAST)));
    std::string out;
    for (std::size_t range = 0; range < RANGES; ++range) {
        std::size_t const first = range * WIDTH + 1;
        std::string const end = range + 1 < RANGES ? "-" + number(first + WIDTH - 1) : " and more";
        out += (out.empty() ? "" : ", ") + number(first) + end + ": " + number(lengths.item_count(range));
    }
    return out;
}

std::string content(Fit const &fit, Block const &block)
{
    if (block.is_pad)
        return described(fit, block.item);
    Cluster const &cluster = fit.packing.clusters[block.item];
    std::string out = "cluster";
    if (cluster.macro != NONE)
        out += " " + described(fit, cluster.macro);
    for (Index const index : cluster.elements) {
        LogicElement const &element = fit.packing.elements[index];
        out += " ";
        if (element.lut != NONE)
            out += fit.netlist->cells[element.lut].name;
        if (element.flop != NONE)
            out += ">" + fit.netlist->cells[element.flop].name;
    }
    return out;
}

std::string placement_rows(Fit const &fit)
{
    std::string out = "\nplacement (column, row, slot of a pad, content; a flip-flop follows \">\")\n";
    for (Index block = 0; block < fit.packing.blocks.size(); ++block) {
        Index const site = fit.placement.site_of_block[block];
        Point const at = fit.device.position(site);
        out += std::to_string(at.x) + "\t" + std::to_string(at.y) + "\t" +
               (fit.device.is_pad_site(site) ? std::to_string(fit.device.pad_slot(site)) : "-") + "\t" +
               content(fit, fit.packing.blocks[block]) + "\n";
    }
    return out;
}

std::string routing_rows(Fit const &fit)
{
    std::string out =
        "\nrouting (net, blocks, segments; \"<\" begins at the driver, \"^n\" continues the n-th segment)\n";
    for (std::size_t i = 0; i < fit.packing.nets.size(); ++i) {
        FabricNet const &net = fit.packing.nets[i];
        Tree const &tree = fit.routing.trees[i];
        out += fit.netlist->nets[net.net].name + "\t" + number(net.blocks.size()) + "\t" + number(tree.size()) + "\t";
        for (std::size_t branch = 0; branch < tree.size(); ++branch) {
            Index const parent = tree[branch].parent;
            if (parent == NONE)
                out += " <";
            else if (parent + 1 != branch)
                out += " ^" + number(parent + 1);
            out += " " + fit.device.segment_name(tree[branch].segment);
        }
        out += "\n";
    }
    return out;
}

// The reason of the last failed system call.
std::error_code last_reason()
{
    return {errno, std::generic_category()};
}

} // namespace

std::string summary(Fit const &fit)
{
    Netlist const &netlist = *fit.netlist;
    Placement const &placement = fit.placement;
    Routing const &routing = fit.routing;
    std::string out;
    out += line("design",
                netlist.name + ": " + number(netlist.count(CellKind::LUT)) + " LUTs, " +
                    number(netlist.count(CellKind::FLOP)) + " flip-flops, " + number(netlist.count(CellKind::MACRO)) +
                    " macros, " + number(netlist.count(CellKind::INPUT_PAD)) + " inputs, " +
                    number(netlist.count(CellKind::OUTPUT_PAD)) + " outputs, " + number(netlist.nets.size()) + " nets");
    out += line("packed", number(fit.packing.elements.size()) + " logic elements in " +
                              number(fit.packing.clusters.size()) + " clusters, " + number(fit.packing.nets.size()) +
                              " nets between blocks");
    out += line("device", number(fit.device.size()) + " x " + number(fit.device.size()) + " cluster sites, " +
                              number(fit.device.pad_sites()) + " pads, channel width " + number(routing.channel_width));
    out += line("placed", "half-perimeter wire length " + number(placement.wire_length) + ", from " +
                              number(placement.start_wire_length) + " at random, " + number(placement.temperatures) +
                              " temperatures, " + number(placement.accepted_moves) + " of " + number(placement.moves) +
                              " moves accepted");
    out += line("expected", "channel use " + hundredths(fit.expected_use.average) + " on average, " +
                                hundredths(fit.expected_use.peak) + " at the peak");
    out +=
        line("routed", "wire length " + number(routing.wire_length) + " segments, " + number(routing.converged_length) +
                           " before refinement, peak channel use " + number(routing.peak_use) + ", " +
                           number(routing.iterations) + " iterations, " + number(routing.refinements) + " refinements");
    out += line("net lengths", length_histogram(routing));
    out +=
        line("legal", routing.is_legal() ? "yes" : "no, " + number(routing.overused_segments) + " segments overused");
    out += line("slowest path", path_summary(fit));
    if (fit.timing.untimed_luts != 0)
        out += line("not timed", number(fit.timing.untimed_luts) + " LUTs on or after combinational loops, from " +
                                     described(fit, fit.timing.first_untimed) + " on");
    return out;
}

std::string result_text(Fit const &fit)
{
    return summary(fit) + path_rows(fit) + placement_rows(fit) + routing_rows(fit);
}

void check_writable(std::string const &path)
{
    NewFile const file(path);
    errno = 0;
    std::brisel_ofstream const probe(file.path().c_str(), std::ios::out | std::ios::binary, GEN_SHARE_ALL);
    if (!probe.good())
        file.fail(last_reason());
}

void write_result(std::string const &path, std::string const &text)
{
    NewFile file(path);
    errno = 0;
    std::brisel_ofstream stream(file.path().c_str(), std::ios::out | std::ios::binary, GEN_SHARE_ALL);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream.good())
        file.fail(last_reason());
    file.move_into_place();
}

} // namespace fitter
