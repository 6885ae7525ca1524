#include "gen_string_sys.h"

#include "gen/text/gen_string_number.h"
#include "tests/support/internal_error.h"
#include "tests/support/lexcmp_reference.h"
#include "tests/support/texts.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

int sign_of(int value)
{
    return (value > 0) - (value < 0);
}

// A text without a byte to spare after it, so that a sanitizer sees any step too far.
class Exact
{
public:
    explicit Exact(std::string const &text) : m_bytes(text.begin(), text.end()) {}
    char const *data() const { return m_bytes.data(); }
    std::uint64_t size() const { return m_bytes.size(); }

private:
    std::vector<char> m_bytes;
};

// Every text over an alphabet up to a length, the empty one included.
std::vector<std::string> short_texts(std::string const &alphabet, std::size_t longest)
{
    std::vector<std::string> texts{""};
    std::size_t start = 0;
    for (std::size_t length = 1; length <= longest; ++length) {
        std::size_t const end = texts.size();
        for (; start < end; ++start)
            for (char c : alphabet)
                texts.push_back(texts[start] + c);
    }
    return texts;
}

} // namespace

// Plain comparison.

using CompareTexts = int (*)(char const *, char const *);

int strnicmp_of_zero(char const *first, char const *second)
{
    return gen_strnicmp(first, second, 0);
}
int ascii_strnicmp_of_zero(char const *first, char const *second)
{
    return gen_ascii_strnicmp(first, second, 0);
}

struct CompareFunction
{
    char const *name;
    CompareTexts compare;
    bool folds;
};
constexpr CompareFunction COMPARE_FUNCTIONS[] = {
    {"gen_strcmp", gen_strcmp, false},
    {"gen_stricmp", gen_stricmp, true},
    {"gen_ascii_stricmp", gen_ascii_stricmp, true},
    {"gen_stricmp_mt", gen_stricmp_mt, true},
    {"gen_strnicmp of 0", strnicmp_of_zero, true},
    {"gen_ascii_strnicmp of 0", ascii_strnicmp_of_zero, true},
};

TEST(GenPlainCompare, PutsNullFirst)
{
    for (CompareFunction const &f : COMPARE_FUNCTIONS) {
        EXPECT_EQ(f.compare(nullptr, nullptr), 0) << f.name;
        EXPECT_EQ(f.compare(nullptr, ""), -1) << f.name;
        EXPECT_EQ(f.compare("", nullptr), 1) << f.name;
        EXPECT_EQ(f.compare(nullptr, "abc"), -1) << f.name;
        EXPECT_EQ(f.compare("abc", nullptr), 1) << f.name;
    }
}

TEST(GenPlainCompare, GivesTheDifferenceOfUnsignedBytes)
{
    // The terminator is the byte 0, so every pair of bytes is a pair of texts.
    auto const folded = [](int code, bool folds) { return folds && code >= 'A' && code <= 'Z' ? code + 32 : code; };
    for (CompareFunction const &f : COMPARE_FUNCTIONS)
        for (int first = 0; first < 256; ++first)
            for (int second = 0; second < 256; ++second) {
                char const first_text[] = {'x', static_cast<char>(first), '\0'};
                char const second_text[] = {'x', static_cast<char>(second), '\0'};
                ASSERT_EQ(f.compare(first_text, second_text), folded(first, f.folds) - folded(second, f.folds))
                    << f.name << " of codes " << first << " and " << second;
            }
}

TEST(GenPlainCompare, IsDecidedByTheFirstDifference)
{
    std::vector<std::string> const texts = short_texts("aAz_\x80", 3);
    for (CompareFunction const &f : COMPARE_FUNCTIONS)
        for (std::string const &first : texts)
            for (std::string const &second : texts) {
                std::string first_folded = first;
                std::string second_folded = second;
                if (f.folds) {
                    gen_tolower(first_folded);
                    gen_tolower(second_folded);
                }
                int const result = f.compare(terminated(first).data(), terminated(second).data());
                ASSERT_EQ(sign_of(result), sign_of(first_folded.compare(second_folded)))
                    << f.name << " of " << shown(first) << " and " << shown(second);
            }
}

