// Leaves of CPUID.
#ifndef GEN_MACHINE_CPUID_H
#define GEN_MACHINE_CPUID_H

#include "gen/os/gen_os_machine.h"

/// The four registers of a leaf, for sub-leaf 0; all 0 if the processor does not have the instruction.
inline GEN_CPUID gen_read_cpuid(std::uint32_t leaf)
{
    GEN_CPUID query;
    query.m_eax = leaf;
    return gen_os_cpuid(query) ? query : GEN_CPUID();
}

#endif
