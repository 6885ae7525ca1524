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
//     later         A                2000                the return address of 2048 is read: B is known, go on
//                   B                2048                that of 2080 is read: D is none that is known: unwind
//
// A function whose frame has several sizes (it takes room on the stack as it runs) is unwound each time.
#ifndef MEM_CALLS_H
#define MEM_CALLS_H

#include "mem/os/mem_os_call.h"

/// Return addresses outside of the C++ runtime's library, innermost first, then zeros. At least one stands there.
struct MEM_CALLS
{
    /// Enough for the functions of the standard library that stand between an allocation and the code that asked, also
    /// where each of them is a call of its own, as the compiler leaves them without optimisation.
    static constexpr std::size_t DEPTH = 10;
    std::uintptr_t return_addresses[DEPTH];
};

/// A stack as it was unwound.
struct MEM_STACK
{
    /// A few calls belong to the operators themselves, some may belong to the C++ runtime's library.
    static constexpr std::size_t CAPACITY = 32;
    MEM_OS_FRAME frames[CAPACITY];
    bool is_cxx_runtime[CAPACITY];
    std::size_t count;
    /// It goes no further than the last of them.
    bool is_whole;
};

/// Reads the calling thread's stack by the sizes that are known. False if they don't suffice. Under the lock of the
/// sites.
bool mem_calls_read(MEM_CALL const &call, MEM_CALLS *calls);

/// Unwinds the calling thread's stack. The first of its frames is the call. Without any lock.
void mem_calls_unwind(MEM_CALL const &call, MEM_STACK *stack);

/// Records the sizes of a stack's frames and gives its calls, as mem_calls_read() does for such a stack from now on.
/// Under the lock of the sites.
void mem_calls_learn(MEM_STACK const &stack, MEM_CALLS *calls);

#endif
