// Queries of zel_err to the operating system. Those of a report allocate nothing, take no lock of the process, and need
// little of the stack.
#ifndef ERR_OS_H
#define ERR_OS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

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
    std::string_view function;
    /// The distance of the address from the function's beginning; 0 for a function that the compiler has inlined.
    std::uint64_t function_offset;
    std::string_view file;
    int line;
};

/// Return addresses to describe.
struct ERR_OS_QUESTION
{
    void const *const *addresses;
    std::size_t count;
    /// Whether the functions that the compiler has inlined at an address are wanted too.
    bool with_inlined;
    /// Whether functions have their names in the source, instead of those in the linker.
    bool is_demangled;
    /// How long the answers may take in all, and how long the next one may take.
    int total_milliseconds;
    int silence_milliseconds;
    /// Memory for the answers. A text that is longer than half of it is cut.
    char *buffer;
    std::size_t buffer_size;
};

/// Receives what is found.
class ERR_OS_RECEIVER
{
public:
    ERR_OS_RECEIVER() = default;
    ERR_OS_RECEIVER(ERR_OS_RECEIVER const &) = delete;
    ERR_OS_RECEIVER &operator=(ERR_OS_RECEIVER const &) = delete;

    /// @param index     the address, by its place in the question
    /// @param is_first  the line replaces all lines of this address; otherwise it is the caller of the previous line
    /// @param line      valid during the call
    ///
    /// The lines of an address come innermost first: the functions that the compiler has inlined, and last the function
    /// into which they were inlined. They may come a second time, if more was found.
    virtual void take(std::size_t index, bool is_first, ERR_OS_LINE const &line) = 0;

protected:
    ~ERR_OS_RECEIVER() = default;
};

std::uint64_t err_os_process_id();

/// Full path of the process's executable, as it was at the start; empty if the system does not give it.
std::string_view err_os_executable();

/// Called before the first write of a report, on the thread that writes it. From then on a fault of the process, which
/// is one of the signals SIGSEGV, SIGBUS, SIGABRT and SIGFPE, or on Windows an unhandled exception or abort(), ends the
/// process at once with this status. With sanitizers, their own reports of faults stay.
void err_os_begin_report(int status);

void err_os_capture_stack(ERR_OS_STACK &stack);

/// Describes return addresses by the symbols and the debug information of their modules. Gives up silently where it
/// fails or takes too long. Throws what the receiver throws.
void err_os_describe(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver);

/// Writes to the standard error stream, with one system call if the system takes the whole text. False if the stream
/// does not take the whole text.
bool err_os_write_error_stream(char const *text, std::size_t size);

/// Registers a function that the thread that runs the exit handlers of the process calls while the other threads still
/// run. Handlers that were registered earlier run after it.
void err_os_call_at_exit(void (*function)());

/// Ends the process without exit handlers.
[[noreturn]] void err_os_end_at_once(int status);

/// Waits until another thread ends the process.
[[noreturn]] void err_os_wait_for_the_end();

#endif
