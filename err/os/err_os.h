// Queries of zel_err to the operating system.
#ifndef ERR_OS_H
#define ERR_OS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The calling thread's return addresses, innermost first. Those beyond the capacity are left out.
struct ERR_OS_STACK
{
    static constexpr std::size_t CAPACITY = 64;
    void *addresses[CAPACITY];
    std::size_t count = 0;
    /// The exit function of the runtime is among the calls, at any depth: the thread runs an exit handler.
    bool is_in_exit = false;
};

/// A place in the source. A text that is not known is empty, and a line that is not known is 0.
struct ERR_OS_LINE
{
    /// The name in the linker, or the name in the source if the linker has none.
    std::string function;
    std::string file;
    int line = 0;
};

/// The place of a return address. A text that is not known is empty, and a line that is not known is 0.
struct ERR_OS_FRAME
{
    /// File name of the executable or library, and the distance of the address from its beginning.
    std::string object;
    std::uint64_t object_offset = 0;
    /// The name in the linker, and the distance of the address from the function's beginning.
    std::string function;
    std::uint64_t function_offset = 0;
    std::string file;
    int line = 0;
    /// The functions that the compiler has inlined at the address, innermost first, and last the function above with
    /// the line at which it would call them. Empty if there are none, or if they were not wanted.
    std::vector<ERR_OS_LINE> inlined;
};

std::uint64_t err_os_process_id();

/// Full path of the process's executable; empty if the system does not give it.
std::string err_os_executable();

void err_os_capture_stack(ERR_OS_STACK &stack);
std::vector<ERR_OS_FRAME> err_os_describe(void const *const *addresses, std::size_t count, bool with_inlined);

/// Writes to the standard error stream, with one system call if the system takes the whole text.
void err_os_write_error_stream(char const *text, std::size_t size);

/// Registers a function that the thread that runs the exit handlers of the process calls while the other threads still
/// run. Handlers that were registered earlier run after it.
void err_os_call_at_exit(void (*function)());

/// Ends the process without exit handlers.
[[noreturn]] void err_os_end_at_once(int status);

/// Waits until another thread ends the process.
[[noreturn]] void err_os_wait_for_the_end();

#endif
