// What the library asks of the operating system, and of the processor itself, about the processors. As in gen_os.h, a
// question without an answer returns false and leaves its outputs alone.
//
// An affinity mask has one bit for each of the first 64 processors, on Windows for those of the process's group.
#ifndef GEN_OS_MACHINE_H
#define GEN_OS_MACHINE_H

#include <cstdint>

/// How many processors are online.
bool gen_os_read_processor_count(int &count);

/// The processors that the process may run on, and those that exist.
bool gen_os_read_affinity(std::uint64_t &process_mask, std::uint64_t &system_mask);

/// Moves the calling thread to the processor of a mask of one bit; false for a processor that the process may not run
/// on. The affinity was read before.
bool gen_os_move_thread(std::uint32_t processor_bit);

/// Lets the calling thread run on all processors of the process again; false, without effect, for a mask of 0.
bool gen_os_release_thread(std::uint64_t process_mask);

/// A query of the CPUID instruction and its answer, by the registers that hold it.
struct GEN_CPUID
{
    std::uint32_t m_eax = 0; ///< of a query: the leaf
    std::uint32_t m_ebx = 0;
    std::uint32_t m_ecx = 0; ///< of a query: the sub-leaf
    std::uint32_t m_edx = 0;
};

/// Replaces a query by its answer, on the processor where the thread is; false if there is no such instruction.
bool gen_os_cpuid(GEN_CPUID &query);

/// The nominal frequency of the first processor.
bool gen_os_read_nominal_mhz(int &mhz);

#endif
