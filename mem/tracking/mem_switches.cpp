#include "mem/tracking/mem_switches.h"

#include "mem/tracking/mem_count.h"
#include "mem/tracking/mem_locks.h"

std::atomic<int> mem_switches_word{0};

namespace {

// Replaces the word by a function of it. Returns the bits that came on.
template <typename Function>
int replace_word(Function function)
{
    MEM_LOCK_SCOPE const lock(mem_switch_lock);
    int const former = mem_switches_word.load(std::memory_order_relaxed);
    int const word = function(former);
    mem_switches_word.store(word, std::memory_order_relaxed);
    if (((former ^ word) & MEM_TRACKING_SOURCES) != 0)
        mem_count_watch_blocks((word & MEM_TRACKING_SOURCES) != 0);
    return word & ~former;
}

} // namespace

int mem_switches_start(int key_value)
{
    int const mark = key_value != 0 ? MEM_SWITCHES_KEY_NOT_ZERO : 0;
    int const first = (key_value & MEM_SWITCHES_GRANULARITIES) | mark | MEM_SWITCHES_KEY_READ;
    return replace_word([first](int former) { return former != 0 ? former : first; });
}

int mem_switches_change(int on, int off)
{
    return replace_word([on, off](int former) {
        return (former | (on & MEM_SWITCHES_GRANULARITIES)) & ~(off & MEM_SWITCHES_GRANULARITIES);
    });
}
