#include "mem/os/mem_os_call.h"

#include "mem/os/mem_os_frame.h"
#include "sys/sys_module.h"

#include <atomic>
#include <link.h>
#include <pthread.h>
#include <string_view>
#include <unwind.h>

namespace {

// Addresses from the first up to the second.
struct AddressRange
{
    std::uintptr_t begin;
    std::uintptr_t end;
};

// The code of the C++ runtime. Written by every thread that finds no end stored yet, always with the same values. The
// threads don't wait for each other, as they would for the guard of a static: one of them may hold the loader's lock,
// which the search takes. The exit leaves it.
std::atomic<std::uintptr_t> l_cxx_runtime_begin{0};
std::atomic<std::uintptr_t> l_cxx_runtime_end{0}; // stored last; 0 until then

// The stack of the thread. Written by its own thread, at its first query; empty until then.
__thread AddressRange l_stack __attribute__((tls_model("initial-exec"))) = {};

struct FrameWalk
{
    MEM_OS_FRAME *frames;
    std::size_t capacity;
    std::size_t count;
    // The upper end of the last frame according to its frame pointer.
    std::uintptr_t frame_pointer_end;
};

// The unwinder reports a frame's stack pointer and registers. The stack pointer of the next frame is the upper end of
// this one.
_Unwind_Reason_Code record_frame(_Unwind_Context *context, void *data)
{
    FrameWalk &walk = *static_cast<FrameWalk *>(data);
    std::uintptr_t const address = _Unwind_GetIP(context);
    std::uintptr_t const stack = _Unwind_GetCFA(context);
    if (walk.count != 0 && walk.frame_pointer_end == stack)
        walk.frames[walk.count - 1].is_of_fixed_size = false;
    if (address == 0 || walk.count == walk.capacity)
        return _URC_END_OF_STACK;
    walk.frames[walk.count++] = {address, stack, mem_os_frame_size_is_known()};
    walk.frame_pointer_end = mem_os_frame_end_by_pointer(context);
    return _URC_NO_REASON;
}

int find_cxx_runtime(dl_phdr_info *info, std::size_t, void *data)
{
    constexpr std::string_view PREFIX = "libstdc++.so";
    if (sys_file_name(info->dlpi_name).substr(0, PREFIX.size()) != PREFIX)
        return 0;
    AddressRange &range = *static_cast<AddressRange *>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        ElfW(Phdr) const &header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0)
            range = {info->dlpi_addr + header.p_vaddr, info->dlpi_addr + header.p_vaddr + header.p_memsz};
    }
    return 1;
}

AddressRange find_cxx_runtime()
{
    AddressRange range{1, 1}; // empty, and different from a range that was never looked for
    dl_iterate_phdr(find_cxx_runtime, &range);
    return range;
}

AddressRange cxx_runtime()
{
    std::uintptr_t const end = l_cxx_runtime_end.load(std::memory_order_acquire);
    if (end != 0)
        return {l_cxx_runtime_begin.load(std::memory_order_relaxed), end};
    AddressRange const range = find_cxx_runtime();
    l_cxx_runtime_begin.store(range.begin, std::memory_order_relaxed);
    l_cxx_runtime_end.store(range.end, std::memory_order_release);
    return range;
}

// Found when the library is loaded, so that no fork finds a thread in the search: the child could not search then.
[[maybe_unused]] AddressRange const l_cxx_runtime_found = cxx_runtime();

AddressRange stack_of_thread()
{
    AddressRange range{};
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return range;
    void *begin = nullptr;
    std::size_t size = 0;
    if (pthread_attr_getstack(&attributes, &begin, &size) == 0)
        range = {reinterpret_cast<std::uintptr_t>(begin), reinterpret_cast<std::uintptr_t>(begin) + size};
    pthread_attr_destroy(&attributes);
    return range;
}

} // namespace

std::size_t mem_os_walk_stack(MEM_OS_FRAME *frames, std::size_t capacity)
{
    FrameWalk walk{frames, capacity, 0, 0};
    _Unwind_Backtrace(record_frame, &walk);
    return walk.count;
}

std::uintptr_t mem_os_stack_end(std::uintptr_t stack)
{
    if (l_stack.end == 0)
        l_stack = stack_of_thread();
    return l_stack.begin <= stack && stack < l_stack.end ? l_stack.end : 0;
}

bool mem_os_is_cxx_runtime(std::uintptr_t address)
{
    AddressRange const range = cxx_runtime();
    return range.begin <= address && address < range.end;
}
