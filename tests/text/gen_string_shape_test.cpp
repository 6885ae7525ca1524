#include "gen_string_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <boost/numeric/conversion/converter_policies.hpp>
#include <boost/regex.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#ifndef _WIN32
#include <sys/mman.h>
#endif

namespace {

// A buffer of x, with a text and its terminator at the start if there is one.
std::string buffer_of(std::size_t size, char const *text = nullptr)
{
    std::string buffer(size, 'x');
    if (text != nullptr)
        std::strcpy(buffer.data(), text);
    return buffer;
}

// A text written with 0 for each terminator.
std::string with_zeros(std::string text)
{
    std::replace(text.begin(), text.end(), '0', '\0');
    return text;
}

} // namespace

// Trimming and repeating.

struct TrimCase
{
    std::string text;
    std::string without_spaces;
    std::string without_white_spaces;
};
std::vector<TrimCase> const TRIM_CASES = {
    {"", "", ""},
    {" ", "", ""},
    {"    ", "", ""},
    {"a", "a", "a"},
    {"  a b  ", "a b", "a b"},
    {"a  ", "a", "a"},
    {"  a", "a", "a"},
    {"\t", "\t", ""},
    {" \t \t ", "\t \t", ""},
    {" \t a \n ", "\t a \n", "a"},
    {"\r\na\tb\r\n", "\r\na\tb\r\n", "a\tb"},
    {"\fa\v", "\fa\v", "\fa\v"},
    {std::string(" \0 ", 3), std::string("\0", 1), std::string("\0", 1)},
};

TEST(GenRemoveLeadingAndTrailingSpaces, RemovesBlanksAlone)
{
    for (TrimCase const &c : TRIM_CASES) {
        EXPECT_EQ(gen_remove_leading_and_trailing_spaces(c.text), c.without_spaces) << shown(c.text);
        std::string out = "former";
        gen_remove_leading_and_trailing_spaces(c.text, &out);
        EXPECT_EQ(out, c.without_spaces) << shown(c.text);
        std::string itself = c.text;
        gen_remove_leading_and_trailing_spaces(itself, &itself);
        EXPECT_EQ(itself, c.without_spaces) << shown(c.text);
        gen_remove_leading_and_trailing_spaces(c.text, nullptr);
    }
}

TEST(GenRemoveLeadingAndTrailingWhiteSpaces, RemovesFourCharacters)
{
    for (TrimCase const &c : TRIM_CASES) {
        EXPECT_EQ(gen_remove_leading_and_trailing_white_spaces(c.text), c.without_white_spaces) << shown(c.text);
        std::string out = "former";
        gen_remove_leading_and_trailing_white_spaces(c.text, &out);
        EXPECT_EQ(out, c.without_white_spaces) << shown(c.text);
        std::string itself = c.text;
        gen_remove_leading_and_trailing_white_spaces(itself, &itself);
        EXPECT_EQ(itself, c.without_white_spaces) << shown(c.text);
        gen_remove_leading_and_trailing_white_spaces(c.text, nullptr);
    }
}

TEST(GenRepeatStr, RepeatsAText)
{
    struct Case
    {
        std::string text;
        int num_reps;
        std::string result;
    };
    for (Case const &c : {
             Case{"ab", 0, ""},
             Case{"ab", 1, "ab"},
             Case{"ab", 3, "ababab"},
             Case{"-", 80, std::string(80, '-')},
             Case{"", 0, ""},
             Case{"", 5, ""},
             Case{"", std::numeric_limits<int>::max(), ""},
             Case{std::string("\0", 1), 3, std::string(3, '\0')},
         })
        EXPECT_EQ(gen_repeat_str(c.text, c.num_reps), c.result) << shown(c.text) << ", " << c.num_reps;
}

TEST(GenRepeatStrDeathTest, EndsOnANegativeCount)
{
    for (int num_reps : {-1, std::numeric_limits<int>::min()})
        EXPECT_EXIT(gen_repeat_str("a", num_reps), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("num_reps >= 0", "gen_string*"))
            << "count " << num_reps;
}

// Escapes.

