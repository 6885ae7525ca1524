// Lines of text on a stream, for everything in the library that writes one. Any thread, at any time of the process.
#ifndef MEM_LINE_H
#define MEM_LINE_H

#include <cstdio>
#include <string>

/// Writes a text that ends in a line end and flushes the stream. Lines of different threads never mix, on any stream.
///
/// @return false if the stream did not take the whole line
bool mem_line_write(std::FILE *stream, std::string const &line);

/// Writes "Warning: ", the text and a line end to the standard error stream, also if messages are redirected.
void mem_line_warn(std::string const &text);

/// Takes the lock of the lines, and releases it, around a fork.
void mem_line_lock();
void mem_line_unlock();

#endif
