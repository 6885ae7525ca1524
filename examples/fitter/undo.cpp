#include "undo.h"

#include "error.h"
#include "gen_undo_redo_sys.h"
#include "text.h"

#include <filesystem>
#include <system_error>

namespace fitter {
namespace {

std::string site_text(Device const &device, Index site)
{
    Point const at = device.position(site);
    std::string const text = std::to_string(at.x) + "," + std::to_string(at.y);
    return device.is_pad_site(site) ? text + "," + std::to_string(device.pad_slot(site)) : text;
}

Index first_cell(Packing const &packing, Block const &block)
{
    if (block.is_pad)
        return block.item;
    Cluster const &cluster = packing.clusters[block.item];
    if (cluster.macro != NONE)
        return cluster.macro;
    LogicElement const &element = packing.elements[cluster.elements.front()];
    return element.lut != NONE ? element.lut : element.flop;
}

} // namespace

void write_undo_file(std::string const &directory, Packing const &packing, Device const &device,
                     Placement const &placement)
{
    Netlist const *const netlist = placement.netlist.get();
    if (netlist == nullptr)
        throw Error("the netlist of the placement is gone");
    auto const name = [&](Index block) { return netlist->cells[first_cell(packing, packing.blocks[block])].name; };
    auto const command = [&](Move const &move) {
        return "swap " + site_text(device, move.from) + " " + site_text(device, move.to);
    };
    auto const comment = [&](Move const &move) {
        return name(move.block) + (move.other == NONE ? "" : " and " + name(move.other));
    };

    // The library doesn't report a file that it can't write, and an old file must not be mistaken for the new one.
    std::filesystem::path const file = std::filesystem::path(directory) / "undo_redo.txt";
    std::error_code ignored;
    std::filesystem::remove(file, ignored);

    std::vector<Move> const &moves = placement.last_moves;
    GEN_UNDO_REDO_MGR commands;
    commands.start_new_file(directory);
    commands.begin_section("Last pass of the placement");
    commands.add_description(netlist->name + ": " + number(moves.size()) + " moves");
    // A swap is its own inverse; the undo commands begin with the last move.
    for (auto move = moves.rbegin(); move != moves.rend(); ++move)
        commands.add_undo_command(command(*move), comment(*move));
    for (Move const &move : moves)
        commands.add_redo_command(command(move), comment(move));
    commands.end_section();
    commands.commit_file();
    if (!std::filesystem::is_regular_file(file, ignored))
        throw Error("cannot write \"" + file.generic_string() + "\"");
}

} // namespace fitter
