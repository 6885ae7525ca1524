// The natural comparison of names, in which numbers count by their value: sum[9] comes before sum[13]. Two names of a
// netlist mostly begin alike, so the comparison looks for the first character that differs, eight bytes at a time:
//
//     top|cpu|alu|sum[129]
//     top|cpu|alu|sum[13]
//                      ^ the first difference: '2' and '3', both within a number
//
// The first difference decides the whole comparison. Everything before the number that contains it is equal, and two
// numbers that are written differently never compare equal, so nothing after that number counts. Here the first name
// has two digits left in the number, and the second name has one. The digits before the difference are the same in
// both, so the number with more digits left is larger, and the first name comes after the second.
//
// One case needs the start of the number: a '0' at the difference may be a leading zero, which adds nothing to the
// value. So x007 and x07 are compared from their first digit. The values are equal, and the number with more leading
// zeros counts as larger.
#include "gen_string_sys.h"

#include "gen/os/gen_os_compiler.h"
#include "gen/text/gen_string_number.h"

#include <algorithm>
#include <cstring>

namespace {

// The result of a comparison of `first` and `second`, at least one of which is null: null comes first.
int compare_null(char const *first, char const *second)
{
    return (first != nullptr ? 1 : 0) - (second != nullptr ? 1 : 0);
}

int unsigned_byte(char c)
{
    return static_cast<unsigned char>(c);
}

int lower_case_code(int code)
{
    return code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code;
}

// The code of a character in the natural comparison, which reads it as a signed byte.
template <bool FOLDS>
int character_code(char c)
{
    int const code = (unsigned_byte(c) ^ 0x80) - 0x80;
    return FOLDS ? lower_case_code(code) : code;
}

// Eight characters of a text.
using Word = std::uint64_t;

constexpr Word each_byte(unsigned value)
{
    return value * (~Word{0} / 0xff);
}

Word word_at(char const *text)
{
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// Turns A to Z into lower case. The comparisons use the top bit of each byte, so that no carry leaves a byte.
Word lower_case_word(Word word)
{
    Word const codes = word & each_byte(0x7f);
    Word const from_a = codes + each_byte(0x80 - 'A');
    Word const after_z = codes + each_byte(0x7f - 'Z');
    Word const is_upper = (from_a ^ after_z) & ~word & each_byte(0x80);
    return word | is_upper >> 2; // 0x80 >> 2 is the bit in which the cases differ
}

template <bool FOLDS>
Word difference_at(char const *first, char const *second)
{
    Word const first_word = word_at(first);
    Word const second_word = word_at(second);
    if (!FOLDS || first_word == second_word)
        return first_word ^ second_word;
    return lower_case_word(first_word) ^ lower_case_word(second_word);
}

// The number of characters that two texts of at least `length` characters have in common at their start, at most
// `length`.
template <bool FOLDS>
std::size_t common_length(char const *first, char const *second, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= sizeof(Word); at += sizeof(Word)) {
        Word const difference = difference_at<FOLDS>(first + at, second + at);
        if (difference != 0)
            return at + gen_os_first_byte_set(difference);
    }
    if (at == length)
        return length;
    if (length >= sizeof(Word)) {
        // The last eight characters, some of which are known to be equal.
        at = length - sizeof(Word);
        Word const difference = difference_at<FOLDS>(first + at, second + at);
        return difference != 0 ? at + gen_os_first_byte_set(difference) : length;
    }
    while (at < length && character_code<FOLDS>(first[at]) == character_code<FOLDS>(second[at]))
        ++at;
    return at;
}

// Moves both cursors to the first difference of two texts, or to the start of the number that contains it.
void skip_common(GEN_TEXT_CURSOR &first, GEN_TEXT_CURSOR &second)
{
    char const *const start = first.at;
    std::ptrdiff_t const length = std::min(first.end - first.at, second.end - second.at);
    std::size_t at = common_length<false>(first.at, second.at, static_cast<std::size_t>(length));
    while (at > 0 && gen_is_digit(start[at - 1]))
        --at;
    first.at += at;
    second.at += at;
}

// Compares two numbers that are written alike before the cursors and differ at the cursors.
int compare_numbers_at(GEN_TEXT_CURSOR first, GEN_TEXT_CURSOR second, char const *first_start)
{
    if (!first.is_on('0') && !second.is_on('0'))
        return gen_compare_digits(first, second);
    for (; first.at != first_start && gen_is_digit(first.at[-1]); --first.at)
        --second.at;
    return gen_compare_numbers(first, second);
}

template <bool FOLDS>
int compare_names(char const *first_text, std::size_t first_length, char const *second_text, std::size_t second_length)
{
    std::size_t const length = std::min(first_length, second_length);
    std::size_t const at = common_length<FOLDS>(first_text, second_text, length);
    GEN_TEXT_CURSOR const first{first_text + at, first_text + first_length};
    GEN_TEXT_CURSOR const second{second_text + at, second_text + second_length};
    bool const is_first_digit = first.is_on_digit();
    bool const is_second_digit = second.is_on_digit();
    if (is_first_digit || is_second_digit) {
        bool const is_after_digit = at > 0 && gen_is_digit(first_text[at - 1]);
        if (is_first_digit == is_second_digit || is_after_digit)
            return compare_numbers_at(first, second, first_text);
    }
    if (at == length)
        return static_cast<int>(first_length - second_length);
    return character_code<FOLDS>(*first.at) - character_code<FOLDS>(*second.at);
}

std::size_t length_of(char const *text)
{
    return text != nullptr ? std::strlen(text) : 0;
}

// Reads a run of digits modulo 2^32, and negates it if it has a minus sign.
std::uint32_t take_wrapped_number(GEN_TEXT_CURSOR &text, bool is_negative)
{
    std::uint32_t value = 0;
    for (; text.is_on_digit(); ++text.at)
        value = value * 10 + static_cast<std::uint32_t>(*text.at - '0');
    return is_negative ? 0 - value : value;
}

int compare_signed_numbers(GEN_TEXT_CURSOR &first, bool is_first_negative, GEN_TEXT_CURSOR &second,
                           bool is_second_negative)
{
    char const *const first_start = first.at;
    char const *const second_start = second.at;
    std::uint32_t const difference =
        take_wrapped_number(first, is_first_negative) - take_wrapped_number(second, is_second_negative);
    if (difference != 0)
        return static_cast<int>(difference);
    return static_cast<int>((first.at - first_start) - (second.at - second_start));
}

} // namespace

