// The undo file: how to take back, and to do again, what the last pass of the placement did.
#ifndef FITTER_UNDO_H
#define FITTER_UNDO_H

#include "place.h"

#include <string>

namespace fitter {

/// Writes "undo_redo.txt" into a directory, in place of a former one. Throws an Error if it can't be written, or if
/// the netlist of the placement is gone.
///
/// A command is "swap A B": what stands on site A goes to site B, and what stands on B, if anything, to A. A site is
/// "column,row" or "column,row,slot", as in the result file. The comment names the blocks by the first cell in each.
/// Carried out from top to bottom, the undo commands lead back to the placement before the last pass, and the redo
/// commands from there to the result.
void write_undo_file(std::string const &directory, Packing const &packing, Device const &device,
                     Placement const &placement);

} // namespace fitter

#endif
