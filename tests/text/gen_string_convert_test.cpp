#include "gen_string_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <cstring>
#include <limits>
#include <locale>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

constexpr int INT_LEAST = std::numeric_limits<int>::min();
constexpr int INT_MOST = std::numeric_limits<int>::max();

// The digits of a value by repeated division.
std::string digits_of(std::uint64_t value, unsigned radix)
{
    std::string text;
    do
        text.insert(text.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[value % radix]);
    while ((value /= radix) != 0);
    return text;
}

// The values around each power of two, and others.
std::vector<std::uint64_t> const &sample_values()
{
    static std::vector<std::uint64_t> const values = [] {
        std::vector<std::uint64_t> result;
        for (int bit = 0; bit < 64; ++bit)
            for (std::uint64_t offset = 0; offset < 3; ++offset)
                result.push_back((std::uint64_t{1} << bit) - 1 + offset);
        for (std::uint64_t power = 1; power < 1000000000000000000; power *= 10)
            for (std::uint64_t offset = 0; offset < 3; ++offset)
                result.push_back(power - 1 + offset);
        std::mt19937_64 random(7);
        for (int i = 0; i < 500; ++i)
            result.push_back(random() >> (i % 64));
        return result;
    }();
    return values;
}

} // namespace

// Text to number.

struct AtoiCase
{
    std::string text;
    int value;
    std::int64_t long_value;
    std::size_t consumed;
};
std::vector<AtoiCase> const ATOI_CASES = {
    {"", 0, 0, 0},
    {"0", 0, 0, 1},
    {"12", 12, 12, 2},
    {"12abc", 12, 12, 2},
    {"12 34", 12, 12, 2},
    {"007", 7, 7, 3},
    {"+5", 5, 5, 2},
    {"-5", -5, -5, 2},
    {" \t\n-7x", -7, -7, 5},
    {"\n\n\t\t  42", 42, 42, 8},
    // Other white space ends the skip.
    {"\r1", 0, 0, 0},
    {"\f1", 0, 0, 0},
    {"\v1", 0, 0, 0},
    {" \r1", 0, 0, 1},
    {"\xa0"
     "1",
     0, 0, 0},
    // Without a digit the cursor stays after the sign.
    {"-", 0, 0, 1},
    {"+", 0, 0, 1},
    {"  - 1", 0, 0, 3},
    {"--1", 0, 0, 1},
    {"+-1", 0, 0, 1},
    {"abc", 0, 0, 0},
    {"   ", 0, 0, 3},
    {"  a", 0, 0, 2},
    {std::string("1\0002", 3), 1, 1, 1},
    {std::string("\0001", 2), 0, 0, 0},
    // Overflow wraps.
    {"2147483647", INT_MOST, 2147483647, 10},
    {"2147483648", INT_LEAST, 2147483648, 10},
    {"-2147483648", INT_LEAST, -2147483648, 11},
    {"-2147483649", INT_MOST, -2147483649, 11},
    {"4294967295", -1, 4294967295, 10},
    {"4294967296", 0, 4294967296, 10},
    {"4294967297", 1, 4294967297, 10},
    {"-4294967297", -1, -4294967297, 11},
    {"9223372036854775807", -1, std::numeric_limits<std::int64_t>::max(), 19},
    {"9223372036854775808", 0, std::numeric_limits<std::int64_t>::min(), 19},
    {"18446744073709551617", 1, 1, 20},
    {"-18446744073709551617", -1, -1, 21},
};

TEST(GenAtoi, ReadsANumberAndWraps)
{
    for (AtoiCase const &c : ATOI_CASES)
        EXPECT_EQ(gen_atoi(c.text), c.value) << shown(c.text);
}

TEST(GenAtoi, LeavesTheCursorAfterTheConsumedText)
{
    for (AtoiCase const &c : ATOI_CASES) {
        std::string::const_iterator cursor = c.text.begin();
        EXPECT_EQ(gen_atoi(c.text, &cursor), c.value) << shown(c.text);
        EXPECT_EQ(cursor - c.text.begin(), static_cast<std::ptrdiff_t>(c.consumed)) << shown(c.text);
    }
}

TEST(GenAtoi, GoesOnFromTheCursor)
{
    std::string const text = "3 -14\n+15,92";
    std::string::const_iterator cursor = text.begin();
    EXPECT_EQ(gen_atoi(text, &cursor), 3);
    EXPECT_EQ(gen_atoi(text, &cursor), -14);
    EXPECT_EQ(gen_atoi(text, &cursor), 15);
    EXPECT_EQ(gen_atoi(text, &cursor), 0);
    EXPECT_EQ(*cursor, ',');
    ++cursor;
    EXPECT_EQ(gen_atoi(text, &cursor), 92);
    EXPECT_EQ(gen_atoi(text, &cursor), 0);
    EXPECT_EQ(cursor, text.end());
}

