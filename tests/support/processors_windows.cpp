#include "tests/support/processors.h"

#include <windows.h>

namespace {

// PF_SSSE3_INSTRUCTIONS_AVAILABLE and the next ones, which not every version of the header has, nor every version of
// the system: a system without them denies all.
constexpr DWORD PF_SSSE3 = 36;
constexpr DWORD PF_SSE4_1 = 37;
constexpr DWORD PF_SSE4_2 = 38;
constexpr DWORD PF_AVX2 = 40;

} // namespace

int processors_online()
{
    char text[20] = "";
    GetEnvironmentVariableA("NUMBER_OF_PROCESSORS", text, sizeof text);
    return std::stoi(text);
}

std::uint64_t processors_of_process()
{
    DWORD_PTR process = 0;
    DWORD_PTR system;
    GetProcessAffinityMask(GetCurrentProcess(), &process, &system);
    return process;
}
void processors_restrict_process(std::uint64_t mask)
{
    SetProcessAffinityMask(GetCurrentProcess(), mask);
}

std::uint64_t processors_of_thread()
{
    // Only setting a mask returns the former one.
    DWORD_PTR const mask = SetThreadAffinityMask(GetCurrentThread(), processors_of_process());
    SetThreadAffinityMask(GetCurrentThread(), mask);
    return mask;
}
void processors_pin_thread(std::uint64_t mask)
{
    SetThreadAffinityMask(GetCurrentThread(), mask);
}

std::map<std::string, bool> processors_features()
{
    auto const has = [](DWORD feature) { return IsProcessorFeaturePresent(feature) != 0; };
    std::map<std::string, bool> features{
        {"sse", has(PF_XMMI_INSTRUCTIONS_AVAILABLE)},
        {"sse2", has(PF_XMMI64_INSTRUCTIONS_AVAILABLE)},
        {"sse3", has(PF_SSE3_INSTRUCTIONS_AVAILABLE)},
    };
    if (has(PF_SSSE3))
        features.insert(
            {{"ssse3", true}, {"sse4_1", has(PF_SSE4_1)}, {"sse4_2", has(PF_SSE4_2)}, {"avx2", has(PF_AVX2)}});
    return features;
}

bool processors_have_frequency()
{
    DWORD mhz;
    DWORD size = sizeof mhz;
    return RegGetValueA(HKEY_LOCAL_MACHINE, "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "~MHz",
                        RRF_RT_REG_DWORD, nullptr, &mhz, &size) == ERROR_SUCCESS;
}