int gen_strcmp(char const *first, char const *second)
{
    if (first == nullptr || second == nullptr)
        return compare_null(first, second);
    while (*first == *second && *first != '\0') {
        ++first;
        ++second;
    }
    return unsigned_byte(*first) - unsigned_byte(*second);
}

int gen_stricmp(char const *first, char const *second)
{
    // A count of 0 does not limit.
    return gen_strnicmp(first, second, 0);
}

int gen_ascii_stricmp(char const *first, char const *second)
{
    return gen_stricmp(first, second);
}

int gen_stricmp_mt(char const *first, char const *second)
{
    return gen_stricmp(first, second);
}

int gen_strnicmp(char const *first, char const *second, std::uint64_t count)
{
    if (first == nullptr || second == nullptr)
        return compare_null(first, second);
    for (;; ++first, ++second) {
        if (*first != *second) {
            int const difference = lower_case_code(unsigned_byte(*first)) - lower_case_code(unsigned_byte(*second));
            if (difference != 0)
                return difference;
        }
        // The count is tested after a pair, so a count of 0 wraps and never ends the comparison.
        if (*first == '\0' || --count == 0)
            return 0;
    }
}

int gen_ascii_strnicmp(char const *first, char const *second, std::uint64_t count)
{
    return gen_strnicmp(first, second, count);
}

bool gen_starts_with(std::string const &text, std::string const &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool gen_ends_with(std::string const &text, std::string const &suffix)
{
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

int gen_lexcmp(std::string const &first, std::string const &second)
{
    return compare_names<false>(first.data(), first.size(), second.data(), second.size());
}

int gen_lexcmp(char const *first, char const *second)
{
    return compare_names<false>(first, length_of(first), second, length_of(second));
}

int gen_lexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length)
{
    return compare_names<false>(first, first_length, second, second_length);
}

int gen_ilexcmp(std::string const &first, std::string const &second)
{
    return compare_names<true>(first.data(), first.size(), second.data(), second.size());
}

int gen_ilexcmp(char const *first, char const *second)
{
    return compare_names<true>(first, length_of(first), second, length_of(second));
}

int gen_ilexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length)
{
    return compare_names<true>(first, first_length, second, second_length);
}

int gen_signed_lexcmp(std::string const &first_text, std::string const &second_text)
{
    GEN_TEXT_CURSOR first{first_text.data(), first_text.data() + first_text.size()};
    GEN_TEXT_CURSOR second{second_text.data(), second_text.data() + second_text.size()};
    bool const is_first_negative = first.take_minus();
    bool const is_second_negative = second.take_minus();
    // Two numbers with different signs are different even if their digits are the same.
    if (is_first_negative == is_second_negative)
        skip_common(first, second);
    while (!first.is_at_end() && !second.is_at_end()) {
        if (first.is_on_digit() != second.is_on_digit())
            return first.is_on_digit() ? 1 : -1;
        int const result = first.is_on_digit()
                               ? compare_signed_numbers(first, is_first_negative, second, is_second_negative)
                               : character_code<false>(*first.at++) - character_code<false>(*second.at++);
        if (result != 0)
            return result;
    }
    return (first.is_at_end() ? 0 : 1) - (second.is_at_end() ? 0 : 1);
}