TEST(GenAtotimeT, ReadsANumberAndWrapsIn64Bits)
{
    for (AtoiCase const &c : ATOI_CASES)
        EXPECT_EQ(gen_atotime_t(c.text), c.long_value) << shown(c.text);
}

struct AtouiCase
{
    std::string text;
    std::uint32_t value;
    bool ok;
};
std::vector<AtouiCase> const ATOUI_CASES = {
    {"12", 12, true},
    {" 12", 12, true},
    {"\t\r\n\f\v12", 12, true},
    {"+12", 12, true},
    {"0", 0, true},
    {"0012", 12, true},
    {"4294967295", 4294967295, true},
    {"4294967296", 0, false},
    {"99999999999999999999999", 0, false},
    {"12 ", 0, false},
    {"12a", 0, false},
    {"0x10", 0, false},
    {"1.0", 0, false},
    {"1-2", 0, false},
    {"-0", 0, false},
    {"-12", 0, false},
    {"12-", 0, false},
    {"++1", 0, false},
    {"+", 0, false},
    {"", 0, false},
    {" ", 0, false},
    {"a", 0, false},
    {std::string("12\0", 3), 0, false},
};
TEST(GenAtouiS, ReadsTheWholeTextOrFails)
{
    for (AtouiCase const &c : ATOUI_CASES)
        for (bool ok : {false, true}) {
            EXPECT_EQ(gen_atoui_s(c.text, &ok), c.value) << shown(c.text);
            EXPECT_EQ(ok, c.ok) << shown(c.text);
        }
}

// Number to text.

struct ItoaCase
{
    int value;
    int radix;
    char const *text;
};
constexpr ItoaCase ITOA_CASES[] = {
    {0, 10, "0"},
    {0, 2, "0"},
    {7, 10, "7"},
    {-7, 10, "-7"},
    {255, 16, "ff"},
    {-255, 10, "-255"},
    // In any other radix the bits are written.
    {-255, 16, "ffffff01"},
    {-1, 2, "11111111111111111111111111111111"},
    {-1, 8, "37777777777"},
    {-1, 36, "1z141z3"},
    {35, 36, "z"},
    {36, 36, "10"},
    {INT_MOST, 10, "2147483647"},
    {INT_LEAST, 10, "-2147483648"},
    {INT_LEAST, 2, "10000000000000000000000000000000"},
    {INT_LEAST, 16, "80000000"},
    // Letters go on where there are any.
    {36, 37, "{"},
    {37, 37, "10"},
};

// The result of each form of gen_itoa().
std::vector<std::string> itoa_forms(int value, int radix)
{
    // The buffer has no byte to spare after the terminator.
    std::string const text = gen_itoa(value, radix);
    std::unique_ptr<char[]> const buffer(new char[text.size() + 1]);
    EXPECT_EQ(gen_itoa(value, buffer.get(), radix), buffer.get());
    std::string out = "what was there before, and long enough to need memory of its own";
    gen_itoa(value, out, radix);
    return {text, buffer.get(), out};
}

TEST(GenItoa, WritesASignInRadixTenAlone)
{
    for (ItoaCase const &c : ITOA_CASES)
        EXPECT_THAT(itoa_forms(c.value, c.radix), testing::Each(std::string(c.text)))
            << c.value << " in radix " << c.radix;
}

TEST(GenItoa, WritesEveryRadix)
{
    for (int radix = 2; radix <= 36; ++radix)
        for (std::uint64_t sample : sample_values()) {
            int const value = static_cast<int>(sample);
            std::uint32_t const bits = static_cast<std::uint32_t>(value);
            bool const has_sign = radix == 10 && value < 0;
            ASSERT_THAT(itoa_forms(value, radix),
                        testing::Each((has_sign ? "-" : "") +
                                      digits_of(has_sign ? 0 - bits : bits, static_cast<unsigned>(radix))))
                << value << " in radix " << radix;
        }
}

TEST(GenItoa, ReadsBack)
{
    for (std::uint64_t sample : sample_values())
        EXPECT_EQ(gen_atoi(gen_itoa(static_cast<int>(sample), 10)), static_cast<int>(sample));
}

TEST(GenItoa, GivesNoTextInARadixBelowTwo)
{
    for (int radix : {1, 0, -1, -10, -16, INT_LEAST})
        for (int value : {0, 1, 5, -5, INT_MOST, INT_LEAST}) {
            EXPECT_EQ(gen_itoa(value, radix), "") << value << " in radix " << radix;
            char text[] = "xx";
            EXPECT_EQ(gen_itoa(value, text, radix), text);
            EXPECT_STREQ(text, "") << value << " in radix " << radix;
            EXPECT_STREQ(gen_ltoa(value, text, radix), "") << value << " in radix " << radix;
            EXPECT_STREQ(gen_ultoa(static_cast<std::uint64_t>(value), text, radix), "")
                << value << " in radix " << radix;
            EXPECT_EQ(text[1], 'x') << value << " in radix " << radix;
        }
}

