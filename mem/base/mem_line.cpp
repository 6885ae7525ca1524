#include "mem/base/mem_line.h"

#include <mutex>

namespace {

// Held while a line is written. Constant-initialised and never destroyed by the exit, so lines can be written at any
// time.
std::mutex l_mutex;

} // namespace

bool mem_line_write(std::FILE *stream, std::string const &line)
{
    std::lock_guard<std::mutex> const lock(l_mutex);
    // One call for the whole line.
    bool const is_written = std::fwrite(line.data(), 1, line.size(), stream) == line.size();
    return std::fflush(stream) == 0 && is_written;
}

void mem_line_warn(std::string const &text)
{
    mem_line_write(stderr, "Warning: " + text + '\n');
}

void mem_line_lock()
{
    l_mutex.lock();
}

void mem_line_unlock()
{
    l_mutex.unlock();
}
