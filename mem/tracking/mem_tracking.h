#ifndef MEM_TRACKING_H
#define MEM_TRACKING_H

#include "mem_sys.h"

#include <atomic>

/// The granularities in force, with marks of mem_tracking.cpp above them, which alone writes it.
extern std::atomic<int> mem_tracking_in_force;

/// Whether a granularity, one bit, is on. Doesn't read the key: as long as nobody has asked, nothing is. Any thread.
inline bool mem_tracking_has(MEM_TRACKING_GRANULARITY granularity)
{
    return (mem_tracking_in_force.load(std::memory_order_relaxed) & granularity) != 0;
}

#endif
