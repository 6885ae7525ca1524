#include "tests/support/child_process.h"
#include "tests/support/child_pipe.h"

#include <cstdio>
#include <utility>

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
