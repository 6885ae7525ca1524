#include "err/os/err_os.h"

#include "sys/os/sys_os_function_windows.h"
#include "sys/sys_process.h"

#include <windows.h>

#include <io.h>

#include <csignal>
#include <cstdlib>
#include <iterator>

namespace {

// Frames that are searched for the exit function; the first of them are kept.
constexpr unsigned MAX_WALKED_FRAMES = 1024;

// The runtime's functions that run exit handlers, in whichever runtime library is loaded.
constexpr char const *RUNTIMES[] = {"msvcrt.dll", "ucrtbase.dll"};
constexpr char const *EXIT_FUNCTIONS[] = {"exit", "_cexit", "_c_exit", "quick_exit"};
constexpr std::size_t MAX_EXIT_FUNCTIONS = std::size(RUNTIMES) * std::size(EXIT_FUNCTIONS);

using OnexitList = _onexit_t(__cdecl *)(_onexit_t);

// The function that err_os_call_at_exit() was given; null before.
void (*l_at_exit)() = nullptr;

int __cdecl call_at_exit()
{
    l_at_exit();
    return 0;
}

// The unwinder's record of the function that contains the address; null if there is none.
void *function_record_of(DWORD64 address)
{
    DWORD64 image = 0;
    return RtlLookupFunctionEntry(address, &image, nullptr);
}

// An address inside the call that returns to `return_address`. The return address itself may belong to the next
// function, if the call is the last instruction of a function that never returns.
DWORD64 call_of(void const *return_address)
{
    return reinterpret_cast<DWORD64>(return_address) - 1;
}

// The functions of the runtimes that run exit handlers.
class ExitCode
{
public:
    ExitCode()
    {
        for (char const *runtime : RUNTIMES)
            for (char const *name : EXIT_FUNCTIONS)
                add(sys_os_find_function<void *>(runtime, name));
    }

    bool contains(DWORD64 address) const
    {
        void *record = function_record_of(address);
        for (std::size_t i = 0; record != nullptr && i < m_count; ++i)
            if (m_records[i] == record)
                return true;
        return false;
    }

private:
    void add(void *function)
    {
        void *record = function == nullptr ? nullptr : function_record_of(reinterpret_cast<DWORD64>(function));
        if (record != nullptr)
            m_records[m_count++] = record;
    }

    void *m_records[MAX_EXIT_FUNCTIONS];
    std::size_t m_count = 0;
};

// Found when the library is loaded, since a report takes no lock of the loader.
ExitCode const l_exit_code;

// Only the thread that reports uses them: the stack may be short.
void *l_walked[MAX_WALKED_FRAMES];

// Read when the library is loaded, for the same reason.
struct ExecutablePath
{
    ExecutablePath() : size(sys_read_executable_path(text, sizeof text)) {}

    char text[4096];
    std::size_t size;
};
ExecutablePath const l_executable;

// What a fault ends the process with; written before the handlers are set.
int l_fault_status = 0;

// The room that a thread keeps for the handling of a stack that is used up.
constexpr ULONG GUARANTEED_STACK = 16 * 1024;

LONG WINAPI end_on_exception(EXCEPTION_POINTERS *)
{
    err_os_end_at_once(l_fault_status);
}

void __cdecl end_on_abort(int)
{
    err_os_end_at_once(l_fault_status);
}

HANDLE error_stream()
{
    // Unlike the system's handle, the stream 2 of the runtime follows a redirection inside the process.
    std::intptr_t const handle = _get_osfhandle(2);
    return handle > 0 ? reinterpret_cast<HANDLE>(handle) : GetStdHandle(STD_ERROR_HANDLE);
}

} // namespace

std::uint64_t err_os_process_id()
{
    return GetCurrentProcessId();
}

std::string_view err_os_executable()
{
    return {l_executable.text, l_executable.size};
}

void err_os_begin_report(int status)
{
    l_fault_status = status;
    ULONG guaranteed = GUARANTEED_STACK;
    SetThreadStackGuarantee(&guaranteed);
    SetUnhandledExceptionFilter(end_on_exception);
    std::signal(SIGABRT, end_on_abort);
}

void err_os_capture_stack(ERR_OS_STACK &stack)
{
    unsigned const count = RtlCaptureStackBackTrace(0, MAX_WALKED_FRAMES, l_walked, nullptr);
    for (unsigned i = 0; i < count; ++i) {
        if (stack.count < ERR_OS_STACK::CAPACITY)
            stack.addresses[stack.count++] = l_walked[i];
        stack.is_in_exit = stack.is_in_exit || l_exit_code.contains(call_of(l_walked[i]));
    }
    // The exit handlers of a library run when the system unloads it, outside of the functions of the runtime.
    stack.is_in_exit = stack.is_in_exit || sys_is_last_thread_of_exit();
}

void err_os_describe(ERR_OS_QUESTION const &, ERR_OS_RECEIVER &) {}

bool err_os_write_error_stream(char const *text, std::size_t size)
{
    // A pipe that doesn't block takes nothing while it is full. Its reader has a second.
    constexpr ULONGLONG PATIENCE_MSEC = 1000;
    constexpr DWORD PAUSE_MSEC = 10;
    HANDLE const stream = error_stream();
    ULONGLONG const deadline = GetTickCount64() + PATIENCE_MSEC;
    while (size != 0) {
        DWORD const part = size < MAXDWORD ? static_cast<DWORD>(size) : MAXDWORD;
        DWORD written = 0;
        if (!WriteFile(stream, text, part, &written, nullptr))
            return false;
        if (written == 0) {
            if (GetTickCount64() > deadline)
                return false;
            Sleep(PAUSE_MSEC);
        }
        text += written;
        size -= written;
    }
    return true;
}

void err_os_call_at_exit(void (*function)())
{
    // A handler that a library registers with atexit() runs when the library is unloaded, after the system has ended
    // all other threads. The list of the process is the one of the runtime. Nothing can be removed from that, so the
    // library must never be unloaded.
    HMODULE self = nullptr;
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
    if (!GetModuleHandleExA(FLAGS, reinterpret_cast<char const *>(function), &self))
        return;
    l_at_exit = function;
    for (char const *runtime : RUNTIMES)
        if (auto const add = sys_os_find_function<OnexitList>(runtime, "_onexit"))
            return static_cast<void>(add(call_at_exit));
}

void err_os_end_at_once(int status)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    err_os_wait_for_the_end();
}

void err_os_wait_for_the_end()
{
    for (;;)
        Sleep(INFINITE);
}
