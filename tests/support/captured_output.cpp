#include "tests/support/captured_output.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The streams of both interfaces, whose texts have to arrive before the descriptor changes.
void flush_streams()
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    std::fflush(stderr);
}

[[noreturn]] void fail(char const *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

CapturedOutput::CapturedOutput(StandardStream stream)
    : m_descriptor(stream == StandardStream::OUTPUT ? STDOUT_FILENO : STDERR_FILENO)
{
    flush_streams();
    // In text mode on Windows, like the standard streams.
    int const file = open(m_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
    if (file < 0)
        fail("cannot open the file of a captured stream");
    m_former = dup(m_descriptor);
    if (m_former < 0 || dup2(file, m_descriptor) < 0)
        fail("cannot capture a standard stream");
    close(file);
}

CapturedOutput::~CapturedOutput()
{
    end();
}

std::string const &CapturedOutput::text()
{
    end();
    return m_text;
}

void CapturedOutput::end()
{
    if (m_former < 0)
        return;
    flush_streams();
    dup2(m_former, m_descriptor);
    close(m_former);
    m_former = -1;
    std::ifstream file(m_file);
    m_text.assign(std::istreambuf_iterator<char>(file), {});
}