TEST(GenItoa, ContinuesAfterTheLettersInARadixAbove36)
{
    // The characters after z, by their codes; a terminator may be among them.
    for (int radix : {37, 100, 1000, INT_MOST})
        for (std::uint64_t sample : sample_values()) {
            std::string expected;
            for (std::uint32_t rest = static_cast<std::uint32_t>(sample); expected.empty() || rest != 0;
                 rest /= static_cast<std::uint32_t>(radix)) {
                std::uint32_t const digit = rest % static_cast<std::uint32_t>(radix);
                expected.insert(expected.begin(), static_cast<char>(digit + (digit < 10 ? '0' : 'a' - 10)));
            }
            ASSERT_EQ(gen_itoa(static_cast<int>(sample), radix), expected) << sample << " in radix " << radix;
        }
}

TEST(GenItoaDeathTest, TestsTheRadixOfTheStringForm)
{
    for (int radix : {1, 0, -1, -10, INT_LEAST}) {
        std::string out;
        EXPECT_EXIT(gen_itoa(5, out, radix), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("radix > 1", "gen_string*"))
            << "radix " << radix;
    }
}

struct LtoaCase
{
    std::int64_t value;
    int radix;
    char const *text;
};
constexpr LtoaCase LTOA_CASES[] = {
    {0, 10, "0"},
    {0, 16, "0"},
    {-255, 16, "-ff"},
    {-255, 10, "-255"},
    {255, 2, "11111111"},
    {-4, 2, "-100"},
    {std::numeric_limits<std::int64_t>::max(), 10, "9223372036854775807"},
    {-std::numeric_limits<std::int64_t>::max(), 10, "-9223372036854775807"},
    {std::numeric_limits<std::int64_t>::max(), 36, "1y2p0ij32e8e7"},
    {-36, 37, "-{"},
    // This one has no counterpart above 0.
    {std::numeric_limits<std::int64_t>::min(), 10, "-9223372036854775808"},
    {std::numeric_limits<std::int64_t>::min(), 16, "-8000000000000000"},
};
TEST(GenLtoa, WritesASignInEveryRadix)
{
    for (LtoaCase const &c : LTOA_CASES) {
        std::unique_ptr<char[]> const buffer(new char[std::strlen(c.text) + 1]);
        EXPECT_EQ(gen_ltoa(c.value, buffer.get(), c.radix), buffer.get());
        EXPECT_STREQ(buffer.get(), c.text) << c.value << " in radix " << c.radix;
    }
}

TEST(GenLtoa, WritesEveryRadix)
{
    for (int radix = 2; radix <= 36; ++radix)
        for (std::uint64_t sample : sample_values()) {
            std::int64_t const value = static_cast<std::int64_t>(sample);
            std::uint64_t const magnitude = value < 0 ? 0 - sample : sample;
            char buffer[66];
            ASSERT_EQ(gen_ltoa(value, buffer, radix),
                      (value < 0 ? "-" : "") + digits_of(magnitude, static_cast<unsigned>(radix)))
                << value << " in radix " << radix;
        }
}

TEST(GenUltoa, WritesEveryRadix)
{
    for (int radix = 2; radix <= 36; ++radix)
        for (std::uint64_t value : sample_values()) {
            std::string const expected = digits_of(value, static_cast<unsigned>(radix));
            std::unique_ptr<char[]> const buffer(new char[expected.size() + 1]);
            ASSERT_EQ(gen_ultoa(value, buffer.get(), radix), buffer.get());
            ASSERT_EQ(buffer.get(), expected) << value << " in radix " << radix;
        }
    char buffer[66];
    EXPECT_STREQ(gen_ultoa(~std::uint64_t{0}, buffer, 10), "18446744073709551615");
    EXPECT_STREQ(gen_ultoa(~std::uint64_t{0}, buffer, 2), std::string(64, '1').c_str());
}

// Locales.

// Groups the digits of every stream while it lives.
class GroupedDigits
{
public:
    GroupedDigits() : m_former(std::locale::global(std::locale(std::locale::classic(), new Grouping))) {}
    ~GroupedDigits() { std::locale::global(m_former); }
    GroupedDigits(GroupedDigits const &) = delete;
    GroupedDigits &operator=(GroupedDigits const &) = delete;

private:
    class Grouping : public std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale m_former;
};

TEST(GenNumbers, KnowNoLocale)
{
    GroupedDigits const grouped;
    std::ostringstream shows;
    shows << 1234567;
    ASSERT_EQ(shows.str(), "1.234.567");

    char buffer[66];
    EXPECT_EQ(gen_itoa(1234567, 10), "1234567");
    EXPECT_STREQ(gen_ltoa(-1234567, buffer, 10), "-1234567");
    EXPECT_STREQ(gen_ultoa(1234567, buffer, 10), "1234567");
    EXPECT_EQ(gen_atoi("1.234"), 1);
    EXPECT_EQ(gen_atotime_t("1.234"), 1);
}
