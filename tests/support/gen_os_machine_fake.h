// Scripted processors under the library: one machine per process at a time. Without one every query fails.
#ifndef TESTS_SUPPORT_GEN_OS_MACHINE_FAKE_H
#define TESTS_SUPPORT_GEN_OS_MACHINE_FAKE_H

#include "tests/support/machine_dump.h"

/// Plays a machine from now on, and forgets the calls so far.
void gen_os_machine_fake_play(MachineDump const &machine);

/// Its nominal frequency; none at start.
void gen_os_machine_fake_set_mhz(std::optional<int> mhz);

/// The queries so far, in order: "masks", "move <bit>", "release <mask>", "cpuid <leaf>", all numbers hexadecimal. A
/// test may add to it.
std::vector<std::string> &gen_os_machine_fake_calls();

#endif
