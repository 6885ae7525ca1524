// Two names of a netlist mostly begin alike, so the number-aware comparisons first look for the place where they part,
// eight bytes at a time:
//
//     top|cpu|alu|sum[129]
//     top|cpu|alu|sum[13]
//                      ^ the first difference, at '2' and '3': two digits are left on one side and one on the other
//
// It decides. What lies in front of the number around it is equal on both sides, and two numbers that are written
// differently never compare equal, so nothing behind them counts. The digits that the two share in front of the
// difference matter only if a 0 stands there, which leads the number if they are zeros too.
#include "gen_string_sys.h"

#include "gen/text/gen_string_number.h"

#include <algorithm>
#include <cstring>

namespace {

bool is_within(int code, int first, int last)
{
    return code >= first && code <= last;
}

// What a null text gives in a comparison of `first` and `second`, of which at least one is null.
int compare_null(char const *first, char const *second)
{
    return (first != nullptr ? 1 : 0) - (second != nullptr ? 1 : 0);
}

int unsigned_byte(char c)
{
    return static_cast<unsigned char>(c);
}

int folded(int code)
{
    return is_within(code, 'A', 'Z') ? code + ('a' - 'A') : code;
}

// Of a character as the number-aware comparisons read it, a signed byte.
template <bool FOLDS>
int code_of(char c)
{
    int const code = (unsigned_byte(c) ^ 0x80) - 0x80;
    return FOLDS ? folded(code) : code;
}

// Eight characters at once.
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

// A to Z folded to lower case. The top bit of each byte serves the comparisons, so no carry leaves a byte.
Word folded_word(Word word)
{
    Word const codes = word & each_byte(0x7f);
    Word const from_a = codes + each_byte(0x80 - 'A');
    Word const behind_z = codes + each_byte(0x7f - 'Z');
    Word const is_upper = (from_a ^ behind_z) & ~word & each_byte(0x80);
    return word | is_upper >> 2; // 0x80 >> 2 is the bit in which the cases differ
}

template <bool FOLDS>
Word difference_at(char const *first, char const *second)
{
    Word const first_word = word_at(first);
    Word const second_word = word_at(second);
    if (!FOLDS || first_word == second_word)
        return first_word ^ second_word;
    return folded_word(first_word) ^ folded_word(second_word);
}

// The index of the first byte in memory that is not 0.
std::size_t first_byte_set(Word word)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return static_cast<std::size_t>(__builtin_ctzll(word)) / 8;
#else
    return static_cast<std::size_t>(__builtin_clzll(word)) / 8;
#endif
}

// How many characters two texts of at least `length` characters have in common at their start, up to `length`.
template <bool FOLDS>
std::size_t common_length(char const *first, char const *second, std::size_t length)
{
    std::size_t at = 0;
    for (; length - at >= sizeof(Word); at += sizeof(Word)) {
        Word const difference = difference_at<FOLDS>(first + at, second + at);
        if (difference != 0)
            return at + first_byte_set(difference);
    }
    if (at == length)
        return length;
    if (length >= sizeof(Word)) {
        // The last eight characters, some of which are known to be equal.
        at = length - sizeof(Word);
        Word const difference = difference_at<FOLDS>(first + at, second + at);
        return difference != 0 ? at + first_byte_set(difference) : length;
    }
    while (at < length && code_of<FOLDS>(first[at]) == code_of<FOLDS>(second[at]))
        ++at;
    return at;
}

// Steps both cursors to where two texts part, or to the start of the number around that place.
void skip_common(gen_text_cursor &first, gen_text_cursor &second)
{
    char const *const start = first.at;
    std::ptrdiff_t const length = std::min(first.end - first.at, second.end - second.at);
    std::size_t at = common_length<false>(first.at, second.at, static_cast<std::size_t>(length));
    while (at > 0 && gen_ascii_isdigit(start[at - 1]))
        --at;
    first.at += at;
    second.at += at;
}

// Compares two numbers that are written alike up to the cursors and differ there.
int compare_numbers_at(gen_text_cursor first, gen_text_cursor second, char const *first_start)
{
    if (!first.is_on('0') && !second.is_on('0'))
        return gen_compare_digits(first, second);
    for (; first.at != first_start && gen_ascii_isdigit(first.at[-1]); --first.at)
        --second.at;
    return gen_compare_numbers(first, second);
}