struct CountedCase
{
    char const *first;
    char const *second;
    std::uint64_t count;
    int result;
};
constexpr CountedCase COUNTED_CASES[] = {
    {"abcd", "ABxx", 1, 0},
    {"abcd", "ABxx", 2, 0},
    {"abcd", "ABxx", 3, 'c' - 'x'},
    {"abcd", "ABxx", 0, 'c' - 'x'}, // a count of 0 does not limit
    {"abc", "ABC", 0, 0},
    {"a", "b", 0, -1},
    {"", "b", 0, -'b'},
    {"", "", 0, 0},
    {"abc", "ABC", 1000, 0}, // the terminator ends the comparison first
    {"abc", "abcd", 3, 0},
    {"abc", "abcd", 4, -'d'},
    {"abc", "abcd", ~std::uint64_t{0}, -'d'},
    {"a\xff", "a\x01", 2, 254},
    {nullptr, nullptr, 5, 0},
    {nullptr, "a", 5, -1},
    {"a", nullptr, 5, 1},
};
TEST(GenStrnicmp, ComparesAtMostSoManyCharacters)
{
    for (CountedCase const &c : COUNTED_CASES) {
        std::string const shown_case =
            testing::PrintToString(c.first) + ", " + testing::PrintToString(c.second) + ", " + std::to_string(c.count);
        EXPECT_EQ(gen_strnicmp(c.first, c.second, c.count), c.result) << shown_case;
        EXPECT_EQ(gen_ascii_strnicmp(c.first, c.second, c.count), c.result) << shown_case;
    }
}

TEST(GenStrnicmp, ReadsNothingAfterTheCount)
{
    Exact const first("abc");
    Exact const second("ABC");
    EXPECT_EQ(gen_strnicmp(first.data(), second.data(), 3), 0);
}

struct EndsCase
{
    std::string text;
    std::string part;
    bool at_start;
    bool at_end;
};
std::vector<EndsCase> const ENDS_CASES = {
    {"", "", true, true},
    {"abc", "", true, true},
    {"", "a", false, false},
    {"abc", "abc", true, true},
    {"abc", "a", true, false},
    {"abc", "ab", true, false},
    {"abc", "bc", false, true},
    {"abc", "b", false, false},
    {"abc", "abcd", false, false},
    {"abc", "zabc", false, false},
    {"abc", "AB", false, false},
    {"aba", "a", true, true},
    {std::string("\0a\0", 3), std::string("\0", 1), true, true},
    {std::string("\0a\0", 3), std::string("a\0", 2), false, true},
};
TEST(GenStartsWith, ComparesTheFirstBytes)
{
    for (EndsCase const &c : ENDS_CASES)
        EXPECT_EQ(gen_starts_with(c.text, c.part), c.at_start) << shown(c.text) << ", " << shown(c.part);
}
TEST(GenEndsWith, ComparesTheLastBytes)
{
    for (EndsCase const &c : ENDS_CASES)
        EXPECT_EQ(gen_ends_with(c.text, c.part), c.at_end) << shown(c.text) << ", " << shown(c.part);
}

// Number-aware comparison.

