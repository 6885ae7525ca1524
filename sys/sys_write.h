// Writing to a file descriptor whose reader may be slow or gone.
#ifndef SYS_WRITE_H
#define SYS_WRITE_H

#include <cstddef>
#include <cstdio>

/// How far a write came.
struct SYS_WRITTEN
{
    /// Bytes of the text that the system has taken.
    std::size_t size;
    /// 0 if it has taken them all, else the value of errno for the rest: EAGAIN if there was no room in time.
    int error;
};

/// Writes a text to a file descriptor of the C runtime, with one system call if the system takes the whole text.
///
/// @param milliseconds  how long to wait, in all, for room in a descriptor that doesn't block; at least 0
///
/// Goes on after a part was taken and after an interruption by a signal. Allocates nothing and takes no lock; on Linux
/// it may be called from a signal handler. The caller has SIGPIPE ignored if the signal must not end the process. On
/// Windows every descriptor blocks, and a descriptor in text mode expands line ends.
SYS_WRITTEN sys_write(int descriptor, char const *text, std::size_t size, int milliseconds);

/// The file descriptor of an open stdio stream. Text in the stream's buffer has to be flushed before the descriptor is
/// written to, or it comes after.
int sys_descriptor_of(std::FILE *stream);

#endif
