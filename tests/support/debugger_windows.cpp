#include "tests/support/debugger.h"
#include "tests/support/own_executable.h"

#include <windows.h>

#include <string>

namespace {

bool is_breakpoint(DEBUG_EVENT const &event)
{
    return event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT &&
           event.u.Exception.ExceptionRecord.ExceptionCode == EXCEPTION_BREAKPOINT;
}

DWORD status_for(DEBUG_EVENT const &event)
{
    bool const is_other_exception = event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT && !is_breakpoint(event);
    return is_other_exception ? DBG_EXCEPTION_NOT_HANDLED : DBG_CONTINUE;
}

// The text lies in the memory of that process; its size includes the terminator.
std::string debug_text(HANDLE process, OUTPUT_DEBUG_STRING_INFO const &info)
{
    std::string text(info.nDebugStringLength, '\0');
    SIZE_T size = 0;
    ReadProcessMemory(process, info.lpDebugStringData, text.data(), text.size(), &size);
    return text.c_str();
}

} // namespace

DebuggedRun run_under_debugger(char const *argument)
{
    DebuggedRun run;
    std::string const executable = own_executable().string();
    std::string command = "\"" + executable + "\" " + argument;
    STARTUPINFOA start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process;
    if (!CreateProcessA(executable.c_str(), command.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr,
                        nullptr, &start, &process))
        return run;
    DEBUG_EVENT event = {};
    while (WaitForDebugEvent(&event, INFINITE)) {
        // The first break is the start of the program.
        run.breaks += is_breakpoint(event) ? 1 : 0;
        if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT)
            run.status = static_cast<int>(event.u.ExitProcess.dwExitCode);
        if (event.dwDebugEventCode == OUTPUT_DEBUG_STRING_EVENT)
            run.debug_output += debug_text(process.hProcess, event.u.DebugString);
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, status_for(event));
        if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT)
            break;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return run;
}
