#include "err_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/platform.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

constexpr char const *BLOCK_HEAD = "Internal error: ";

// Every block has its head, its stack and the lines between them.
MATCHER_P(HasBlocks, count, "")
{
    for (char const *part : {BLOCK_HEAD, "\n  Library: ", "\n  Source:  ", "\n  Version: ", "\n  Process: ",
                             "\n  Module:  ", "\n  Stack:\n    #0 "})
        if (count_of(arg, part) != static_cast<std::size_t>(count)) {
            *result_listener << "has " << count_of(arg, part) << " times \"" << part << "\"";
            return false;
        }
    return true;
}

MATCHER_P2(HasInOrder, first, second, "")
{
    std::size_t const at = arg.find(first);
    return at != std::string::npos && arg.find(second, at) != std::string::npos;
}

void say(char const *text)
{
    std::fputs(text, stderr);
    std::fflush(stderr);
}

void print_handler_runs()
{
    say("[handler runs]\n");
}

void print_abnormal_exit()
{
    say(err_is_in_abnormal_exit() ? "[abnormal exit]\n" : "[ordinary exit]\n");
}

[[noreturn]] void fail(char const *expression)
{
    err_report_internal_error(expression, "TST", "tests/err", 12);
}

void fail_in_handler()
{
    fail("failed in a handler");
}

void wait_for(std::atomic<bool> const &flag)
{
    while (!flag.load())
        std::this_thread::yield();
}

void rest_for_ever()
{
    std::atomic<bool> const never{false};
    wait_for(never);
}

// The first exit handler of this program. Two threads that are in exit() at once are a fault of glibc before
// 2.41: a block of handlers that one thread still works on is released by the other, and then again. The block of the
// first handlers is glibc's own and stays.
std::atomic<void (*)()> l_first_handler{nullptr};

void call_first_handler()
{
    if (auto const handler = l_first_handler.load())
        handler();
}

[[gnu::constructor]] void register_first_handler()
{
    std::atexit(call_first_handler);
}

class ErrReportDeathTest : public testing::Test
{
protected:
    // A process of its own per report, in which threads may be started.
    ErrReportDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

struct TextCase
{
    char const *expression;
    char const *module;
    char const *file;
    int line;
    char const *block;
};

constexpr TextCase TEXT_CASES[] = {
    {"user != 0", "GEN", "gen/gen_time", 17,
     "Internal error: user != 0\n  Library: GEN\n  Source:  gen/gen_time, line 17\n  Version: " ZEL_VERSION_TEXT "\n"},
    // The text is no format and no line of its own.
    {"%s%n 100% \"a\"\n<b>", "T%d", "a\\b%x", -1,
     "Internal error: %s%n 100% \"a\"\n<b>\n  Library: T%d\n  Source:  a\\b%x, line -1\n"},
    {"", "", "", 0, "Internal error: \n  Library: \n  Source:  , line 0\n"},
    {nullptr, nullptr, nullptr, 2147483647,
     "Internal error: (null)\n  Library: (null)\n  Source:  (null), line 2147483647\n"},
};

TEST_F(ErrReportDeathTest, PrintsWhatFailedAndWhere)
{
    for (TextCase const &c : TEXT_CASES)
        EXPECT_EXIT(err_report_internal_error(c.expression, c.module, c.file, c.line),
                    ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), HasSubstr(c.block)))
            << "expression " << (c.expression == nullptr ? "null" : c.expression);
}

TEST_F(ErrReportDeathTest, PrintsALongExpressionWhole)
{
    std::string const expression(100000, 'x');
    EXPECT_EXIT(fail(expression.c_str()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasBlocks(1), HasSubstr(BLOCK_HEAD + expression + "\n  Library: TST\n")));
}

TEST_F(ErrReportDeathTest, NamesTheProcess)
{
    EXPECT_EXIT(fail("a"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr(ON_WINDOWS ? "err_test.exe\n" : "/err_test\n"));
}

TEST_F(ErrReportDeathTest, NamesTheLatestModulePlace)
{
    EXPECT_EXIT(fail("a"), ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("\n  Module:  (not set)\n"));
    EXPECT_EXIT((err_set_module_fullpath("/one/"), err_set_module_fullpath("/two/"), fail("a")),
                ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr("\n  Module:  /two/\n"), Not(HasSubstr("/one/"))));
    EXPECT_EXIT((err_set_module_fullpath("/one/"), err_set_module_fullpath(""), fail("a")),
                ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("\n  Module:  (not set)\n"));
}

} // namespace

// Visible to the linker, so that its name can appear in a stack, and called by way of a pointer that
// the compiler cannot see through, so that every depth has its frame.
int err_test_outer_function(int depth);
int (*volatile l_err_test_outer_function)(int) = err_test_outer_function;

int err_test_outer_function(int depth)
{
    if (depth == 0)
        err_report_internal_error("in a function", "TST", "tests/err", 1);
    return l_err_test_outer_function(depth - 1) ^ depth;
}

