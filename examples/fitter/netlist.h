// The design: cells and the nets between them, and its reader.
#ifndef FITTER_NETLIST_H
#define FITTER_NETLIST_H

#include "gen_dyn_flag_sys.h"
#include "source.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace fitter {

/// Number of a cell, a net, a block and so on; NONE means that there is none.
using Index = std::uint32_t;
constexpr Index NONE = 0xffffffff;

/// Inputs of a LUT of the device.
constexpr Index LUT_INPUTS = 4;

enum class CellKind
{
    INPUT_PAD,  // one output
    OUTPUT_PAD, // one input
    LUT,        // up to LUT_INPUTS inputs, one output
    FLOP,       // one input, one output, an optional clock
    MACRO       // an instance of a black box
};

struct Cell
{
    CellKind kind = CellKind::LUT;
    std::string name; // that of its first output net; without one that of the net (pad) or of the model (macro)
    std::vector<Index> inputs;
    std::vector<Index> outputs;
    Index clock = NONE;
    bool falling = false;       // clocked by the falling edge
    mutable GEN_DYN_FLAG marks; // scratch, see CellMark
};

struct Net
{
    std::string name;
    Index driver = NONE;
    std::vector<Index> sinks;   // cells, one entry for each data pin
    std::vector<Index> clocked; // cells, one entry for each clock pin, which the device's clock network connects
};

/// Removes marks from all cells of a netlist, for the manager of the marks.
class CellClearer : public GEN_DYN_FLAG_CLEARER
{
public:
    explicit CellClearer(std::vector<Cell> const &cells) : m_cells(cells) {}
    void clear_flags(GEN_DYN_FLAG const &flag) override;

private:
    std::vector<Cell> const &m_cells;
};

/// A netlist can't be copied or moved, so other objects may depend on its address. Its destructor notifies them, see
/// NetlistLink.
struct Netlist
{
    Netlist() : m_clearer(cells), m_marks(&m_clearer) {}
    ~Netlist();
    Netlist(Netlist const &) = delete;
    Netlist &operator=(Netlist const &) = delete;

    Index count(CellKind kind) const;

    std::string name;
    std::vector<Cell> cells;
    std::vector<Net> nets;

private:
    friend class CellMark;

    CellClearer m_clearer;
    mutable GEN_DYN_FLAG_MANAGER m_marks; // scratch, like the marks themselves
};

/// A mark on cells, for one walk over a netlist. A new mark is on no cell. Creating one is usually cheap: the cells are
/// visited only when no clean bit is left.
class CellMark
{
public:
    CellMark(Netlist const &netlist, char const *name)
        : m_cells(netlist.cells), m_manager(netlist.m_marks), m_flag(m_manager.create_flag(name))
    {
    }
    ~CellMark() { m_manager.destroy_flag(m_flag); }
    CellMark(CellMark const &) = delete;
    CellMark &operator=(CellMark const &) = delete;

    void put_on(Index cell) { m_cells[cell].marks.set_flag(m_flag); }
    bool is_on(Index cell) const { return m_cells[cell].marks.test(m_flag); }

private:
    std::vector<Cell> const &m_cells;
    GEN_DYN_FLAG_MANAGER &m_manager;
    GEN_DYN_FLAG const m_flag;
};

/// Reads a design in the Berkeley logic interchange format.
///
/// The reader accepts .model, .inputs, .outputs, .clock (ignored), .names with its cover, .latch, .subckt, .blackbox,
/// .search and .end, comments, lines continued by a backslash, and both kinds of line ends. The first model is the
/// design; the models after it can be black boxes that it uses. The .end at the end of a file is optional.
///
/// ".search FILE", on any line, adds the models of another file after those of this file. A file that is named more
/// than once is read once. A chain of .search lines that leads back to a file in the chain, or that has more than 16
/// files, is an error.
///
/// Every net must have exactly one driver. An error is thrown as an Error: "design.blif:12: net \"x\" has no driver".
std::unique_ptr<Netlist> read_blif(Source design);

} // namespace fitter

#endif
