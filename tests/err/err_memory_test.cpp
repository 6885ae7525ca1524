// Internal errors when memory is short. The replaced operator new reaches into the library where the
// system has one operator new per process; elsewhere the library still has memory and reports in full.
#include "err_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

enum class MemoryState
{
    THERE,
    MISSING,
    REPORTED_MISSING, // the allocator itself reports an internal error
};

MemoryState l_memory = MemoryState::THERE;

void *allocate(std::size_t size)
{
    if (l_memory == MemoryState::MISSING)
        throw std::bad_alloc();
    if (l_memory == MemoryState::REPORTED_MISSING)
        err_report_internal_error("memory is there", "MEM", "mem/mem_new", 9);
    void *memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

[[noreturn]] void fail_with(MemoryState memory, char const *expression)
{
    l_memory = memory;
    err_report_internal_error(expression, "TST", "tests/err", 12);
}

testing::Matcher<std::string const &> is_short_block(std::string const &text)
{
    if (ON_WINDOWS)
        return HasSubstr(text);
    return AllOf(HasSubstr(text), HasSubstr("\n  Version: " ZEL_VERSION_TEXT "\n  Process: "),
                 Not(HasSubstr("Stack:")));
}

constexpr char FIRST[] = "Internal error: first\n  Library: TST\n  Source:  tests/err, line 12\n";
constexpr char SECOND[] = "Internal error: memory is there\n  Library: MEM\n  Source:  mem/mem_new, line 9\n";

class ErrReportWithoutMemoryDeathTest : public testing::Test
{
protected:
    ErrReportWithoutMemoryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ErrReportWithoutMemoryDeathTest, LeavesTheStackOut)
{
    EXPECT_EXIT(fail_with(MemoryState::MISSING, "first"), ExitedWithCode(INTERNAL_ERROR_STATUS), is_short_block(FIRST));
    EXPECT_EXIT(fail_with(MemoryState::MISSING, nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                is_short_block("Internal error: (null)\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, CutsALongText)
{
    static std::string const expression(100000, 'x');
    EXPECT_EXIT(fail_with(MemoryState::MISSING, expression.c_str()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                is_short_block("Internal error: " + expression.substr(0, 1000)));
}

TEST_F(ErrReportWithoutMemoryDeathTest, StillRunsExitHandlers)
{
    EXPECT_EXIT((std::atexit([] { std::fputs("[handler runs]\n", stderr); }), fail_with(MemoryState::MISSING, "first")),
                ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("[handler runs]\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, KeepsTheFormerModulePlace)
{
    static std::string const place(1000, 'p');
    EXPECT_EXIT(
        {
            err_set_module_fullpath("/former/");
            l_memory = MemoryState::MISSING;
            err_set_module_fullpath(place);
            fail_with(MemoryState::THERE, "first");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr(ON_WINDOWS ? "\n  Module:  ppp" : "\n  Module:  /former/\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, AnErrorInsideTheReportLosesNeither)
{
    if (ON_WINDOWS)
        EXPECT_EXIT(fail_with(MemoryState::REPORTED_MISSING, "first"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    is_short_block(FIRST));
    else
        EXPECT_EXIT(fail_with(MemoryState::REPORTED_MISSING, "first"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(is_short_block(FIRST), is_short_block(SECOND)));
}

} // namespace

void *operator new(std::size_t size)
{
    return allocate(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
