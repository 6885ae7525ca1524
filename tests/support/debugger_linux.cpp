#include "tests/support/debugger.h"
#include "tests/support/own_executable.h"

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

[[noreturn]] void be_debugged(char *executable, char *argument)
{
    // The leak check of the address sanitizer cannot run under a debugger.
    setenv("ASAN_OPTIONS", "detect_leaks=0", /*overwrite=*/1);
    char *arguments[] = {executable, argument, nullptr};
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0)
        execv(executable, arguments);
    _exit(127);
}

} // namespace

DebuggedRun run_under_debugger(char const *argument)
{
    DebuggedRun run;
    std::string executable = own_executable().string();
    std::string text = argument;
    if (executable.empty())
        return run;
    pid_t const child = fork();
    if (child == 0)
        be_debugged(executable.data(), text.data());
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        int const signal = WSTOPSIG(status);
        // The first stop is the start of the program.
        run.breaks += signal == SIGTRAP ? 1 : 0;
        ptrace(PTRACE_CONT, child, nullptr, signal == SIGTRAP ? 0 : signal);
    }
    if (WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    return run;
}
