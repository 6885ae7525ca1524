#include "err/os/err_os.h"
#include "err/os/err_os_fault_linux.h"
#include "sys/sys_process.h"
#include "sys/sys_write.h"

#include <unistd.h>
#include <unwind.h>

#include <climits>
#include <csignal>
#include <cstdlib>

namespace {

// How long a stream that doesn't block may have no room.
constexpr int FULL_STREAM_MILLISECONDS = 1000;

// Read when the library is loaded, since the file may be moved later and a report may have little stack.
struct ExecutablePath
{
    ExecutablePath() : size(sys_read_executable_path(text, sizeof text)) {}

    char text[PATH_MAX];
    std::size_t size;
};
ExecutablePath const l_executable;

_Unwind_Reason_Code record_frame(_Unwind_Context *context, void *data)
{
    ERR_OS_STACK &stack = *static_cast<ERR_OS_STACK *>(data);
    std::uintptr_t const address = _Unwind_GetIP(context);
    if (address == 0)
        return _URC_END_OF_STACK;
    if (stack.count < ERR_OS_STACK::CAPACITY)
        stack.addresses[stack.count++] = reinterpret_cast<void *>(address);
    std::uintptr_t const function = _Unwind_GetRegionStart(context);
    if (function == reinterpret_cast<std::uintptr_t>(&std::exit) ||
        function == reinterpret_cast<std::uintptr_t>(&std::quick_exit))
        stack.is_in_exit = true;
    return _URC_NO_REASON;
}

} // namespace

std::uint64_t err_os_process_id()
{
    return static_cast<std::uint64_t>(getpid());
}

std::string_view err_os_executable()
{
    return {l_executable.text, l_executable.size};
}

void err_os_begin_report(int status)
{
    err_os_end_on_faults(status);
    // If the reader of the stream is gone, the process must still end with its own status, and not by this signal.
    std::signal(SIGPIPE, SIG_IGN);
}

void err_os_capture_stack(ERR_OS_STACK &stack)
{
    _Unwind_Backtrace(record_frame, &stack);
}

bool err_os_write_error_stream(char const *text, std::size_t size)
{
    return sys_write(STDERR_FILENO, text, size, FULL_STREAM_MILLISECONDS).error == 0;
}

void err_os_call_at_exit(void (*function)())
{
    std::atexit(function);
}

void err_os_end_at_once(int status)
{
    _exit(status);
}

void err_os_wait_for_the_end()
{
    for (;;)
        pause();
}
