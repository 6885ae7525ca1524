#include "gen/os/gen_os_machine.h"

#include "gen/base/gen_machine_text.h"
#include "sys/os/sys_os_text_file_linux.h"

#include <sched.h>
#include <unistd.h>

namespace {

// A set of processors in the form of the system calls, with a bit for each processor that a kernel can support.
struct ProcessorSet
{
    std::uint64_t m_words[8192 / 64];
};

// The processors that the process may run on, including those beyond the 64 of the masks. Empty until the affinity is
// read. Written and read by the thread that holds the capture mutex.
ProcessorSet l_process_set;

bool set_thread_affinity(ProcessorSet const &set)
{
    return sched_setaffinity(0, sizeof set, reinterpret_cast<cpu_set_t const *>(set.m_words)) == 0;
}

} // namespace

bool gen_os_read_processor_count(int &count)
{
    long const online = sysconf(_SC_NPROCESSORS_ONLN);
    if (online < 0)
        return false;
    count = static_cast<int>(online);
    return true;
}

// The processors of the process are those of its main thread, whose thread id is that of the process. If /sys isn't
// mounted, they are also the result for the system.
bool gen_os_read_affinity(std::uint64_t &process_mask, std::uint64_t &system_mask)
{
    ProcessorSet process_set{};
    if (sched_getaffinity(getpid(), sizeof process_set, reinterpret_cast<cpu_set_t *>(process_set.m_words)) != 0)
        return false;
    l_process_set = process_set;
    process_mask = process_set.m_words[0];
    SYS_OS_TEXT_FILE const online("/sys/devices/system/cpu/online");
    if (!gen_read_processor_list(online.text(), system_mask))
        system_mask = process_mask;
    return true;
}

// The mask of the process is checked here: the system would allow a thread to leave the processors of its process.
bool gen_os_move_thread(std::uint32_t processor_bit)
{
    ProcessorSet one{};
    one.m_words[0] = l_process_set.m_words[0] & processor_bit;
    return one.m_words[0] != 0 && set_thread_affinity(one);
}

// The whole set is used, of which the mask is the first part.
bool gen_os_release_thread(std::uint64_t process_mask)
{
    return process_mask != 0 && set_thread_affinity(l_process_set);
}

bool gen_os_read_nominal_mhz(int &mhz)
{
    SYS_OS_TEXT_FILE const base_frequency("/sys/devices/system/cpu/cpu0/cpufreq/base_frequency");
    if (gen_read_base_frequency(base_frequency.text(), mhz))
        return true;
    SYS_OS_TEXT_FILE const processors("/proc/cpuinfo");
    return gen_read_processor_frequency(processors.text(), mhz);
}
