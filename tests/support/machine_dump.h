// A machine as its processors describe it, read from a text; tests/data/cpuid/README.md describes the format.
#ifndef TESTS_SUPPORT_MACHINE_DUMP_H
#define TESTS_SUPPORT_MACHINE_DUMP_H

#include "gen/os/gen_os_machine.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// The results of CPUID on one processor by leaf: those of successive queries; after the last one the first follows
/// again. A result without a value stands for a query that fails.
using DumpedLeaves = std::map<std::uint32_t, std::vector<std::optional<GEN_CPUID>>>;

struct MachineDump
{
    bool has_masks = true;
    std::uint64_t system_mask = 0;
    std::uint64_t process_mask = 0;
    int online_count = 0;
    std::map<unsigned, DumpedLeaves> processors; ///< by their bits in the masks
};

/// Reads a text.
///
/// @param error  receives the number of the first line that can't be read; 0 if there is none
MachineDump read_machine_dump(std::string const &text, int &error);

/// A dump from tests/data/cpuid, by its name without ".txt"; one that can't be read ends the test program.
MachineDump load_machine_dump(std::string const &name);

#endif
