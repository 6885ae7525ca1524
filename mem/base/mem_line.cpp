#include "mem/base/mem_line.h"

#include "sys/sys_fork.h"
#include "sys/sys_write.h"

#include <mutex>
#include <new>
#include <system_error>

namespace {

// How long a line waits for room.
constexpr int WAIT_MSEC = 1000;

// Held while a line is written, which may take the whole wait, and without a limit if the descriptor blocks. So a fork
// doesn't wait for it. Constant-initialised and never destroyed by the exit, so lines can be written at any time.
std::mutex l_turn;

// What the standard streams have lost. Written under the mutex.
MEM_LINE_LOSSES l_output_losses;
MEM_LINE_LOSSES l_error_losses;

// In the child of a fork. The thread that may hold the mutex doesn't exist there, so the mutex begins anew.
void forget_writer()
{
    new (&l_turn) std::mutex;
}

// Set when the library is loaded. Nothing reads it.
[[maybe_unused]] bool const l_forgets_writer =
    sys_watch_forks(/*before=*/nullptr, /*in_parent=*/nullptr, forget_writer);

// Returns 0, or the value of errno for the part of the text that did not go out.
int write_part(int descriptor, std::string const &text, int milliseconds, MEM_LINE_LOSSES &losses)
{
    SYS_WRITTEN const written = sys_write(descriptor, text.data(), text.size(), milliseconds);
    if (written.size != 0)
        losses.is_torn = text[written.size - 1] != '\n';
    return written.error;
}

std::string report_of(MEM_LINE_LOSSES const &losses)
{
    return "Warning: " + std::to_string(losses.count) + (losses.count == 1 ? " message was" : " messages were") +
           " lost here: " + std::generic_category().message(losses.error) + '\n';
}

// Writes the report of the losses, if there are any, and then the line. Returns as write_part() does.
int write_after_report(int descriptor, std::string const &line, MEM_LINE_LOSSES &losses)
{
    std::string const line_end(losses.is_torn ? 1 : 0, '\n');
    if (losses.count == 0)
        return write_part(descriptor, line_end + line, WAIT_MSEC, losses);
    if (int const error = write_part(descriptor, line_end + report_of(losses), /*milliseconds=*/0, losses))
        return error;
    losses = {};
    return write_part(descriptor, line, WAIT_MSEC, losses);
}

} // namespace

bool mem_line_write(std::FILE *stream, MEM_LINE_LOSSES &losses, std::string const &line)
{
    std::lock_guard<std::mutex> const lock(l_turn);
    // If the stream's own text does not go out, it may be cut within a line.
    if (std::fflush(stream) != 0)
        losses.is_torn = true;
    int const error = write_after_report(sys_descriptor_of(stream), line, losses);
    if (error == 0)
        return true;
    if (losses.count++ == 0)
        losses.error = error;
    return false;
}

bool mem_line_write_output(std::string const &line)
{
    return mem_line_write(stdout, l_output_losses, line);
}

bool mem_line_write_error(std::string const &line)
{
    return mem_line_write(stderr, l_error_losses, line);
}

void mem_line_warn(std::string const &text)
{
    mem_line_write_error("Warning: " + text + '\n');
}
