// The granularities that are on, in one word. Any thread.
#ifndef MEM_SWITCHES_H
#define MEM_SWITCHES_H

#include "mem_sys.h"

#include <atomic>

/// Bits of MEM_TRACKING_GRANULARITY, and two marks above them.
constexpr int MEM_SWITCHES_GRANULARITIES = MEM_TRACKING_STATISTICS | MEM_TRACKING_TIMELINE | MEM_TRACKING_SOURCES;
constexpr int MEM_SWITCHES_KEY_READ = 0x100;
constexpr int MEM_SWITCHES_KEY_NOT_ZERO = 0x200;

/// 0 until the key "mem_tracking" was read. Written by mem_switches_start() and mem_switches_change(), under the lock
/// of the switches; the exit leaves it.
extern std::atomic<int> mem_switches_word;

/// True if a granularity, one bit, is on. Doesn't read the key: until something else does, no granularity is on.
inline bool mem_switches_has(MEM_TRACKING_GRANULARITY granularity)
{
    return (mem_switches_word.load(std::memory_order_relaxed) & granularity) != 0;
}

/// Sets the word from the key's value, if the key was not read before.
///
/// @return the bits that came on
int mem_switches_start(int key_value);

/// Sets bits of the word, then clears bits. The marks stay.
///
/// @return the bits that came on
int mem_switches_change(int on, int off);

#endif
