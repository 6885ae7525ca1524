// The comparison of two numbers within names, by value and then by zeros in front. Runs of digits may have any length.
#ifndef GEN_STRING_NUMBER_H
#define GEN_STRING_NUMBER_H

#include "gen/base/gen_assert.h"

#include <cstddef>

/// A text that is being read: the next character, and the end.
struct gen_text_cursor
{
    char const *at;
    char const *end;

    bool is_at_end() const { return at == end; }
    bool is_on(char c) const { return at != end && *at == c; }
    bool is_on_digit() const { return at != end && *at >= '0' && *at <= '9'; }

    void skip(char c)
    {
        while (is_on(c))
            ++at;
    }

    /// How many digits were skipped.
    std::ptrdiff_t skip_digits()
    {
        char const *const start = at;
        while (is_on_digit())
            ++at;
        return at - start;
    }

    /// Steps over one minus sign and tells whether it was there.
    bool take_minus()
    {
        bool const is_minus = is_on('-');
        at += is_minus ? 1 : 0;
        return is_minus;
    }
};

/// Compares two runs of digits and leaves the cursors behind them.
inline int gen_compare_digits(gen_text_cursor &first, gen_text_cursor &second)
{
    char const *const first_start = first.at;
    char const *const second_start = second.at;
    first.skip('0');
    second.skip('0');
    int difference = 0;
    for (; first.is_on_digit() && second.is_on_digit(); ++first.at, ++second.at)
        if (difference == 0)
            difference = *first.at - *second.at;
    // The number with more significant digits is greater, whatever the first digits that differ say.
    std::ptrdiff_t const left_over = first.skip_digits() - second.skip_digits();
    if (left_over != 0)
        return static_cast<int>(left_over);
    if (difference != 0)
        return difference;
    return static_cast<int>((first.at - first_start) - (second.at - second_start));
}

/// The same behind blanks and a minus sign on either side. Of two numbers with different signs the negative one counts
/// as greater, and the cursors stay behind the signs.
inline int gen_compare_numbers(gen_text_cursor &first, gen_text_cursor &second)
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
