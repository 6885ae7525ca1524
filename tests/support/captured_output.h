// The output of the process on a standard stream during a scope, through any of its interfaces: C streams, C++ streams,
// the descriptor.
#ifndef TESTS_SUPPORT_CAPTURED_OUTPUT_H
#define TESTS_SUPPORT_CAPTURED_OUTPUT_H

#include "tests/support/temp_dir.h"

#include <string>

enum class StandardStream
{
    OUTPUT,
    ERROR_OUTPUT // "ERROR" is a macro on Windows
};

/// Sends a standard stream into a file of its own from the construction on. Captures of one stream may be nested: the
/// innermost one gets the text. The stream is shared by all threads.
class CapturedOutput
{
public:
    explicit CapturedOutput(StandardStream stream);
    /// Ends the capture if text() has not done it.
    ~CapturedOutput();
    CapturedOutput(CapturedOutput const &) = delete;
    CapturedOutput &operator=(CapturedOutput const &) = delete;

    /// Ends the capture at the first call: the stream leads again to where it led before. Returns what was written to
    /// it in between, with "\n" as line end on both platforms.
    std::string const &text();

private:
    void end();

    TempDir m_dir;
    std::string m_file = m_dir.text("captured.txt");
    int m_descriptor;   // of the captured stream
    int m_former = -1;  // a copy of what it was; -1 after the end
    std::string m_text; // set by the end
};

/// Returns the output of a call on a standard stream.
template <typename Function>
std::string output_to(StandardStream stream, Function const &function)
{
    CapturedOutput captured(stream);
    function();
    return captured.text();
}

#endif
