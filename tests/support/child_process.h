// A program run to its end by a test.
#ifndef TESTS_SUPPORT_CHILD_PROCESS_H
#define TESTS_SUPPORT_CHILD_PROCESS_H

#include <string>

struct ChildResult
{
    int status;         ///< exit status; -1 if the program could not be run or was killed
    std::string output; ///< what it wrote to both standard streams, with "\n" as line end
};

/// Runs a program with the environment and the current directory of this process.
///
/// @param program    its full path
/// @param arguments  words with blanks between, passed through the command interpreter
ChildResult run_child(std::string const &program, std::string const &arguments = "");

#endif
