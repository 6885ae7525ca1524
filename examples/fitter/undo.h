// The undo file: commands that undo and redo the last pass of the placement.
#ifndef FITTER_UNDO_H
#define FITTER_UNDO_H

#include "place.h"

#include <string>

namespace fitter {

/// Writes "undo_redo.txt" to a directory, completely or not at all, and replaces an existing file. Throws an Error if
/// it can't be written, or if the netlist of the placement was destroyed.
///
/// A command is "swap A B": the blocks on the sites A and B change places; one of the sites may be empty. A site is
/// "column,row" or "column,row,slot", as in the result file. The comment names each block by its first cell. Executed
/// from top to bottom, the undo commands restore the placement before the last pass, and the redo commands then restore
/// the result.
void write_undo_file(std::string const &directory, Packing const &packing, Device const &device,
                     Placement const &placement);

} // namespace fitter

#endif
