// The allocations of the text functions. The replaced operator new reaches into the library.
#include "gen_string_sys.h"

#include "tests/support/argument_slots.h"

#include <cstdlib>
#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

std::size_t l_allocation_count = 0;

template <typename Call>
std::size_t allocations_of(Call call)
{
    std::size_t const before = l_allocation_count;
    call();
    return l_allocation_count - before;
}

// Longer than what a string holds without memory of its own.
std::string const NAME = "top_level|cpu_0|alu_12|Add0~carry[0017]";
std::string const OTHER_NAME = "TOP_LEVEL|cpu_0|alu_12|Add0~carry[0018]";
std::string const NUMBER = "                                    -1234567890123456789";

} // namespace

TEST(GenStringAllocation, IsSeen)
{
    EXPECT_EQ(allocations_of([] { gen_repeat_str("a", 100); }), 1U);
}

TEST(GenStringAllocation, ComparesWithoutAny)
{
    EXPECT_EQ(allocations_of([] {
                  gen_lexcmp(NAME, OTHER_NAME);
                  gen_lexcmp(NAME.c_str(), OTHER_NAME.c_str());
                  gen_ilexcmp(NAME, OTHER_NAME);
                  gen_ilexcmp(NAME.c_str(), OTHER_NAME.c_str());
                  gen_signed_lexcmp(NAME, OTHER_NAME);
                  gen_starts_with(NAME, OTHER_NAME);
                  gen_ends_with(NAME, OTHER_NAME);
              }),
              0U);
}

TEST(GenStringAllocation, ReadsNumbersWithoutAny)
{
    EXPECT_EQ(allocations_of([] {
                  gen_atoi(NUMBER);
                  std::string::const_iterator cursor = NUMBER.begin();
                  gen_atoi(NUMBER, &cursor);
                  gen_atotime_t(NUMBER);
              }),
              0U);
}

TEST(GenStringAllocation, MakesOneTextAtOnce)
{
    EXPECT_EQ(allocations_of([] { gen_repeat_str(NAME, 1000); }), 1U);
    EXPECT_EQ(allocations_of([] { gen_remove_leading_and_trailing_spaces(NAME); }), 1U);
    EXPECT_EQ(allocations_of([] { gen_remove_leading_and_trailing_white_spaces(NAME); }), 1U);
    EXPECT_EQ(allocations_of([] { gen_itoa(-1, 2); }), 1U);
}

TEST(GenStringAllocation, GrowsNothingButTheTextOfAMessage)
{
    ArgumentSlots slots(NAME.c_str(), 7, 0.25, NAME.c_str());
    std::string out;
    out.reserve(1000);
    for (char const *format : {"%1 %2!d!", "%4 %3!.20f! %2!08x! %1!60s!", "%4", "%3!.20f!%1%1"})
        EXPECT_EQ(allocations_of([&] { gen_formatmessage(out, format, slots.begin()); }), 0U) << format;
}

// Not inlined: otherwise the compiler takes malloc and free in them for a mismatch.
__attribute__((noinline)) void *operator new(std::size_t size)
{
    ++l_allocation_count;
    void *const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

// All forms that the libraries call, so that each block is released by what has made it.
__attribute__((noinline)) void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    ++l_allocation_count;
    return std::malloc(size == 0 ? 1 : size);
}

__attribute__((noinline)) void operator delete(void *memory) noexcept
{
    std::free(memory);
}

__attribute__((noinline)) void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