struct EscapeCase
{
    std::string text;
    std::string result;
};
std::vector<EscapeCase> const ESCAPE_CASES = {
    {"", ""},
    {"abc", "abc"},
    {"\\nab", "\nab"},
    {"a\\rb\\tc\\n", "a\rb\tc\n"},
    {"\\a\\N\\0\\ \\'", "aN0 '"},
    {"\\\\", "\\"},
    {"\\\\n", "\\n"},
    {"\\\\\\n", "\\\n"},
    // A backslash at the end is dropped.
    {"\\", ""},
    {"a\\", "a"},
    {"\\\\\\", "\\"},
    // Within quotes nothing is decoded, and a backslash keeps no quote from closing.
    {"\"\\nab\"", "\"\\nab\""},
    {"\"a\\", "\"a\\"},
    {"\"\\\"\\n", "\"\\\"\n"},
    {"\"\\\\\"\\n", "\"\\\\\"\n"},
    {"\"a\"\\n\"\\n\"", "\"a\"\n\"\\n\""},
    // A quote that was decoded opens nothing.
    {"\\\"", "\""},
    {"\\\"\\n", "\"\n"},
    {"\\\"\\n\"\\n", "\"\n\"\\n"},
};

TEST(GenProcessEscapedQuotes, DecodesOutsideQuotes)
{
    for (EscapeCase const &c : ESCAPE_CASES) {
        std::string text = c.text;
        gen_process_escaped_quotes(text);
        EXPECT_EQ(text, c.result) << shown(c.text);

        std::vector<char> bytes = terminated(c.text);
        gen_process_escaped_quotes(bytes.data());
        EXPECT_EQ(std::string(bytes.data()), c.result) << shown(c.text);
    }
    gen_process_escaped_quotes(nullptr);
}

TEST(GenProcessEscapedQuotes, DecodesAfterEmbeddedZerosOfAString)
{
    std::string text("\0\\n\\\0", 5);
    gen_process_escaped_quotes(text);
    EXPECT_EQ(text, std::string("\0\n\0", 3));
}

#ifndef _WIN32 // there a text of that length needs all its memory

