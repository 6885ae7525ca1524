// A pipe to the output of a command.
#ifndef TESTS_SUPPORT_CHILD_PIPE_H
#define TESTS_SUPPORT_CHILD_PIPE_H

#include <cstdio>
#include <string>

/// Starts the command by the command interpreter; null if that fails.
std::FILE *open_pipe(std::string const &command);

/// Waits for the end of the command and returns its exit status; -1 if it was killed.
int close_pipe(std::FILE *pipe);

#endif
