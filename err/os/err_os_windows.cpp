#include "err/os/err_os.h"

#include "sys/os/sys_os_function_windows.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"

#include <windows.h>

#include <io.h>

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

ERR_OS_FRAME describe_by_module(void const *address)
{
    ERR_OS_FRAME frame;
    SYS_MODULE module;
    if (!sys_find_module(static_cast<std::uintptr_t>(call_of(address)), module))
        return frame;
    frame.object = module.name;
    frame.object_offset = reinterpret_cast<std::uintptr_t>(address) - module.begin;
    return frame;
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

std::string err_os_executable()
{
    char path[MAX_PATH];
    DWORD const length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    return length < MAX_PATH ? std::string(path, length) : std::string();
}

void err_os_capture_stack(ERR_OS_STACK &stack)
{
    void *addresses[MAX_WALKED_FRAMES];
    unsigned const count = RtlCaptureStackBackTrace(0, MAX_WALKED_FRAMES, addresses, nullptr);
    ExitCode const exit_code;
    for (unsigned i = 0; i < count; ++i) {
        if (stack.count < ERR_OS_STACK::CAPACITY)
            stack.addresses[stack.count++] = addresses[i];
        stack.is_in_exit = stack.is_in_exit || exit_code.contains(call_of(addresses[i]));
    }
    // The exit handlers of a library run when the system unloads it, outside of the functions of the runtime.
    stack.is_in_exit = stack.is_in_exit || sys_is_last_thread_of_exit();
}

std::vector<ERR_OS_FRAME> err_os_describe(void const *const *addresses, std::size_t count, bool)
{
    std::vector<ERR_OS_FRAME> frames;
    frames.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        frames.push_back(describe_by_module(addresses[i]));
    return frames;
}

void err_os_write_error_stream(char const *text, std::size_t size)
{
    HANDLE const stream = error_stream();
    while (size != 0) {
        DWORD const part = size < MAXDWORD ? static_cast<DWORD>(size) : MAXDWORD;
        DWORD written = 0;
        if (!WriteFile(stream, text, part, &written, nullptr) || written == 0)
            return;
        text += written;
        size -= written;
    }
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