struct LexCase
{
    std::string first;
    std::string second;
    int lexcmp;
    int ilexcmp;
    int signed_lexcmp;
};
std::vector<LexCase> const LEX_CASES = {
    {"", "", 0, 0, 0},
    {"", "abc", -3, -3, -1},
    {"abc", "", 3, 3, 1},
    {"a10", "a9", 1, 1, 1},
    {"a12", "a13", -1, -1, -1},
    {"a07", "a7", 1, 1, 1},
    {"a007", "a7", 2, 2, 2},
    {"a00", "a0", 1, 1, 1},
    {"a1", "a1b", -1, -1, -1},
    {"a1", "a1bcd", -3, -3, -1},
    {"bus[9]", "bus[12]", -1, -1, -3},
    {"abc", "ABC", 32, 0, 32},
    {"A10", "a9", -32, 1, -32},
    {"A", "b", -33, -1, -33},
    {"0", "00", -1, -1, -1},
    {"00", "1", -1, -1, -1},
    {"1", "00", 1, 1, 1},
    {"007", "7", 2, 2, 2},
    // More significant digits win, whatever the first digit that differs is.
    {"19", "2", 1, 1, 17},
    {"2", "19", -1, -1, -17},
    {"9", "10000", -4, -4, -9991},
    // Different counts of leading zeros decide before the text after the number.
    {"a01b", "a1c", 1, 1, 1},
    {"a1c", "a01b", -1, -1, -1},
    // A sign is a character, or it makes all the numbers of a text negative.
    {"-5", "-3", 2, 2, -2},
    {"-5", "3", '-' - '3', '-' - '3', -8},
    {"3", "-5", '3' - '-', '3' - '-', 8},
    {"-1", "-01", -1, -1, -1},
    {"-a", "a", '-' - 'a', '-' - 'a', 0},
    {"-a1", "a1", '-' - 'a', '-' - 'a', -2},
    {"-a1b2", "-a1b3", -1, -1, 1},
    {"--1", "-1", '-' - '1', '-' - '1', -1},
    {"-", "", 1, 1, 0},
    {"-", "-", 0, 0, 0},
    // A digit compared with another character.
    {"a", "1", 48, 48, -1},
    {"1", "a", -48, -48, 1},
    {"1", "/", 2, 2, 1},
    {"/", "1", -2, -2, -1},
    {"a1", "a:", '1' - ':', '1' - ':', 1},
    {"a1b", "a12", -1, -1, -11},
    {"a0x", "a00", -1, -1, -1},
    // A number that continues after the end of the shorter text: the digits count, not the lengths.
    {"a1", "a12bc", -1, -1, -11},
    {"a12bc", "a1", 1, 1, 11},
    {"a0", "a00bc", -1, -1, -1},
    {"a", "a12bc", -4, -4, -1},
    // A 0 at the first difference of two numbers: a digit within the number, or a leading zero.
    {"a100x", "a1001", -1, -1, -901},
    {"a10x", "a1x", 1, 1, 9},
    {"a00x", "a05x", -1, -1, -5},
    {"a0005", "a000", 1, 1, 5},
    {"a0050", "a005", 1, 1, 45},
    {"a0x", "a10", -2, -2, -10},
    {"a01", "a12", -1, -1, -11},
    // Bytes are signed.
    {"\x80", "a", -128 - 'a', -128 - 'a', -128 - 'a'},
    {"a", "\xff", 'a' + 1, 'a' + 1, 'a' + 1},
    {"\x80", "\x7f", -255, -255, -255},
    // Any length, or modulo 2^32.
    {"4294967297", "1", 9, 9, 9},
    {"4294967296", "0", 10, 10, 9},
    {"123456789012345678901234567890", "123456789012345678901234567891", -1, -1, -1},
    {"2147483648", "0", 10, 10, std::numeric_limits<int>::min()},
    {"0", "2147483648", -10, -10, std::numeric_limits<int>::min()},
    {"-2147483648", "2147483648", '-' - '2', '-' - '2', 0},
    // Zeros within a text are characters.
    {std::string("a\0b", 3), std::string("a\0c", 3), -1, -1, -1},
    {std::string("a\0", 2), "a", 1, 1, 1},
    // Where eight characters are compared at once.
    {"0123456x", "0123456y", -1, -1, -1},
    {"01234567x", "01234567y", -1, -1, -1},
    {"abcdefg1", "abcdefg10", -1, -1, -9},
    {"abcdef109x", "abcdef11x", 1, 1, 98},
    {"TOP|cpu|ALU|sum[129]", "top|CPU|alu|sum[13]", -32, 1, -32},
    {"top|cpu|alu|sum[00000000129]", "top|cpu|alu|sum[129]", 8, 8, 8},
    {"@[`{\xc1\xe1@[", "@[`{\xe1\xc1@[", -32, -32, -32},
};

