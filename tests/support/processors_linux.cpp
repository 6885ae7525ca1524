#include "tests/support/processors.h"

#include <fstream>
#include <sstream>

#include <sched.h>
#include <unistd.h>

namespace {

constexpr std::size_t WORDS = 8192 / 64;

std::uint64_t mask_of(pid_t thread)
{
    std::uint64_t words[WORDS] = {};
    sched_getaffinity(thread, sizeof words, reinterpret_cast<cpu_set_t *>(words));
    return words[0];
}

void set_mask_of(pid_t thread, std::uint64_t mask)
{
    std::uint64_t const words[WORDS] = {mask};
    sched_setaffinity(thread, sizeof words, reinterpret_cast<cpu_set_t const *>(words));
}

} // namespace

int processors_online()
{
    std::ifstream processors("/proc/cpuinfo");
    int count = 0;
    for (std::string line; std::getline(processors, line);)
        count += line.rfind("processor\t", 0) == 0 ? 1 : 0;
    return count;
}

std::uint64_t processors_of_process()
{
    return mask_of(getpid());
}
void processors_restrict_process(std::uint64_t mask)
{
    set_mask_of(getpid(), mask);
}

std::uint64_t processors_of_thread()
{
    return mask_of(0);
}
void processors_pin_thread(std::uint64_t mask)
{
    set_mask_of(0, mask);
}

std::map<std::string, bool> processors_features()
{
    std::ifstream processors("/proc/cpuinfo");
    std::string line;
    while (std::getline(processors, line) && line.rfind("flags", 0) != 0) {
    }
    std::istringstream words(line);
    std::map<std::string, bool> flags;
    for (std::string word; words >> word;)
        flags[word] = true;
    return {
        {"sse", flags["sse"]},       {"sse2", flags["sse2"]},     {"sse3", flags["pni"]},
        {"ssse3", flags["ssse3"]},   {"sse4_1", flags["sse4_1"]}, {"sse4_2", flags["sse4_2"]},
        {"popcnt", flags["popcnt"]}, {"avx2", flags["avx2"]},     {"avx", flags["avx"] || flags["xsave"]},
        {"bmi1", flags["bmi1"]},     {"bmi2", flags["bmi2"]},     {"lzcnt", flags["abm"]},
    };
}

bool processors_have_frequency()
{
    if (std::ifstream("/sys/devices/system/cpu/cpu0/cpufreq/base_frequency"))
        return true;
    std::ifstream processors("/proc/cpuinfo");
    for (std::string line; std::getline(processors, line);)
        if (line.rfind("cpu MHz", 0) == 0)
            return true;
    return false;
}
