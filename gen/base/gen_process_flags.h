// What the executable declares its process to be.
#ifndef GEN_PROCESS_FLAGS_H
#define GEN_PROCESS_FLAGS_H

#include <atomic>

/// Set early by the executable. Any thread may read them, callbacks of zel_mem even after the release at exit.
struct GEN_PROCESS_FLAGS
{
    std::atomic<bool> is_ui_process{false};
    std::atomic<bool> is_qt{false};
};
inline GEN_PROCESS_FLAGS gen_process_flags;

#endif