TEST(GenLexcmp, GivesTheDocumentedResults)
{
    for (LexCase const &c : LEX_CASES)
        EXPECT_EQ(gen_lexcmp(c.first, c.second), c.lexcmp) << shown(c.first) << ", " << shown(c.second);
}
TEST(GenIlexcmp, GivesTheDocumentedResults)
{
    for (LexCase const &c : LEX_CASES)
        EXPECT_EQ(gen_ilexcmp(c.first, c.second), c.ilexcmp) << shown(c.first) << ", " << shown(c.second);
}
TEST(GenSignedLexcmp, GivesTheDocumentedResults)
{
    for (LexCase const &c : LEX_CASES)
        EXPECT_EQ(gen_signed_lexcmp(c.first, c.second), c.signed_lexcmp) << shown(c.first) << ", " << shown(c.second);
}

struct LexFunction
{
    char const *name;
    int (*of_strings)(std::string const &, std::string const &);
    int (*of_texts)(char const *, char const *);
    int (*of_counted_texts)(char const *, std::uint64_t, char const *, std::uint64_t);
};
constexpr LexFunction LEX_FUNCTIONS[] = {
    {"gen_lexcmp", gen_lexcmp, gen_lexcmp, gen_lexcmp},
    {"gen_ilexcmp", gen_ilexcmp, gen_ilexcmp, gen_ilexcmp},
};

TEST(GenLexcmp, TakesNullForAnEmptyText)
{
    for (LexFunction const &f : LEX_FUNCTIONS) {
        EXPECT_EQ(f.of_texts(nullptr, nullptr), 0) << f.name;
        EXPECT_EQ(f.of_texts(nullptr, ""), 0) << f.name;
        EXPECT_EQ(f.of_texts("", nullptr), 0) << f.name;
        EXPECT_EQ(f.of_texts(nullptr, "abc"), -3) << f.name;
        EXPECT_EQ(f.of_texts("abc", nullptr), 3) << f.name;
        EXPECT_EQ(f.of_counted_texts(nullptr, 0, nullptr, 0), 0) << f.name;
        EXPECT_EQ(f.of_counted_texts(nullptr, 0, "abc", 2), -2) << f.name;
        EXPECT_EQ(f.of_counted_texts("abc", 2, nullptr, 0), 2) << f.name;
    }
}

TEST(GenLexcmp, ComparesAlikeInAllItsForms)
{
    for (LexFunction const &f : LEX_FUNCTIONS)
        for (LexCase const &c : LEX_CASES) {
            int const result = f.of_strings(c.first, c.second);
            Exact const first(c.first);
            Exact const second(c.second);
            EXPECT_EQ(f.of_counted_texts(first.data(), first.size(), second.data(), second.size()), result)
                << f.name << " of " << shown(c.first) << " and " << shown(c.second);
            bool const holds_zero = (c.first + c.second).find('\0') != std::string::npos;
            if (!holds_zero) {
                EXPECT_EQ(f.of_texts(terminated(c.first).data(), terminated(c.second).data()), result)
                    << f.name << " of " << shown(c.first) << " and " << shown(c.second);
            }
        }
}

TEST(GenLexcmp, StopsAtTheCountedEnd)
{
    EXPECT_EQ(gen_lexcmp("a12", 2, "a1", 2), 0);
    EXPECT_EQ(gen_lexcmp("a12", 3, "a1999", 3), 2 - 9);
    EXPECT_EQ(gen_ilexcmp("A12x", 3, "a12y", 3), 0);
}

