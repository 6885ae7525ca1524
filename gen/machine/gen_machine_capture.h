// The steps of a capture, on the thread that is walked over the processors.
#ifndef GEN_MACHINE_CAPTURE_H
#define GEN_MACHINE_CAPTURE_H

#include "gen/machine/gen_machine_state.h"
#include "gen/os/gen_os_machine.h"

/// Visits the processors and adds what is found to the packages; a failure clears m_cpu_info_valid.
void gen_walk_processors(GEN_MACHINE_STATE &state);

/// Where a logical processor belongs.
struct GEN_CPU_IDS
{
    std::uint8_t m_package_id;
    std::uint8_t m_core_id;
    std::uint8_t m_smt_id;
};

/// Cuts an APIC id into its three fields, each left in its place.
GEN_CPU_IDS gen_split_apic_id(std::uint8_t apic_id, std::uint32_t logical_per_package, std::uint32_t smt_per_core);

/// Fills the caches of a new package from the processor that the thread is on; a vendor that isn't known clears
/// m_cpu_info_valid.
///
/// @param leaf_1_eax  family, model and stepping
void gen_read_caches(GEN_MACHINE_STATE &state, GEN_PKG &package, std::uint32_t leaf_1_eax);

/// A leaf's answer, of sub-leaf 0; all 0 without the instruction.
inline GEN_CPUID gen_read_cpuid(std::uint32_t leaf)
{
    GEN_CPUID query;
    query.m_eax = leaf;
    return gen_os_cpuid(query) ? query : GEN_CPUID();
}

#endif
