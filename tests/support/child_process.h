// Programs run to their ends by a test, one after the other or at once.
#ifndef TESTS_SUPPORT_CHILD_PROCESS_H
#define TESTS_SUPPORT_CHILD_PROCESS_H

#include <cstdio>
#include <string>

struct ChildResult
{
    int status;         ///< exit status; -1 if the program could not be run or was killed
    std::string output; ///< what it wrote to both standard streams, with "\n" as line end
};

/// A program that runs at the same time as this process, with its environment and its current directory.
class ChildProcess
{
public:
    /// @param program    its full path
    /// @param arguments  words with blanks between, passed through the command interpreter
    explicit ChildProcess(std::string const &program, std::string const &arguments = "");
    ~ChildProcess();
    ChildProcess(ChildProcess &&other) noexcept;
    ChildProcess &operator=(ChildProcess &&) = delete;

    /// Reads its output and waits for its end. Before this call the program can write only as much as the pipe holds.
    ChildResult wait();

private:
    std::FILE *m_pipe; // null if the program could not be run, or has ended
};

/// Runs a program to its end.
ChildResult run_child(std::string const &program, std::string const &arguments = "");

#endif