template <bool FOLDS>
int compare_names(char const *first_text, std::size_t first_length, char const *second_text, std::size_t second_length)
{
    std::size_t const length = std::min(first_length, second_length);
    std::size_t const at = common_length<FOLDS>(first_text, second_text, length);
    gen_text_cursor const first{first_text + at, first_text + first_length};
    gen_text_cursor const second{second_text + at, second_text + second_length};
    bool const is_first_digit = first.is_on_digit();
    bool const is_second_digit = second.is_on_digit();
    if (is_first_digit || is_second_digit) {
        bool const is_behind_digit = at > 0 && gen_ascii_isdigit(first_text[at - 1]);
        if (is_first_digit == is_second_digit || is_behind_digit)
            return compare_numbers_at(first, second, first_text);
    }
    if (at == length)
        return static_cast<int>(first_length - second_length);
    return code_of<FOLDS>(*first.at) - code_of<FOLDS>(*second.at);
}

std::size_t length_of(char const *text)
{
    return text != nullptr ? std::strlen(text) : 0;
}

// Reads a run of digits modulo 2^32; a negative one is negated.
std::uint32_t take_number(gen_text_cursor &text, bool is_negative)
{
    std::uint32_t value = 0;
    for (; text.is_on_digit(); ++text.at)
        value = value * 10 + static_cast<std::uint32_t>(*text.at - '0');
    return is_negative ? 0 - value : value;
}

int compare_signed_numbers(gen_text_cursor &first, bool is_first_negative, gen_text_cursor &second,
                           bool is_second_negative)
{
    char const *const first_start = first.at;
    char const *const second_start = second.at;
    std::uint32_t const difference = take_number(first, is_first_negative) - take_number(second, is_second_negative);
    if (difference != 0)
        return static_cast<int>(difference);
    return static_cast<int>((first.at - first_start) - (second.at - second_start));
}

} // namespace

bool gen_ascii_isalnum(int code)
{
    return gen_ascii_isdigit(code) || gen_ascii_isalpha(code);
}

bool gen_ascii_isalpha(int code)
{
    return gen_ascii_isupper(code) || gen_ascii_islower(code);
}

bool gen_ascii_isascii(int code)
{
    return is_within(code, 0, 127);
}

bool gen_ascii_iscntrl(int code)
{
    return is_within(code, 0, 31);
}

bool gen_ascii_isdigit(int code)
{
    return is_within(code, '0', '9');
}

bool gen_ascii_isgraph(int code)
{
    return is_within(code, 33, 126);
}

bool gen_ascii_islower(int code)
{
    return is_within(code, 'a', 'z');
}

bool gen_ascii_isprint(int code)
{
    return is_within(code, 32, 126);
}

bool gen_ascii_ispunct(int code)
{
    return is_within(code, 33, 47) || is_within(code, 58, 64) || is_within(code, 91, 96) || is_within(code, 123, 126);
}

bool gen_ascii_isspace(int code)
{
    return code == ' ' || is_within(code, 9, 13);
}

bool gen_ascii_isupper(int code)
{
    return is_within(code, 'A', 'Z');
}

bool gen_ascii_isxdigit(int code)
{
    // Callers have relied on the lower-case letter a being left out.
    return gen_ascii_isdigit(code) || is_within(code, 'A', 'F') || is_within(code, 'b', 'f');
}

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
            int const difference = folded(unsigned_byte(*first)) - folded(unsigned_byte(*second));
            if (difference != 0)
                return difference;
        }
        // The count is tested behind a pair, so one of 0 wraps and never ends the comparison.
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

bool gen_has_wildcard_chars(char const *text)
{
    return text != nullptr && std::strpbrk(text, "*?") != nullptr;
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
    gen_text_cursor first{first_text.data(), first_text.data() + first_text.size()};
    gen_text_cursor second{second_text.data(), second_text.data() + second_text.size()};
    bool const is_first_negative = first.take_minus();
    bool const is_second_negative = second.take_minus();
    // Numbers under different signs are different although their digits are the same.
    if (is_first_negative == is_second_negative)
        skip_common(first, second);
    while (!first.is_at_end() && !second.is_at_end()) {
        if (first.is_on_digit() != second.is_on_digit())
            return first.is_on_digit() ? 1 : -1;
        int const result = first.is_on_digit()
                               ? compare_signed_numbers(first, is_first_negative, second, is_second_negative)
                               : code_of<false>(*first.at++) - code_of<false>(*second.at++);
        if (result != 0)
            return result;
    }
    return (first.is_at_end() ? 0 : 1) - (second.is_at_end() ? 0 : 1);
}
