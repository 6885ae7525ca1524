// The comparison of two numbers within names: by their values, and if these are equal by their leading zeros. A number
// may have any count of digits.
#ifndef GEN_STRING_NUMBER_H
#define GEN_STRING_NUMBER_H

#include "gen/base/gen_assert.h"

#include <cstddef>

inline bool gen_is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/// A text that is being read: the next character, and the end.
struct GEN_TEXT_CURSOR
{
    char const *at;
    char const *end;

    bool is_at_end() const { return at == end; }
    bool is_on(char c) const { return at != end && *at == c; }
    bool is_on_digit() const { return at != end && gen_is_digit(*at); }

    void skip(char c)
    {
        while (is_on(c))
            ++at;
    }

    /// Returns the number of digits skipped.
    std::ptrdiff_t skip_digits()
    {
        char const *const start = at;
        while (is_on_digit())
            ++at;
        return at - start;
    }

    /// Steps over one minus sign; returns whether there is one.
    bool take_minus()
    {
        bool const is_minus = is_on('-');
        at += is_minus ? 1 : 0;
        return is_minus;
    }
};

/// Compares two runs of digits and moves the cursors to the ends of the runs.
inline int gen_compare_digits(GEN_TEXT_CURSOR &first, GEN_TEXT_CURSOR &second)
{
    char const *const first_start = first.at;
    char const *const second_start = second.at;
    first.skip('0');
    second.skip('0');
    int difference = 0;
    for (; first.is_on_digit() && second.is_on_digit(); ++first.at, ++second.at)
        if (difference == 0)
            difference = *first.at - *second.at;
    // The number with more significant digits is larger, whichever digit differs first.
    std::ptrdiff_t const left_over = first.skip_digits() - second.skip_digits();
    if (left_over != 0)
        return static_cast<int>(left_over);
    if (difference != 0)
        return difference;
    return static_cast<int>((first.at - first_start) - (second.at - second_start));
}

/// Same as gen_compare_digits(), but each number may begin with blanks and a minus sign. If only one of them is
/// negative that one counts as larger, and the cursors stay after the signs.
inline int gen_compare_numbers(GEN_TEXT_CURSOR &first, GEN_TEXT_CURSOR &second)
{
    first.skip(' ');
    second.skip(' ');
    bool const is_first_negative = first.take_minus();
    GEN_ASSERT(first.is_on_digit(), "::gen_ascii_isdigit(**str1_iter)");
    bool const is_second_negative = second.take_minus();
    GEN_ASSERT(second.is_on_digit(), "::gen_ascii_isdigit(**str2_iter)");
    if (is_first_negative != is_second_negative)
        return (is_first_negative ? 1 : 0) - (is_second_negative ? 1 : 0);
    int const result = gen_compare_digits(first, second);
    return is_first_negative ? -result : result;
}

#endif
