// The calls that lead to an allocation.
//
// Unwinding a stack takes most of a microsecond, so it is done once for each chain of calls to an operator new. It
// gives the size of each frame under its return address, and with these sizes the next stack is read frame by frame
// from memory, without the unwinder:
//
//     unwound       return address   stack after it      learned
//     operator new  A                1000                A: frame of 48 bytes
//     grow          B                1048                B: frame of 32 bytes
//     place         C                1080                C is a return address
//
//     later         A                2000                A has 48 bytes: read the return address below 2048: B
//                   B                2048                B has 32 bytes: read the return address below 2080: D
//                   D                                    D is not known: unwind this stack
//
// If a function has frames of several sizes, because it takes room on the stack while it runs, stacks with it are
// unwound each time.
#ifndef MEM_CALLS_H
#define MEM_CALLS_H

#include "mem/os/mem_os_call.h"

/// Return addresses outside of the C++ runtime's library, innermost first, then zeros. There is at least one.
struct MEM_CALLS
{
    /// Enough for the functions of the standard library between an allocation and the code that asked for it, even if
    /// none of them is inlined.
    static constexpr std::size_t DEPTH = 10;
    std::uintptr_t return_addresses[DEPTH];
};

/// A stack as it was unwound.
struct MEM_STACK
{
    /// More than DEPTH, since some calls belong to the operators themselves or to the C++ runtime's library.
    static constexpr std::size_t CAPACITY = 32;
    MEM_OS_FRAME frames[CAPACITY];
    bool is_cxx_runtime[CAPACITY];
    std::size_t count;
    /// True if the last of the frames is the outermost of the stack.
    bool is_whole;
};

/// Reads the calling thread's stack by the sizes that are known. False if they don't suffice. Under the lock of the
/// sites.
bool mem_calls_read(MEM_CALL const &call, MEM_CALLS *calls);

/// Unwinds the calling thread's stack. The first of its frames is the call. Called without any lock.
void mem_calls_unwind(MEM_CALL const &call, MEM_STACK *stack);

/// Records the sizes of a stack's frames and gives its calls, as mem_calls_read() does for such a stack from now on.
/// Under the lock of the sites.
void mem_calls_learn(MEM_STACK const &stack, MEM_CALLS *calls);

#endif