namespace {

TEST_F(ErrReportDeathTest, PrintsTheStackFromTheCallerOn)
{
    if (ON_WINDOWS)
        EXPECT_EXIT(l_err_test_outer_function(0), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    HasSubstr("\n  Stack:\n    #0 err_test.exe+0x"));
    else
        EXPECT_EXIT(l_err_test_outer_function(0), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(HasSubstr("\n  Stack:\n    #0 err_test_outer_function(int)+0x"),
                          HasSubstr(" at tests/err/err_test.cpp:"), HasSubstr(" (err_test+0x")));
}

void const *l_return_address = nullptr;

[[gnu::noinline]] void note_return_address()
{
    l_return_address = __builtin_return_address(0);
}

inline void inlined_caller()
{
    note_return_address();
}

TEST(ErrDescribeCalls, ReturnsTheFunctionTheFileAndTheLine)
{
    inlined_caller();
    std::vector<ERR_PLACE> const places = err_describe_calls(&l_return_address, 1);
    ASSERT_EQ(places.size(), 1U);
    EXPECT_THAT(places[0].object, testing::StartsWith("err_test"));
    EXPECT_NE(places[0].object_offset, 0U);
    if (ON_WINDOWS) {
        EXPECT_TRUE(places[0].lines.empty());
        return;
    }
    ASSERT_FALSE(places[0].lines.empty());
    EXPECT_THAT(places[0].lines.front().function, HasSubstr("inlined_caller"));
    EXPECT_EQ(places[0].lines.front().file, "tests/err/err_test.cpp");
    EXPECT_GT(places[0].lines.front().line, 0);
    EXPECT_FALSE(places[0].lines.front().is_standard_library);
}

TEST(ErrDescribeCalls, AnAddressOutsideOfTheProgramHasNoNames)
{
    void const *const addresses[] = {nullptr, reinterpret_cast<void const *>(16)};
    std::vector<ERR_PLACE> const places = err_describe_calls(addresses, 2);
    ASSERT_EQ(places.size(), 2U);
    for (ERR_PLACE const &place : places) {
        EXPECT_EQ(place.object, "");
        EXPECT_TRUE(place.lines.empty());
    }
    EXPECT_TRUE(err_describe_calls(nullptr, 0).empty());
}

TEST_F(ErrReportDeathTest, CutsADeepStack)
{
    EXPECT_EXIT(l_err_test_outer_function(3000), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasBlocks(1), HasSubstr("\n    #50 "), Not(HasSubstr("\n    #64 "))));
}

TEST_F(ErrReportDeathTest, RunsExitHandlersAfterTheBlock)
{
    EXPECT_EXIT((std::atexit(print_handler_runs), fail("a")), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasBlocks(1), HasInOrder("  Stack:\n", "[handler runs]\n")));
}

TEST_F(ErrReportDeathTest, FlushesStandardOutput)
{
    EXPECT_EXIT(
        {
            dup2(2, 1);
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            std::fputs("[buffered]\n", stdout);
            fail("a");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasInOrder("  Stack:\n", "[buffered]"));
}

TEST_F(ErrReportDeathTest, AbnormalExitIsSeenByExitHandlers)
{
    EXPECT_FALSE(err_is_in_abnormal_exit());
    EXPECT_EXIT((std::atexit(print_abnormal_exit), fail("a")), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr("[abnormal exit]\n"));
    EXPECT_EXIT((std::atexit(print_abnormal_exit), std::exit(0)), ExitedWithCode(0), HasSubstr("[ordinary exit]\n"));
}

TEST_F(ErrReportDeathTest, SecondErrorInAnExitHandlerEndsAtOnce)
{
    EXPECT_EXIT((std::atexit(print_handler_runs), std::atexit(fail_in_handler), fail("first")),
                ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasBlocks(2), HasInOrder("Internal error: first\n", "Internal error: failed in a handler\n"),
                      Not(HasSubstr("[handler runs]"))));
}

TEST_F(ErrReportDeathTest, AReaderThatIsGoneDoesNotChangeTheStatus)
{
    constexpr int BROKEN_PIPE = 13; // a signal that Windows doesn't have
    EXPECT_EXIT(
        {
            std::atexit([] {
                if (!ON_WINDOWS)
                    std::raise(BROKEN_PIPE);
            });
            fail("a");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasBlocks(1));
}

// The ways into the exit handlers of an ordinary exit.

TEST_F(ErrReportDeathTest, ErrorInAHandlerOfAnOrdinaryExitEndsAtOnce)
{
    EXPECT_EXIT((std::atexit(print_handler_runs), std::atexit(fail_in_handler), std::exit(0)),
                ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), Not(HasSubstr("[handler runs]"))));
}

TEST_F(ErrReportDeathTest, ErrorDeepInAHandlerOfAnOrdinaryExitEndsAtOnce)
{
    EXPECT_EXIT((std::atexit(print_handler_runs), std::atexit([] { l_err_test_outer_function(300); }), std::exit(0)),
                ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), Not(HasSubstr("[handler runs]"))));
}

