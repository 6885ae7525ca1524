// The system's own report of its processors, and the affinity of the calling thread, for tests on the live
// machine. Masks are of the first 64 processors.
#ifndef TESTS_SUPPORT_PROCESSORS_H
#define TESTS_SUPPORT_PROCESSORS_H

#include <cstdint>
#include <map>
#include <string>

/// Whether the processors have the CPUID instruction.
#if defined(__x86_64__) || defined(__i386__)
constexpr bool HAVE_CPUID = true;
#else
constexpr bool HAVE_CPUID = false;
#endif

/// How many processors are online.
int processors_online();

/// Where the process may run. On Linux this is where its main thread may.
std::uint64_t processors_of_process();
void processors_restrict_process(std::uint64_t mask);

/// Where the calling thread may run.
std::uint64_t processors_of_thread();
void processors_pin_thread(std::uint64_t mask);

/// The instruction-set extensions that the system reports, by the names of the getters: "sse4_1", "popcnt". One that
/// it doesn't know is not among them; "avx" is there if either AVX is, or the saving of extended state.
std::map<std::string, bool> processors_features();

/// Whether the system reports the frequency of the first processor.
bool processors_have_frequency();

#endif
