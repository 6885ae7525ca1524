// Lines of text on a stream, for everything in the library that writes one. Any thread, at any time of the process.
//
// A line goes out whole, by a write to the stream's descriptor after a flush of the stream. If the descriptor doesn't
// block and has no room, the line waits a second for its reader; then it is lost, and the lines after it don't wait
// until the descriptor takes text again. The next line that goes out follows a report of the loss:
//
//     Info (GEN): the last line before the lo
//     Warning: 3 messages were lost here: No space left on device
//     Info (GEN): the first line after it
#ifndef MEM_LINE_H
#define MEM_LINE_H

#include <cstdint>
#include <cstdio>
#include <string>

/// What a stream has lost since it last took a line. It is kept with the stream; mem_line_write() alone uses it.
struct MEM_LINE_LOSSES
{
    std::uint64_t count = 0; ///< the lines
    int error = 0;           ///< the value of errno for the first of them
    bool is_torn = false;    ///< the text before them doesn't end with a line end
};

/// Writes a text that ends in a line end. Lines of different threads never mix, on any stream.
///
/// @return false if the stream did not take the whole line
bool mem_line_write(std::FILE *stream, MEM_LINE_LOSSES &losses, std::string const &line);

/// The same for the standard streams.
bool mem_line_write_output(std::string const &line);
bool mem_line_write_error(std::string const &line);

/// Writes "Warning: ", the text and a line end to the standard error stream, also if messages are redirected.
void mem_line_warn(std::string const &text);

#endif
