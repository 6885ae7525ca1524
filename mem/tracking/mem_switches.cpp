#include "mem/tracking/mem_switches.h"

#include "mem/tracking/mem_count.h"
#include "mem/tracking/mem_locks.h"

std::atomic<int> mem_switches_word{0};

namespace {

// Under the lock of the switches.
int set_word(int word)
{
    int const former = mem_switches_word.exchange(word, std::memory_order_relaxed);
    if (((former ^ word) & MEM_TRACKING_SOURCES) != 0)
        mem_count_watch_blocks((word & MEM_TRACKING_SOURCES) != 0);
    return word & ~former;
}

} // namespace

int mem_switches_start(int key_value)
{
    MEM_LOCK_SCOPE const lock(mem_switch_lock);
    if (mem_switches_word.load(std::memory_order_relaxed) != 0)
        return 0;
    int const mark = key_value != 0 ? MEM_SWITCHES_KEY_NOT_ZERO : 0;
    return set_word((key_value & MEM_SWITCHES_GRANULARITIES) | mark | MEM_SWITCHES_KEY_READ);
}

int mem_switches_change(int on, int off)
{
    MEM_LOCK_SCOPE const lock(mem_switch_lock);
    int const word = mem_switches_word.load(std::memory_order_relaxed);
    return set_word((word | (on & MEM_SWITCHES_GRANULARITIES)) & ~(off & MEM_SWITCHES_GRANULARITIES));
}
