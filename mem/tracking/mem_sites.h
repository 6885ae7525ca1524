// The living blocks, by the site of their allocation.
//
// A site is a chain of calls to an operator new: the innermost return addresses of the stack. Each block is entered
// under its address with its site, and each site adds up its blocks.
//
// A site's figure at the peak is its bytes at the moment when the sum over all sites was largest. Peaks are numbered,
// and no figures are copied when a new peak is reached. Instead a site saves its bytes, with the number of the latest
// peak, just before it changes for the first time after that peak. As long as it has not changed since the peak, its
// bytes now are its bytes at the peak:
//
//              sum    number of     site A:         site A at the peak
//                     the peak      now   saved
//     A +10     10       1          10    -         10: its bytes now
//     B +20     30       2          10    -         10: its bytes now, as it has not changed since peak 2
//     A -10     20       2           0    10 (2)    10: saved for peak 2
//     B +20     40       3           0    10 (2)     0: its bytes now, as nothing is saved for peak 3
#ifndef MEM_SITES_H
#define MEM_SITES_H

#include "mem/tracking/mem_calls.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Enters a block, in place of a block that was entered under the same address. Called on any thread, without any lock.
/// Allocates from the plain heap only; a block for which there is no memory is counted as lost.
void mem_sites_add(void const *block, std::size_t bytes, MEM_CALL const &call);

/// Removes a block if it was entered. Called on any thread, without any lock.
void mem_sites_remove(void const *block);

/// Forgets all blocks and sites.
void mem_sites_reset();

/// Forgets the peak: the next one starts at the bytes now.
void mem_sites_begin_peak();

struct MEM_SITE_FIGURES
{
    std::uint64_t peak_bytes;
    std::uint64_t live_bytes;
    std::uint64_t live_blocks;
    std::uint64_t total_bytes;
    std::uint64_t total_blocks;
};

struct MEM_SITE
{
    MEM_CALLS calls;
    std::size_t module; ///< its index in mem_sites_modules()
    MEM_SITE_FIGURES figures;
};

/// A copy of what is recorded.
struct MEM_SITES
{
    std::vector<MEM_SITE> sites;
    /// Blocks that could not be recorded because there was no memory.
    std::uint64_t lost_blocks;
};
MEM_SITES mem_sites_copy();

/// The file names of the executable and the libraries that contain a site; empty for code that is in none of them.
/// Later calls return the same names first.
std::vector<std::string> mem_sites_modules();

/// The living bytes of each of them, in the same order.
std::vector<std::uint64_t> mem_sites_module_bytes();

#endif
