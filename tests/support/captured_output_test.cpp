#include "tests/support/captured_output.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace {

TEST(CapturedOutput, ContainsWhatAllInterfacesWrite)
{
    CapturedOutput output(StandardStream::OUTPUT);
    std::printf("printf\n");
    std::fflush(stdout);
    std::cout << "cout\n" << std::flush;
    EXPECT_EQ(write(STDOUT_FILENO, "write\n", 6), 6);
    EXPECT_EQ(output.text(), "printf\ncout\nwrite\n");
}

TEST(CapturedOutput, ContainsWhatIsStillBuffered)
{
    CapturedOutput output(StandardStream::OUTPUT);
    std::printf("not flushed");
    EXPECT_EQ(output.text(), "not flushed");
}

TEST(CapturedOutput, KeepsTheTwoStreamsSeparate)
{
    CapturedOutput output(StandardStream::OUTPUT);
    CapturedOutput errors(StandardStream::ERROR_OUTPUT);
    std::fputs("to output\n", stdout);
    std::fputs("to errors\n", stderr);
    EXPECT_EQ(errors.text(), "to errors\n");
    EXPECT_EQ(output.text(), "to output\n");
}

TEST(CapturedOutput, IsEmptyIfNothingIsWritten)
{
    CapturedOutput output(StandardStream::OUTPUT);
    EXPECT_EQ(output.text(), "");
}

TEST(CapturedOutput, EndsAtTheFirstQuestionForItsText)
{
    CapturedOutput outer(StandardStream::OUTPUT);
    CapturedOutput inner(StandardStream::OUTPUT);
    std::fputs("inner", stdout);
    EXPECT_EQ(inner.text(), "inner");
    std::fputs("outer", stdout);
    EXPECT_EQ(inner.text(), "inner");
    EXPECT_EQ(outer.text(), "outer");
}

TEST(CapturedOutput, LeavesOutWhatWasWrittenBefore)
{
    CapturedOutput outer(StandardStream::OUTPUT);
    std::fputs("before", stdout); // stays in the buffer of the stream
    CapturedOutput inner(StandardStream::OUTPUT);
    EXPECT_EQ(inner.text(), "");
    EXPECT_EQ(outer.text(), "before");
}

TEST(CapturedOutput, PutsTheStreamBackAtTheEndOfTheScope)
{
    CapturedOutput outer(StandardStream::ERROR_OUTPUT);
    try {
        CapturedOutput const inner(StandardStream::ERROR_OUTPUT);
        std::fputs("lost", stderr);
        throw std::runtime_error("out of the scope");
    } catch (std::runtime_error const &) {
        std::fputs("kept", stderr);
    }
    EXPECT_EQ(outer.text(), "kept");
}

TEST(CapturedOutput, HoldsMoreThanAPipeDoes)
{
    std::string const line(999, 'x');
    CapturedOutput output(StandardStream::OUTPUT);
    for (int i = 0; i < 1000; ++i)
        std::puts(line.c_str());
    EXPECT_EQ(output.text().size(), 1000000U);
    EXPECT_EQ(output.text().substr(0, 1000), line + "\n");
}

TEST(OutputTo, ReturnsWhatTheCallWrites)
{
    EXPECT_EQ(output_to(StandardStream::OUTPUT, [] { std::printf("%d\n", 12); }), "12\n");
    EXPECT_EQ(output_to(StandardStream::ERROR_OUTPUT, [] { std::cerr << "34"; }), "34");
    EXPECT_EQ(output_to(StandardStream::ERROR_OUTPUT, [] {}), "");
}

} // namespace
