#include "tests/support/child_process.h"

#include <cstdio>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace {

#ifdef _WIN32
// The command interpreter takes the outer quotes off.
std::FILE *open_pipe(std::string const &command)
{
    return _popen(('"' + command + '"').c_str(), "rb");
}
int close_pipe(std::FILE *pipe)
{
    return _pclose(pipe);
}
#else
std::FILE *open_pipe(std::string const &command)
{
    return popen(command.c_str(), "r");
}
int close_pipe(std::FILE *pipe)
{
    int const status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
#endif

} // namespace

ChildResult run_child(std::string const &program, std::string const &arguments)
{
    std::fflush(nullptr);
    std::FILE *const pipe = open_pipe('"' + program + "\" " + arguments + " 2>&1");
    if (pipe == nullptr)
        return {-1, ""};
    ChildResult result{-1, ""};
    for (int byte = std::getc(pipe); byte != EOF; byte = std::getc(pipe))
        if (byte != '\r')
            result.output += static_cast<char>(byte);
    result.status = close_pipe(pipe);
    return result;
}
