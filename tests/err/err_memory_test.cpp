// Internal errors when memory is short. The replaced operator new reaches into the library where the
// system has one operator new per process; elsewhere the library still has memory and reports in full.
#include "err_sys.h"

#include "tests/support/internal_error.h"

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

constexpr char FIRST[] = "Internal error: first\n  Library: TST\n  Source:  tests/err, line 12\n  Version: ";

class ErrReportWithoutMemoryDeathTest : public testing::Test
{
protected:
    ErrReportWithoutMemoryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ErrReportWithoutMemoryDeathTest, IsWholeWithItsStack)
{
    EXPECT_EXIT(fail_with(MemoryState::MISSING, "first"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(FIRST), HasSubstr("\n  Stack:\n    #0 "), HasSubstr("\n    #1 ")));
    EXPECT_EXIT(fail_with(MemoryState::MISSING, nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr("Internal error: (null)\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, PrintsALongTextWhole)
{
    static std::string const expression(1'000'000, 'x');
    EXPECT_EXIT(fail_with(MemoryState::MISSING, expression.c_str()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr("Internal error: " + expression + "\n  Library: TST\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, StillRunsExitHandlers)
{
    EXPECT_EXIT((std::atexit([] { std::fputs("[handler runs]\n", stderr); }), fail_with(MemoryState::MISSING, "first")),
                ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("[handler runs]\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, StoresTheModulePlace)
{
    static std::string const place(1000, 'p');
    EXPECT_EXIT(
        {
            err_set_module_fullpath("/former/");
            l_memory = MemoryState::MISSING;
            err_set_module_fullpath(place);
            fail_with(MemoryState::THERE, "first");
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("\n  Module:  " + place + "\n  Stack:\n"));
}

TEST_F(ErrReportWithoutMemoryDeathTest, NeverCallsTheAllocator)
{
    // The first exit handler, so that the others may allocate.
    EXPECT_EXIT((std::atexit([] { l_memory = MemoryState::THERE; }), fail_with(MemoryState::REPORTED_MISSING, "first")),
                ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(FIRST), HasSubstr("\n  Stack:\n    #0 "), Not(HasSubstr("memory is there"))));
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
