// A run of the test executable under a debugger.
#ifndef TESTS_SUPPORT_DEBUGGER_H
#define TESTS_SUPPORT_DEBUGGER_H

#include <string>

struct DebuggedRun
{
    /// Breakpoints hit after the start of the program; -1 if it could not be started or traced.
    int breaks = -1;
    /// Exit status; -1 if it ended in another way.
    int status = -1;
    /// Its output on the debug channel of Windows; empty elsewhere.
    std::string debug_output;
};

/// Runs this executable again with one argument, and continues it after every break.
DebuggedRun run_under_debugger(char const *argument);

#endif