TEST_F(ErrReportDeathTest, ErrorInAStaticObjectsDestructorEndsAtOnce)
{
    struct FailingObject
    {
        ~FailingObject() { fail("failed in a destructor"); }
    };
    EXPECT_EXIT(
        {
            std::atexit(print_handler_runs);
            static FailingObject const object;
            std::exit(0);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS),
        AllOf(HasBlocks(1), HasSubstr("failed in a destructor"), Not(HasSubstr("[handler runs]"))));
}

TEST_F(ErrReportDeathTest, ErrorInAHandlerThatAThreadRunsEndsAtOnce)
{
    EXPECT_EXIT(
        {
            std::atexit(print_handler_runs);
            std::atexit(fail_in_handler);
            std::thread([] { std::exit(0); }).join();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), Not(HasSubstr("[handler runs]"))));
}

// Several threads.

TEST_F(ErrReportDeathTest, AThreadEndsTheProcess)
{
    EXPECT_EXIT(
        {
            std::atexit(print_handler_runs);
            std::thread(fail, "failed in a thread").join();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS),
        AllOf(HasBlocks(1), HasInOrder("failed in a thread", "[handler runs]\n")));
}

TEST_F(ErrReportDeathTest, OfManyThreadsOneReports)
{
    EXPECT_EXIT(
        {
            static std::atomic<bool> is_started{false};
            std::atexit(print_handler_runs);
            std::vector<std::thread> threads;
            for (int i = 0; i < 8; ++i)
                threads.emplace_back([] {
                    wait_for(is_started);
                    fail("failed in a thread");
                });
            is_started = true;
            for (std::thread &thread : threads)
                thread.join();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), HasSubstr("[handler runs]\n")));
}

TEST_F(ErrReportDeathTest, ErrorOfAThreadWhileAnotherReportsIsNotPrinted)
{
    static std::atomic<bool> is_in_exit{false};
    EXPECT_EXIT(
        {
            // The handler gives the other thread the time to fail: it is over before the thread has
            // entered its report, or while it rests there; in neither case a second block appears.
            std::atexit([] { is_in_exit = true; });
            std::thread([] {
                wait_for(is_in_exit);
                fail("second");
            }).detach();
            fail("first");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), HasSubstr("Internal error: first\n")));
}

TEST_F(ErrReportDeathTest, ErrorOfAThreadWhileMainRunsExitHandlersEndsAtOnce)
{
    static std::atomic<bool> is_in_exit{false};
    EXPECT_EXIT(
        {
            std::atexit(print_handler_runs);
            std::atexit([] {
                is_in_exit = true;
                rest_for_ever();
            });
            err_set_module_fullpath("/place/");
            std::thread([] {
                wait_for(is_in_exit);
                fail("failed in a thread");
            }).detach();
            std::exit(0);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS),
        AllOf(HasBlocks(1), HasSubstr("failed in a thread"), Not(HasSubstr("[handler runs]"))));
}

TEST_F(ErrReportDeathTest, AnOrdinaryExitDuringAReportTakesItsStatusFromTheReport)
{
    static std::atomic<bool> is_in_exit{false};
    EXPECT_EXIT(
        {
            // Registered after the library's own handler, so it runs before that one.
            err_set_module_fullpath("/place/");
            std::atexit([] {
                is_in_exit = true;
                while (!err_is_in_abnormal_exit())
                    std::this_thread::yield();
            });
            std::thread([] {
                wait_for(is_in_exit);
                fail("failed in a thread");
            }).detach();
            std::exit(0);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), HasSubstr("Internal error: failed in a thread\n")));
}

TEST_F(ErrReportDeathTest, AReportKeepsItsStatusDuringAnOrdinaryExit)
{
    static std::atomic<bool> is_in_exit{false};
    static std::atomic<bool> is_main_on_its_way{false};
    EXPECT_EXIT(
        {
            l_first_handler = [] {
                is_in_exit = true;
                wait_for(is_main_on_its_way);
            };
            std::thread(fail, "failed in a thread").detach();
            wait_for(is_in_exit);
            is_main_on_its_way = true;
            std::exit(0);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasBlocks(1), HasSubstr("Internal error: failed in a thread\n")));
}

TEST_F(ErrReportDeathTest, TheModulePlaceMayBeSetOnManyThreads)
{
    EXPECT_EXIT(
        {
            std::vector<std::thread> threads;
            for (int i = 0; i < 4; ++i)
                threads.emplace_back([i] {
                    for (int j = 0; j < 100; ++j)
                        err_set_module_fullpath("/place/" + std::to_string(i) + "/" + std::to_string(j) + "/");
                });
            for (std::thread &thread : threads)
                thread.join();
            fail("a");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasSubstr("\n  Module:  /place/"), HasSubstr("/99/\n")));
}

} // namespace
