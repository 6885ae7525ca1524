#include "mem/tracking/mem_calls.h"

#include "mem/base/mem_hash_table.h"
#include "mem/os/mem_os_frame.h"

#include <algorithm>

namespace {

// The facts about one return address: how to get from it to the next one.
struct Step
{
    std::uint64_t key; // the return address
    std::uint32_t frame_bytes;
    enum Kind : std::uint8_t
    {
        UNKNOWN, // the next one was not looked for yet
        FIXED,   // the frame always has `frame_bytes`
        VARYING, // the frame may have another size at each call
        LAST     // there is no next one
    } kind;
    bool is_cxx_runtime;
};

// Written under the lock of the sites. It only grows, and the exit keeps it: a return address is valid as long as its
// code is loaded.
MEM_HASH_TABLE<Step> l_steps;

// Collects the calls of one stack, without those of the C++ runtime.
class CallCollector
{
public:
    explicit CallCollector(MEM_CALLS *calls) : m_calls(calls) { *calls = {}; }

    // True if no more calls are wanted.
    bool take(std::uintptr_t return_address, bool is_cxx_runtime)
    {
        if (is_cxx_runtime)
            return false;
        m_calls->return_addresses[m_count++] = return_address;
        return m_count == MEM_CALLS::DEPTH;
    }

    // If all calls belong to the runtime, the innermost one is taken.
    void end(std::uintptr_t first)
    {
        if (m_count == 0)
            m_calls->return_addresses[0] = first;
    }

private:
    MEM_CALLS *m_calls;
    std::size_t m_count = 0;
};

// The size of a frame is not fixed if it was another before. It is not known if the unwinder left out a call after it:
// then the return address in memory is not that of the next frame.
void learn(Step *step, MEM_OS_FRAME const &frame, MEM_OS_FRAME const &caller)
{
    std::uintptr_t const size = caller.stack - frame.stack;
    bool const is_fixed = frame.is_of_fixed_size && caller.stack > frame.stack && size <= UINT32_MAX &&
                          mem_os_frame_return_address(caller.stack) == caller.return_address;
    if (!is_fixed || (step->kind == Step::FIXED && step->frame_bytes != size)) {
        step->kind = Step::VARYING;
    } else if (step->kind != Step::VARYING) {
        step->kind = Step::FIXED;
        step->frame_bytes = static_cast<std::uint32_t>(size);
    }
}

} // namespace

bool mem_calls_read(MEM_CALL const &call, MEM_CALLS *calls)
{
    std::uintptr_t const first = reinterpret_cast<std::uintptr_t>(call.return_address);
    std::uintptr_t return_address = first;
    std::uintptr_t stack = reinterpret_cast<std::uintptr_t>(call.stack);
    std::uintptr_t end = 0; // found at the first step
    CallCollector collector(calls);
    for (std::size_t i = 0; i < MEM_STACK::CAPACITY; ++i) {
        Step const *const step = return_address == 0 ? nullptr : l_steps.find(return_address);
        if (step == nullptr)
            return false;
        if (collector.take(return_address, step->is_cxx_runtime))
            return true;
        if (step->kind == Step::LAST) {
            collector.end(first);
            return true;
        }
        if (end == 0)
            end = mem_os_stack_end(stack);
        if (step->kind != Step::FIXED || end == 0 || step->frame_bytes > end - stack)
            return false;
        stack += step->frame_bytes;
        return_address = mem_os_frame_return_address(stack);
    }
    return false;
}

void mem_calls_unwind(MEM_CALL const &call, MEM_STACK *stack)
{
    std::uintptr_t const return_address = reinterpret_cast<std::uintptr_t>(call.return_address);
    std::uintptr_t const after = reinterpret_cast<std::uintptr_t>(call.stack);
    std::size_t const count = call.stack == nullptr ? 0 : mem_os_walk_stack(stack->frames, MEM_STACK::CAPACITY);
    std::size_t first = 0;
    while (first < count &&
           (stack->frames[first].return_address != return_address || stack->frames[first].stack != after))
        ++first;
    bool const is_found = first < count;
    stack->count = is_found ? count - first : 1;
    stack->is_whole = !is_found || count < MEM_STACK::CAPACITY;
    std::copy(stack->frames + first, stack->frames + count, stack->frames);
    if (!is_found)
        stack->frames[0] = {return_address, after, false};
    for (std::size_t i = 0; i < stack->count; ++i)
        stack->is_cxx_runtime[i] = mem_os_is_cxx_runtime(stack->frames[i].return_address);
}

void mem_calls_learn(MEM_STACK const &stack, MEM_CALLS *calls)
{
    CallCollector collector(calls);
    bool is_done = false;
    for (std::size_t i = 0; i < stack.count; ++i) {
        MEM_OS_FRAME const &frame = stack.frames[i];
        is_done = is_done || collector.take(frame.return_address, stack.is_cxx_runtime[i]);
        Step *const step = l_steps.find_or_add(frame.return_address);
        if (step == nullptr)
            continue;
        step->is_cxx_runtime = stack.is_cxx_runtime[i];
        if (i + 1 < stack.count)
            learn(step, frame, stack.frames[i + 1]);
        else if (stack.is_whole && step->kind == Step::UNKNOWN)
            step->kind = Step::LAST;
    }
    collector.end(stack.frames[0].return_address);
}