TEST(GenLexcmp, AgreesWithItsDefinitionOnEveryPairOfShortTexts)
{
    std::vector<std::string> const texts = short_texts("019aAZ-/\x80", 3);
    for (std::string const &first : texts)
        for (std::string const &second : texts) {
            ASSERT_EQ(gen_lexcmp(first, second), lexcmp_reference::lexcmp(first, second, false))
                << shown(first) << ", " << shown(second);
            ASSERT_EQ(gen_ilexcmp(first, second), lexcmp_reference::lexcmp(first, second, true))
                << shown(first) << ", " << shown(second);
            ASSERT_EQ(gen_signed_lexcmp(first, second), lexcmp_reference::signed_lexcmp(first, second))
                << shown(first) << ", " << shown(second);
        }
}

TEST(GenLexcmp, AgreesWithItsDefinitionOnEveryPairOfShortNumbers)
{
    std::vector<std::string> const texts = short_texts("01a", 5);
    for (std::string const &first : texts)
        for (std::string const &second : texts) {
            ASSERT_EQ(gen_lexcmp(first, second), lexcmp_reference::lexcmp(first, second, false))
                << shown(first) << ", " << shown(second);
            ASSERT_EQ(gen_ilexcmp(first, second), lexcmp_reference::lexcmp(first, second, true))
                << shown(first) << ", " << shown(second);
        }
}

TEST(GenLexcmp, AgreesWithItsDefinitionAfterCommonStartsOfAnyLength)
{
    std::vector<std::string> const ends = short_texts("01a-", 2);
    for (std::string const &pattern : {std::string("Net|0015[10].q_3"), std::string("00000000000000000"),
                                       std::string("-10203040506070809"), std::string("abcdefghijklmnopqrs")})
        for (std::size_t length = 0; length <= pattern.size(); ++length)
            for (std::string const &first_end : ends)
                for (std::string const &second_end : ends) {
                    std::string const first = pattern.substr(0, length) + first_end;
                    std::string const second = pattern.substr(0, length) + second_end;
                    std::string folded = second;
                    gen_tolower(folded);
                    ASSERT_EQ(gen_lexcmp(first, second), lexcmp_reference::lexcmp(first, second, false))
                        << shown(first) << ", " << shown(second);
                    ASSERT_EQ(gen_ilexcmp(first, folded), lexcmp_reference::lexcmp(first, folded, true))
                        << shown(first) << ", " << shown(folded);
                    ASSERT_EQ(gen_signed_lexcmp(first, second), lexcmp_reference::signed_lexcmp(first, second))
                        << shown(first) << ", " << shown(second);
                    ASSERT_EQ(gen_signed_lexcmp('-' + first, second),
                              lexcmp_reference::signed_lexcmp('-' + first, second))
                        << shown('-' + first) << ", " << shown(second);
                }
}

TEST(GenIlexcmp, FoldsTheLettersAndNoOtherByteInEveryPlaceOfAWord)
{
    for (std::size_t place = 0; place < 8; ++place)
        for (int first_code = 0; first_code < 256; ++first_code)
            for (int second_code = 0; second_code < 256; ++second_code) {
                // The neighbours of the byte are codes whose carries would reach it.
                std::string first = "\xff\xdb\x7fZ\xda@\xff[";
                std::string second = first;
                first[place] = static_cast<char>(first_code);
                second[place] = static_cast<char>(second_code);
                ASSERT_EQ(gen_ilexcmp(first, second), lexcmp_reference::lexcmp(first, second, true))
                    << shown(first) << ", " << shown(second);
            }
}

