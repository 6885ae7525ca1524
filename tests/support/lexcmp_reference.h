// A second, plain implementation of the number-aware comparisons of names: character by character and number by number,
// as they are documented.
#ifndef TESTS_SUPPORT_LEXCMP_REFERENCE_H
#define TESTS_SUPPORT_LEXCMP_REFERENCE_H

#include <algorithm>
#include <cstdint>
#include <string>

namespace lexcmp_reference {

using Iterator = std::string::const_iterator;

inline bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

inline int code_of(char c, bool folds)
{
    int const code = static_cast<signed char>(c);
    return folds && code >= 'A' && code <= 'Z' ? code + 32 : code;
}

inline int compare_digits(Iterator &first, Iterator first_end, Iterator &second, Iterator second_end)
{
    auto const not_zero = [](char c) { return c != '0'; };
    auto const not_digit = [](char c) { return !is_digit(c); };
    Iterator const first_run_end = std::find_if(first, first_end, not_digit);
    Iterator const second_run_end = std::find_if(second, second_end, not_digit);
    std::string const first_digits(std::find_if(first, first_run_end, not_zero), first_run_end);
    std::string const second_digits(std::find_if(second, second_run_end, not_zero), second_run_end);
    int const spent = static_cast<int>((first_run_end - first) - (second_run_end - second));
    first = first_run_end;
    second = second_run_end;
    if (first_digits.size() != second_digits.size())
        return static_cast<int>(first_digits.size()) - static_cast<int>(second_digits.size());
    for (std::size_t i = 0; i < first_digits.size(); ++i)
        if (first_digits[i] != second_digits[i])
            return first_digits[i] - second_digits[i];
    return spent;
}

/// gen_lexcmp(), or gen_ilexcmp() if `folds`.
inline int lexcmp(std::string const &first_text, std::string const &second_text, bool folds)
{
    Iterator first = first_text.begin();
    Iterator second = second_text.begin();
    while (first != first_text.end() && second != second_text.end()) {
        int const result = is_digit(*first) && is_digit(*second)
                               ? compare_digits(first, first_text.end(), second, second_text.end())
                               : code_of(*first++, folds) - code_of(*second++, folds);
        if (result != 0)
            return result;
    }
    return static_cast<int>(first_text.size()) - static_cast<int>(second_text.size());
}

inline std::uint32_t take_wrapped_number(Iterator &at, Iterator end, bool is_negative)
{
    std::uint32_t value = 0;
    while (at != end && is_digit(*at))
        value = value * 10 + static_cast<std::uint32_t>(*at++ - '0');
    return is_negative ? ~value + 1 : value;
}

/// gen_signed_lexcmp().
inline int signed_lexcmp(std::string const &first_text, std::string const &second_text)
{
    Iterator first = first_text.begin();
    Iterator second = second_text.begin();
    bool const is_first_negative = first != first_text.end() && *first == '-';
    bool const is_second_negative = second != second_text.end() && *second == '-';
    first += is_first_negative;
    second += is_second_negative;
    while (first != first_text.end() && second != second_text.end()) {
        int result = 0;
        if (!is_digit(*first) && !is_digit(*second)) {
            result = code_of(*first++, false) - code_of(*second++, false);
        } else if (!is_digit(*first)) {
            result = -1;
        } else if (!is_digit(*second)) {
            result = 1;
        } else {
            Iterator const first_run = first;
            Iterator const second_run = second;
            result = static_cast<int>(take_wrapped_number(first, first_text.end(), is_first_negative) -
                                      take_wrapped_number(second, second_text.end(), is_second_negative));
            if (result == 0)
                result = static_cast<int>((first - first_run) - (second - second_run));
        }
        if (result != 0)
            return result;
    }
    if (first != first_text.end())
        return 1;
    return second != second_text.end() ? -1 : 0;
}

} // namespace lexcmp_reference

#endif
