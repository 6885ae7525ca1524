// The capture: one thread visits all processors and reads what each of them reports.
#ifndef GEN_MACHINE_CAPTURE_H
#define GEN_MACHINE_CAPTURE_H

#include "gen/machine/gen_machine_state.h"

/// Visits the processors and adds what they report to the packages of the state. A failure clears m_cpu_info_valid.
void gen_walk_processors(GEN_MACHINE_STATE &state);

/// The three fields of an APIC id.
struct GEN_CPU_IDS
{
    std::uint8_t m_package_id;
    std::uint8_t m_core_id;
    std::uint8_t m_smt_id;
};

/// Splits an APIC id into its fields. Each field keeps its position in the id.
GEN_CPU_IDS gen_split_apic_id(std::uint8_t apic_id, std::uint32_t logical_per_package, std::uint32_t smt_per_core);

#endif
