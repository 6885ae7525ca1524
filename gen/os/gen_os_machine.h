// Queries about the processors, to the system and to the processor itself. As in gen_os.h, a query without a result
// returns false and leaves its outputs alone.
//
// An affinity mask has one bit for each of the first 64 processors; on Windows, of the group of the process.
#ifndef GEN_OS_MACHINE_H
#define GEN_OS_MACHINE_H

#include <cstdint>

/// The number of processors that are online.
bool gen_os_read_processor_count(int &count);

/// The processors that the process may run on, and those that exist.
bool gen_os_read_affinity(std::uint64_t &process_mask, std::uint64_t &system_mask);

/// Moves the calling thread to the processor of a mask with one bit. False if the process may not run on it. To be
/// called after gen_os_read_affinity().
bool gen_os_move_thread(std::uint32_t processor_bit);

/// Allows the calling thread all processors of the process again. False, and no effect, for a mask of 0.
bool gen_os_release_thread(std::uint64_t process_mask);

/// A query of the CPUID instruction, and then its result, by registers.
struct GEN_CPUID
{
    std::uint32_t m_eax = 0; ///< in a query: the leaf
    std::uint32_t m_ebx = 0;
    std::uint32_t m_ecx = 0; ///< in a query: the sub-leaf
    std::uint32_t m_edx = 0;
};

/// Replaces a query by its result on the processor that runs the thread. False if there is no such instruction.
bool gen_os_cpuid(GEN_CPUID &query);

/// The nominal frequency of the first processor.
bool gen_os_read_nominal_mhz(int &mhz);

#endif
