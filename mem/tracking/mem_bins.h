// The open profile bins and their memory. All calls come from the one thread that opens and closes the bins.
#ifndef MEM_BINS_H
#define MEM_BINS_H

#include "mem/tracking/mem_statistics.h"

#include <string>

void mem_bins_open(std::string const &name, std::string const &tag);

/// Closes the innermost bin and returns its figures. If no bin is open, or if there was no memory for the bin, all
/// three are the bytes now.
MEM_BIN_FIGURES mem_bins_close();

/// Folds the peak up to now into the innermost bin.
void mem_bins_flush_peak();

/// Sets the label of the time line, and adds a row if the time line is recorded.
void mem_bins_set_label(std::string const &label);

/// From now on the tags of bins don't replace the label.
void mem_bins_disable_tag_labels();

/// Adds a row for the start of the recording of the time line. Any thread.
void mem_bins_start_timeline();

#endif
