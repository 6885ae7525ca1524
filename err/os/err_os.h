// What zel_err asks of the operating system.
#ifndef ERR_OS_H
#define ERR_OS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The calling thread's return addresses, innermost first; deeper ones are left out.
struct ERR_OS_STACK
{
    static constexpr std::size_t CAPACITY = 64;
    void *addresses[CAPACITY];
    std::size_t count = 0;
    /// The thread is inside the runtime's exit function, at any depth: an exit handler called it.
    bool is_in_exit = false;
};

/// A place in the source; a text that is not known is empty, a line 0.
struct ERR_OS_LINE
{
    /// Name as the linker has it, or as the source has it where the linker has none.
    std::string function;
    std::string file;
    int line = 0;
};

/// Where a return address lies; a text that is not known is empty, a line 0.
struct ERR_OS_FRAME
{
    /// File name of the executable or library, and the address from its beginning.
    std::string object;
    std::uint64_t object_offset = 0;
    /// Name as the linker has it, and the address from the function's beginning.
    std::string function;
    std::uint64_t function_offset = 0;
    std::string file;
    int line = 0;
    /// If asked for: the functions that the compiler has put in place of their calls there, innermost first, and at
    /// last the function above with the line from which it goes into them. Empty if there are none.
    std::vector<ERR_OS_LINE> inlined;
};

std::uint64_t err_os_process_id();

/// Full path of the process's executable; empty if the system does not tell.
std::string err_os_executable();

void err_os_capture_stack(ERR_OS_STACK &stack);
std::vector<ERR_OS_FRAME> err_os_describe(void const *const *addresses, std::size_t count, bool with_inlined);

/// Writes to the standard error stream with one call.
void err_os_write_error_stream(char const *text, std::size_t size);

/// Has the function called by the thread that runs the process's exit handlers, before the handlers
/// that were registered earlier, while the other threads still run.
void err_os_call_at_exit(void (*function)());

/// Ends the process without exit handlers.
[[noreturn]] void err_os_end_at_once(int status);

/// Rests until another thread ends the process.
[[noreturn]] void err_os_wait_for_the_end();

#endif
