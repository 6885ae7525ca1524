#include "undo.h"

#include "error.h"
#include "gen_undo_redo_sys.h"
#include "output.h"
#include "source.h"
#include "text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <vector>

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

// A command of the file, and the comment below it.
struct Command
{
    std::string text;
    std::string comment;
};

// Whether a file consists of these texts, in this order, and of what the library puts between them: white space, the
// numbers of the commands and the two headings. The last text is followed by the three line ends of a section.
bool is_complete(std::string const &file, std::vector<std::string> const &texts)
{
    std::size_t end = 0;
    for (std::string const &text : texts) {
        char const *const written = text.c_str(); // the library writes up to the first null character
        std::size_t const begin = file.find(written, end);
        if (begin == std::string::npos || (end == 0 && begin != 0))
            return false;
        end = begin + std::strlen(written);
    }
    return std::count(file.begin() + static_cast<std::ptrdiff_t>(end), file.end(), '\n') == (texts.empty() ? 0 : 3);
}

} // namespace

void write_undo_file(std::string const &directory, Packing const &packing, Device const &device,
                     Placement const &placement)
{
    Netlist const *const netlist = placement.netlist.get();
    if (netlist == nullptr)
        throw Error("the netlist of the placement is gone");
    auto const name = [&](Index block) { return netlist->cells[first_cell(packing, packing.blocks[block])].name; };
    std::vector<Command> redo;
    for (Move const &move : placement.last_moves)
        redo.push_back({"swap " + site_text(device, move.from) + " " + site_text(device, move.to),
                        name(move.block) + (move.other == NONE ? "" : " and " + name(move.other))});
    // A swap is its own inverse; the undo commands begin with the last move.
    std::vector<Command> const undo(redo.rbegin(), redo.rend());

    NewFile file(std::filesystem::path(directory) / "undo_redo.txt");
    std::string const section = "Last pass of the placement";
    std::string const description = netlist->name + ": " + number(redo.size()) + " moves";
    GEN_UNDO_REDO_MGR commands;
    commands.start_new_file(file.directory());
    commands.begin_section(section);
    commands.add_description(description);
    for (Command const &command : undo)
        commands.add_undo_command(command.text, command.comment);
    for (Command const &command : redo)
        commands.add_redo_command(command.text, command.comment);
    commands.end_section();
    commands.commit_file();

    // The library doesn't return whether it could write the file, so the file is read back. A section without commands
    // is not written.
    std::vector<std::string> texts;
    if (!redo.empty())
        texts = {section, description};
    auto const append = [&texts](std::vector<Command> const &list) {
        for (Command const &command : list)
            texts.insert(texts.end(), {command.text, command.comment});
    };
    append(undo);
    append(redo);
    if (!is_complete(read_file(file.path()), texts))
        file.fail();
    file.move_into_place();
}

} // namespace fitter
