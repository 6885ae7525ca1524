#include "tests/support/child_process.h"

#include <cstdio>
#include <utility>

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

ChildProcess::ChildProcess(std::string const &program, std::string const &arguments)
{
    std::fflush(nullptr);
    m_pipe = open_pipe('"' + program + "\" " + arguments + " 2>&1");
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept : m_pipe(std::exchange(other.m_pipe, nullptr)) {}

ChildProcess::~ChildProcess()
{
    wait();
}

ChildResult ChildProcess::wait()
{
    ChildResult result{-1, ""};
    if (m_pipe == nullptr)
        return result;
    for (int byte = std::getc(m_pipe); byte != EOF; byte = std::getc(m_pipe))
        if (byte != '\r')
            result.output += static_cast<char>(byte);
    result.status = close_pipe(std::exchange(m_pipe, nullptr));
    return result;
}

ChildResult run_child(std::string const &program, std::string const &arguments)
{
    return ChildProcess(program, arguments).wait();
}