TEST(GenLexcmp, OrdersEveryShortText)
{
    // If the order holds for every pair, a sorted sequence has no pair out of order, neighbours or not.
    struct Order
    {
        char const *name;
        int (*compare)(std::string const &, std::string const &);
    };
    for (Order const &order : {Order{"gen_lexcmp", gen_lexcmp}, Order{"gen_ilexcmp", gen_ilexcmp}}) {
        std::vector<std::string> texts = short_texts("019aA-\x80", 3);
        std::sort(texts.begin(), texts.end(),
                  [&](std::string const &a, std::string const &b) { return order.compare(a, b) < 0; });
        for (std::size_t i = 0; i < texts.size(); ++i)
            for (std::size_t j = i; j < texts.size(); ++j) {
                int const forward = order.compare(texts[i], texts[j]);
                ASSERT_LE(forward, 0) << order.name << " of " << shown(texts[i]) << " and " << shown(texts[j]);
                ASSERT_EQ(forward, -order.compare(texts[j], texts[i]))
                    << order.name << " of " << shown(texts[i]) << " and " << shown(texts[j]);
                if (i == j) {
                    ASSERT_EQ(forward, 0) << order.name << " of " << shown(texts[i]);
                }
            }
    }
}

TEST(GenSignedLexcmp, TurnsItsSignWithItsArguments)
{
    std::vector<std::string> const texts = short_texts("019a-", 4);
    for (std::string const &first : texts)
        for (std::string const &second : texts)
            ASSERT_EQ(gen_signed_lexcmp(first, second), -gen_signed_lexcmp(second, first))
                << shown(first) << ", " << shown(second);
}

// The comparison of two numbers by itself, with the signs and blanks that names never bring.

struct NumberCase
{
    std::string first;
    std::string second;
    int result;
    std::size_t first_consumed;
    std::size_t second_consumed;
};
std::vector<NumberCase> const NUMBER_CASES = {
    {"7", "7", 0, 1, 1},
    {"12a", "13", -1, 2, 2},
    {"  12", " 12", 0, 4, 3},
    {" 5 ", "3", 2, 2, 1},
    {"100", "99x", 1, 3, 2},
    {"-5", "-3", -2, 2, 2},
    {" -5", "  -3", -2, 3, 4},
    {"-100", "-99", -1, 4, 3},
    {"-007", "-7", -2, 4, 2},
    {"000", "0", 2, 3, 1},
    // The negative side is the greater one, and no digit is read.
    {"-5", "3", 1, 1, 0},
    {"5", " -3", -1, 0, 2},
};
TEST(GenCompareNumbers, TakesBlanksAndASignOnEitherSide)
{
    for (NumberCase const &c : NUMBER_CASES) {
        GEN_TEXT_CURSOR first{c.first.data(), c.first.data() + c.first.size()};
        GEN_TEXT_CURSOR second{c.second.data(), c.second.data() + c.second.size()};
        EXPECT_EQ(gen_compare_numbers(first, second), c.result) << shown(c.first) << ", " << shown(c.second);
        EXPECT_EQ(first.at - c.first.data(), static_cast<std::ptrdiff_t>(c.first_consumed)) << shown(c.first);
        EXPECT_EQ(second.at - c.second.data(), static_cast<std::ptrdiff_t>(c.second_consumed)) << shown(c.second);
    }
}

void compare_numbers(std::string const &first_text, std::string const &second_text)
{
    GEN_TEXT_CURSOR first{first_text.data(), first_text.data() + first_text.size()};
    GEN_TEXT_CURSOR second{second_text.data(), second_text.data() + second_text.size()};
    gen_compare_numbers(first, second);
}

TEST(GenCompareNumbersDeathTest, EndsWithoutADigitOnASide)
{
    struct Case
    {
        char const *first;
        char const *second;
        char const *text;
    };
    constexpr char const *FIRST = "::gen_ascii_isdigit(**str1_iter)";
    constexpr char const *SECOND = "::gen_ascii_isdigit(**str2_iter)";
    for (Case const &c : {Case{"", "1", FIRST}, Case{"a", "1", FIRST}, Case{"--1", "1", FIRST}, Case{"-", "1", FIRST},
                          Case{"\t1", "1", FIRST}, Case{"- 1", "1", FIRST}, Case{"1", "", SECOND},
                          Case{"1", " x", SECOND}, Case{"x", "x", FIRST}})
        EXPECT_EXIT(compare_numbers(c.first, c.second), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_source(c.text, "gen/gen_string*"))
            << shown(c.first) << ", " << shown(c.second);
}
