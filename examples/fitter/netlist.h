// The design: cells and the nets between them, and its reader.
#ifndef FITTER_NETLIST_H
#define FITTER_NETLIST_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fitter {

/// Number of a cell, a net, a block, ...; NONE for none.
using Index = std::uint32_t;
constexpr Index NONE = 0xffffffff;

/// Inputs of a LUT of the device.
constexpr Index LUT_INPUTS = 4;

enum class CellKind
{
    INPUT_PAD,  // one output
    OUTPUT_PAD, // one input
    LUT,        // up to LUT_INPUTS inputs, one output
    FLOP,       // one input, one output, maybe a clock
    MACRO       // an instance of a black box
};

struct Cell
{
    CellKind kind = CellKind::LUT;
    std::string name; // of its first output net; of the net it reads for an output pad
    std::vector<Index> inputs;
    std::vector<Index> outputs;
    Index clock = NONE;
    bool falling = false; // clocked by the falling edge
};

struct Net
{
    std::string name;
    Index driver = NONE;
    std::vector<Index> sinks;   // one entry for each data pin
    std::vector<Index> clocked; // one entry for each clock pin; these are on the device's clock network
};

struct Netlist
{
    std::string name;
    std::vector<Cell> cells;
    std::vector<Net> nets;

    Index count(CellKind kind) const;
};

/// Reads a design in the Berkeley logic interchange format.
///
/// @param text  the content of the file
/// @param file  the file's name for messages
///
/// Understood are .model, .inputs, .outputs, .clock (without meaning here), .names with its cover, .latch, .subckt,
/// .blackbox and .end, comments, lines continued by a backslash, and both kinds of line ends. The first model is the
/// design; the models behind it can be black boxes that it uses. A missing .end at the end of the file is no fault.
///
/// Every net must have just one driver. A fault is thrown as an Error: "design.blif:12: net \"x\" has no driver".
Netlist read_blif(std::string_view text, std::string const &file);

/// The content of a file; throws an Error if it can't be read.
std::string read_file(std::string const &path);

} // namespace fitter

#endif