// 2^31 characters and a terminator that can't be written to: one piece of a file, mapped again and again.
class LongText
{
public:
    LongText()
    {
        std::FILE *const file = std::tmpfile();
        std::string const characters(CHUNK, 'x');
        bool is_made =
            file != nullptr && std::fwrite(characters.data(), 1, CHUNK, file) == CHUNK && std::fflush(file) == 0;
        m_place = mmap(nullptr, SIZE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        is_made = is_made && m_place != MAP_FAILED;
        for (std::size_t at = 0; is_made && at < LENGTH; at += CHUNK)
            is_made = mmap(text() + at, CHUNK, PROT_READ, MAP_SHARED | MAP_FIXED, fileno(file), 0) != MAP_FAILED;
        if (file != nullptr)
            std::fclose(file);
        EXPECT_TRUE(is_made) << std::strerror(errno);
    }
    ~LongText() { munmap(m_place, SIZE); }
    LongText(LongText const &) = delete;
    LongText &operator=(LongText const &) = delete;

    char *text() const { return static_cast<char *>(m_place); }

private:
    static constexpr std::size_t LENGTH = std::size_t{1} << 31;
    static constexpr std::size_t CHUNK = std::size_t{1} << 24;
    static constexpr std::size_t SIZE = LENGTH + CHUNK; // the last piece is zeros

    void *m_place;
};

TEST(GenProcessEscapedQuotes, ThrowsOnATextTooLongForAnInt)
{
    LongText const text;
    ASSERT_FALSE(HasFailure());
    EXPECT_THROW(gen_process_escaped_quotes(text.text()), boost::numeric::positive_overflow);
}
#endif

// Wild cards.

struct WildcardCase
{
    std::string wildcard;
    std::string expression;
};
std::vector<WildcardCase> const WILDCARD_CASES = {
    {"", ""},
    {"a*.txt", "[aA].*\\.[tT][xX][tT]"},
    {"x", "[xX]"},
    {"X", "[xX]"},
    {"?", "."},
    {"**", ".*.*"},
    {"().[\\]|", "\\(\\)\\.\\[\\\\\\]\\|"},
    {"+^${}", "+^${}"}, // live in the expression
    {"0_9 -/:\"#\x80\xff", "0_9 -/:\"#\x80\xff"},
    {std::string("a\0b", 3), std::string("[aA]\0[bB]", 9)},
};

TEST(GenWildcardToRegExpr, RewritesEachCharacterOnce)
{
    for (WildcardCase const &c : WILDCARD_CASES) {
        std::string text = c.wildcard;
        gen_wildcard_to_reg_expr(&text, /*anchor=*/false);
        EXPECT_EQ(text, c.expression) << shown(c.wildcard);
        text = c.wildcard;
        gen_wildcard_to_reg_expr(&text, /*anchor=*/true);
        EXPECT_EQ(text, '^' + c.expression + '$') << shown(c.wildcard);
    }
}

TEST(GenWildcardToRegExpr, RewritesEveryByte)
{
    for (int code = 0; code < 256; ++code) {
        char const c = static_cast<char>(code);
        std::string expected{c};
        if (c == '*')
            expected = ".*";
        else if (c == '?')
            expected = ".";
        else if (gen_ascii_isalpha(code))
            expected = std::string{'[', gen_ascii_tolower(code), gen_ascii_toupper(code), ']'};
        else if (std::string("().[\\]|").find(c) != std::string::npos)
            expected = std::string{'\\', c};
        std::string text{c};
        gen_wildcard_to_reg_expr(&text, /*anchor=*/false);
        EXPECT_EQ(text, expected) << "code " << code;
    }
}

TEST(GenWildcardToRegExpr, MatchesWhateverTheCase)
{
    std::string text = "Net|a?c[*].q(1)";
    gen_wildcard_to_reg_expr(&text, /*anchor=*/true);
    boost::regex const expression(text);
    for (char const *name : {"Net|abc[].q(1)", "NET|A0C[12].Q(1)", "net|a]C[|].q(1)"})
        EXPECT_TRUE(boost::regex_match(name, expression)) << name;
    for (char const *name : {"Net|ac[].q(1)", "Net|abc[]xq(1)", "Net", "Net|abc[].q1", "xNet|abc[].q(1)"})
        EXPECT_FALSE(boost::regex_match(name, expression)) << name;
}

TEST(GenWildcardToRegExprDeathTest, EndsOnNull)
{
    EXPECT_EXIT(gen_wildcard_to_reg_expr(nullptr, true), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("wildcard != 0", "gen_string*"));
}

// Texts with a terminator.

TEST(GenIsEmptyString, HoldsForNullAndTheEmptyText)
{
    EXPECT_TRUE(gen_is_empty_string(nullptr));
    EXPECT_TRUE(gen_is_empty_string(""));
    EXPECT_FALSE(gen_is_empty_string(" "));
    EXPECT_FALSE(gen_is_empty_string("abc"));
}

TEST(GenStrlen, IsZeroForNull)
{
    EXPECT_EQ(gen_strlen(nullptr), 0);
    EXPECT_EQ(gen_strlen(""), 0);
    EXPECT_EQ(gen_strlen("abc"), 3);
}

TEST(GenStrcpy, CopiesAndTakesANullOnEitherSide)
{
    std::string dst = buffer_of(5);
    EXPECT_EQ(gen_strcpy(dst.data(), "abc"), dst.data());
    EXPECT_EQ(dst, with_zeros("abc0x"));
    EXPECT_EQ(gen_strcpy(dst.data(), nullptr), dst.data());
    EXPECT_EQ(dst, with_zeros("0bc0x"));
    EXPECT_EQ(gen_strcpy(nullptr, "abc"), nullptr);
}

// The results are the bytes of a buffer of eight x, a terminator written as 0.
struct CopyCase
{
    char const *src;
    std::uint64_t count;
    char const *result;
};
constexpr CopyCase STRNCPY_CASES[] = {
    {"abc", 0, "0xxxxxxx"},
    {"abc", 1, "a0xxxxxx"},
    {"abc", 2, "ab0xxxxx"},
    {"abc", 3, "abc0xxxx"},
    {"abc", 4, "abc0xxxx"}, // one place left over
    {"abc", 5, "abc0xxxx"}, // two left over: one byte, the terminator's, is zeroed
    {"abc", 6, "abc00xxx"},
    {"abc", 7, "abc000xx"},
    {"abc", 8, "abc0000x"}, // the byte at index 7 keeps its
                            // value
    {"abcdefg", 7, "abcdefg0"},
    {"abcdefghij", 7, "abcdefg0"},
    {"", 0, "0xxxxxxx"},
    {"", 1, "0xxxxxxx"},
    {"", 2, "0xxxxxxx"},
    {"", 3, "00xxxxxx"},
    {nullptr, 0, "0xxxxxxx"},
    {nullptr, 5, "0xxxxxxx"},
};
TEST(GenStrncpy, TerminatesAndZeroesAllButTheLastPlace)
{
    for (CopyCase const &c : STRNCPY_CASES) {
        std::string dst = buffer_of(8);
        EXPECT_EQ(gen_strncpy(dst.data(), c.src, c.count), dst.data());
        EXPECT_EQ(dst, with_zeros(c.result)) << testing::PrintToString(c.src) << ", " << c.count;
    }
    EXPECT_EQ(gen_strncpy(nullptr, "abc", 3), nullptr);
}

TEST(GenStrncpy, ReadsNothingAfterTheCount)
{
    std::vector<char> const src = {'a', 'b'};
    std::string dst = buffer_of(4);
    gen_strncpy(dst.data(), src.data(), 2);
    EXPECT_EQ(dst, with_zeros("ab0x"));
}

TEST(GenStrcat, AppendsAndTakesANullOnEitherSide)
{
    std::string dst = buffer_of(8, "ab");
    EXPECT_EQ(gen_strcat(dst.data(), "cd"), dst.data());
    EXPECT_EQ(dst, with_zeros("abcd0xxx"));
    EXPECT_EQ(gen_strcat(dst.data(), nullptr), dst.data());
    EXPECT_EQ(dst, with_zeros("abcd0xxx"));
    EXPECT_EQ(gen_strcat(nullptr, "cd"), nullptr);
    EXPECT_EQ(gen_strcat(nullptr, nullptr), nullptr);
}

constexpr CopyCase STRLCPY_CASES[] = {
    {"abc", 0, "xxxxxxxx"}, {"abc", 1, "0xxxxxxx"}, {"abc", 2, "a0xxxxxx"}, {"abc", 3, "ab0xxxxx"},
    {"abc", 4, "abc0xxxx"}, {"abc", 8, "abc0xxxx"}, {"", 0, "xxxxxxxx"},    {"", 1, "0xxxxxxx"},
};
TEST(GenStrlcpy, CutsToTheSizeAndReturnsTheWholeLength)
{
    for (CopyCase const &c : STRLCPY_CASES) {
        std::string dst = buffer_of(8);
        EXPECT_EQ(gen_strlcpy(dst.data(), c.src, c.count), std::strlen(c.src)) << c.src << ", " << c.count;
        EXPECT_EQ(dst, with_zeros(c.result)) << c.src << ", " << c.count;
    }
}

// After "ab" in a buffer of eight.
constexpr CopyCase STRLCAT_CASES[] = {
    {"cd", 0, "ab0xxxxx"}, {"cd", 1, "ab0xxxxx"}, {"cd", 2, "ab0xxxxx"}, {"cd", 3, "ab0xxxxx"},
    {"cd", 4, "abc0xxxx"}, {"cd", 5, "abcd0xxx"}, {"cd", 8, "abcd0xxx"}, {"", 8, "ab0xxxxx"},
};
TEST(GenStrlcat, CutsToTheSizeAndReturnsBothLengths)
{
    for (CopyCase const &c : STRLCAT_CASES) {
        std::string dst = buffer_of(8, "ab");
        EXPECT_EQ(gen_strlcat(dst.data(), c.src, c.count), 2 + std::strlen(c.src)) << c.src << ", " << c.count;
        EXPECT_EQ(dst, with_zeros(c.result)) << c.src << ", " << c.count;
    }
}

TEST(GenStrrev, ReversesInPlace)
{
    struct Case
    {
        char const *text;
        char const *result;
    };
    for (Case const &c : {Case{"", ""}, Case{"a", "a"}, Case{"ab", "ba"}, Case{"abc", "cba"}, Case{"a b!", "!b a"}}) {
        std::vector<char> bytes = terminated(c.text);
        EXPECT_EQ(gen_strrev(bytes.data()), bytes.data());
        EXPECT_STREQ(bytes.data(), c.result) << c.text;
    }
    EXPECT_EQ(gen_strrev(nullptr), nullptr);
}

// Hashes.

struct HashCase
{
    std::string name;
    std::string changed;
    std::uint32_t hash;
};
std::vector<HashCase> const HASH_CASES = {
    {"a", "a", 0x38313A08}, {"abc", "abc", 0x2F8DB6B8}, {"a b  ", "a_b", 0x25095E3F}, {"", "", 0}, {"   ", "", 0},
};
TEST(GenCrcStringToDword, GivesTheReferenceValues)
{
    for (HashCase const &c : HASH_CASES) {
        std::vector<char> bytes = terminated(c.name);
        EXPECT_EQ(gen_crc_string_to_dword(bytes.data()), c.hash) << shown(c.name);
        EXPECT_EQ(std::string(bytes.data()), c.changed) << shown(c.name);
    }
}

TEST(GenCrcStringToDword, ReplacesWhatHasNoPlaceInAnIdentifier)
{
    std::string const from = " !#$%&'+./:<=()->?[\\]|";
    std::string const to = "_EFRCKTMLIUADQPJBGOHNS";
    ASSERT_EQ(from.size(), to.size());
    for (int code = 1; code < 256; ++code) {
        std::string name{static_cast<char>(code), 'z'};
        std::size_t const row = from.find(static_cast<char>(code));
        std::string const expected{row == std::string::npos ? name[0] : to[row], 'z'};
        gen_crc_string_to_dword(name.data());
        EXPECT_EQ(name, expected) << "code " << code;
    }
}

TEST(GenCrcStringToDword, GoesBitByBitFromTheLowest)
{
    for (int first = 1; first < 256; ++first) {
        std::string name{static_cast<char>(first), static_cast<char>(255 - first / 2), 'Q'};
        std::uint32_t const hash = gen_crc_string_to_dword(name.data());
        std::uint32_t value = 0xffffffff;
        for (unsigned char c : name)
            for (int bit = 0; bit < 8; ++bit, c = static_cast<unsigned char>(c >> 1)) {
                bool const is_set = ((value ^ c) & 1) != 0;
                value >>= 1;
                if (is_set)
                    value ^= 0x48728408;
            }
        EXPECT_EQ(hash, value) << shown(name);
    }
}

TEST(GenHashNextSize, GivesTheLargestPrimeBelowAPowerOfTwo)
{
    constexpr std::uint64_t SIZES[] = {
        13,       31,       61,       127,       251,       509,       1021,       2039,       4093,       8191,
        16381,    32749,    65521,    131071,    262139,    524287,    1048573,    2097143,    4194301,    8388593,
        16777213, 33554393, 67108859, 134217689, 268435399, 536870909, 1073741789, 2147483647, 4294967291,
    };
    std::uint64_t former = 0;
    for (std::uint64_t size : SIZES) {
        EXPECT_EQ(gen_hash_next_size(size), size);
        EXPECT_EQ(gen_hash_next_size(size - 1), size);
        EXPECT_EQ(gen_hash_next_size(former == 0 ? 0 : former + 1), size);
        former = size;
    }
    EXPECT_EQ(gen_hash_next_size(14), 31u);
}

TEST(GenHashNextSizeDeathTest, EndsAboveTheLastSize)
{
    for (std::uint64_t n : {std::uint64_t{4294967292}, ~std::uint64_t{0}})
        EXPECT_EXIT(gen_hash_next_size(n), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("rval != 0", "gen_string*"))
            << n;
}
