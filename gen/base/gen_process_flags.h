// Facts about the process that its executable declares.
#ifndef GEN_PROCESS_FLAGS_H
#define GEN_PROCESS_FLAGS_H

#include <atomic>

/// Set early by the executable. Any thread may read them. They are valid until the process ends: callbacks of zel_mem
/// read them even after the static objects are released.
struct GEN_PROCESS_FLAGS
{
    std::atomic<bool> is_ui_process{false};
    std::atomic<bool> is_qt{false};
};
inline GEN_PROCESS_FLAGS gen_process_flags;

#endif
