// The blocks that are out, by the site of their allocation.
//
// A site is a way into an operator new: the innermost calls of the stack. Each block is entered under its address with
// its site, and each site adds up its blocks. The figures at the peak are those of the moment when the sum over all
// sites was highest. No copy is made at a peak: a site keeps what it had at the latest peak when it changes for the
// first time after that, and a site that hasn't changed since has what it had then.
//
//     sum over all   peak no.   site A: now, at the peak, no.
//     A +10    10       1       10, -, -
//     B +20    30       2       10, -, -           10 at peak 2, as it has not changed since
//     A -10    20       2        0, 10, 2
//     B +20    40       3        0, 10, 2          0 at peak 3
#ifndef MEM_SITES_H
#define MEM_SITES_H

#include "mem/tracking/mem_calls.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Enters a block; one that is there under its address is forgotten. Any thread, without any lock; it allocates by the
/// plain heap only and doesn't fail.
void mem_sites_add(void const *block, std::size_t bytes, MEM_CALL const &call);

/// Takes a block out, if it is there. Any thread, without any lock.
void mem_sites_remove(void const *block);

/// Forgets all blocks and sites.
void mem_sites_reset();

/// Begins a new peak.
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
    std::size_t module; ///< a place in the names of mem_sites_modules()
    MEM_SITE_FIGURES figures;
};

/// A copy of what is recorded.
struct MEM_SITES
{
    std::vector<MEM_SITE> sites;
    /// Blocks that could not be recorded for want of memory.
    std::uint64_t lost_blocks;
};
MEM_SITES mem_sites_copy();

/// The file names of the executable and the libraries that have a site, empty for code that is in none of them. They
/// keep their places as others come.
std::vector<std::string> mem_sites_modules();

/// What each of them has out, in the same places.
std::vector<std::uint64_t> mem_sites_module_bytes();

#endif
