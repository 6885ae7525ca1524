#include "gen_localization_sys.h"

#include "tests/support/environment.h"
#include "tests/support/internal_error.h"
#include "tests/support/platform.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <cwctype>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

using testing::ExitedWithCode;

// German writes a comma in numbers, has letters above 127 and its own names of days.
#ifdef _WIN32
constexpr char const *FOREIGN_BYTES = "German_Germany.1252"; // a character is a byte
constexpr char const *FOREIGN_LOCALES[] = {FOREIGN_BYTES};
#else
constexpr char const *FOREIGN_BYTES = "de_DE.ISO-8859-1";
constexpr char const *FOREIGN_MULTIBYTE = "de_DE.UTF-8";
constexpr char const *FOREIGN_LOCALES[] = {FOREIGN_BYTES, FOREIGN_MULTIBYTE};
#endif

std::string present_locale()
{
    return std::setlocale(LC_ALL, nullptr);
}

// The locale of the process, for a scope.
class ProcessLocale
{
public:
    explicit ProcessLocale(char const *name, int category = LC_ALL)
        : m_former(present_locale()), m_is_set(std::setlocale(category, name) != nullptr)
    {
    }
    ~ProcessLocale() { std::setlocale(LC_ALL, m_former.c_str()); }
    ProcessLocale(ProcessLocale const &) = delete;
    ProcessLocale &operator=(ProcessLocale const &) = delete;

    bool is_set() const { return m_is_set; }

private:
#ifndef _WIN32
    // Where the build has put the locales of the test.
    Environment m_directory{"LOCPATH", GEN_TEST_LOCALE_DIRECTORY};
#endif
    std::string m_former;
    bool m_is_set;
};

// The result of a call, after which the process's locale is what it was before.
template <typename Function>
auto kept(Function call)
{
    std::string const before = present_locale();
    auto result = call();
    EXPECT_EQ(present_locale(), before);
    return result;
}

// Each test runs under each of these process locales.
class GenLocal : public testing::TestWithParam<char const *>
{
protected:
    void SetUp() override { ASSERT_TRUE(m_locale.is_set()) << "the system has no locale " << GetParam(); }

private:
    ProcessLocale m_locale{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(UnderC, GenLocal, testing::Values("C"));
INSTANTIATE_TEST_SUITE_P(UnderGerman, GenLocal, testing::ValuesIn(FOREIGN_LOCALES));

std::tm monday_in_march()
{
    std::tm time{};
    time.tm_year = 126;
    time.tm_mon = 2;
    time.tm_mday = 2;
    time.tm_wday = 1;
    time.tm_hour = 15;
    return time;
}

// The tests below prove something only if the runtime library's own results differ.
TEST(GenLocalForeignLocale, ChangesTheResultsOfTheRuntimeLibrary)
{
    for (char const *name : FOREIGN_LOCALES) {
        ProcessLocale const locale(name);
        ASSERT_TRUE(locale.is_set()) << "the system has no locale " << name;
        EXPECT_STREQ(std::localeconv()->decimal_point, ",") << name;
        EXPECT_EQ(std::atof("1.5"), 1.0) << name;
        EXPECT_NE(std::iswalpha(0xE4), 0) << name;
        char day[32] = "";
        std::tm const time = monday_in_march();
        std::strftime(day, sizeof day, "%A", &time);
        EXPECT_STREQ(day, "Montag") << name;
    }
    ProcessLocale const bytes(FOREIGN_BYTES);
    EXPECT_NE(std::isalpha(0xE4), 0);
    // The compiler takes it that toupper folds ASCII alone, unless it can't see the argument.
    int volatile const letter = 0xE4;
    EXPECT_EQ(std::toupper(letter), 0xC4);
#ifndef _WIN32
    ProcessLocale const multibyte(FOREIGN_MULTIBYTE);
    EXPECT_EQ(std::mblen("\xC3\xA4", 2), 2);
#endif
}

// Numbers.

struct RealCase
{
    char const *text;
    double value;
    std::ptrdiff_t length;
};
constexpr RealCase REAL_CASES[] = {
    {"1.5", 1.5, 3},        {"1.5,5", 1.5, 3}, {"1,5", 1, 1}, {"-2.25e2x", -225, 7},
    {" \t0.125", 0.125, 7}, {".5", 0.5, 2},    {"1.", 1, 2},  {"1.000,5", 1, 5},
    {"comma", 0, 0},        {"", 0, 0},        {"+3", 3, 2},  {"1e400", std::numeric_limits<double>::infinity(), 5},
};

TEST_P(GenLocal, ReadsRealNumbersWithAPoint)
{
    for (RealCase const &c : REAL_CASES) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(kept([&] { return gen_local_atof(c.text); }), c.value);
        char *end = nullptr;
        EXPECT_EQ(kept([&] { return gen_local_strtod(c.text, &end); }), c.value);
        EXPECT_EQ(end - c.text, c.length);
        EXPECT_EQ(gen_local_strtod(c.text, nullptr), c.value);

        std::wstring const wide(c.text, c.text + std::strlen(c.text));
        wchar_t *wide_end = nullptr;
        EXPECT_EQ(kept([&] { return gen_local_wcstod(wide.c_str(), &wide_end); }), c.value);
        EXPECT_EQ(wide_end - wide.c_str(), c.length);
    }
}

struct IntegerCase
{
    char const *text;
    int base;
    long value;
    std::ptrdiff_t length;
};
constexpr IntegerCase INTEGER_CASES[] = {
    {"123", 10, 123, 3},
    {" -45x", 10, -45, 4},
    {"+7", 10, 7, 2},
    {"1.5", 10, 1, 1},
    {"1.000", 10, 1, 1},
    {"1,000", 10, 1, 1},
    {"ff", 16, 255, 2},
    {"0x1F", 0, 31, 4},
    {"017", 0, 15, 3},
    {"zz", 36, 1295, 2},
    {"x", 10, 0, 0},
    {"", 10, 0, 0},
    {"2147483647", 10, 2147483647, 10},
    {"-2147483647", 10, -2147483647, 11},
};

TEST_P(GenLocal, ReadsWholeNumbers)
{
    for (IntegerCase const &c : INTEGER_CASES) {
        SCOPED_TRACE(c.text);
        std::wstring const wide(c.text, c.text + std::strlen(c.text));
        auto const as_unsigned = static_cast<unsigned long>(c.value);
        char *end = nullptr;
        EXPECT_EQ(kept([&] { return gen_local_strtol(c.text, &end, c.base); }), c.value);
        EXPECT_EQ(end - c.text, c.length);
        EXPECT_EQ(kept([&] { return gen_local_strtoul(c.text, &end, c.base); }), as_unsigned);
        EXPECT_EQ(end - c.text, c.length);
        wchar_t *wide_end = nullptr;
        EXPECT_EQ(kept([&] { return gen_local_wcstol(wide.c_str(), &wide_end, c.base); }), c.value);
        EXPECT_EQ(wide_end - wide.c_str(), c.length);
        EXPECT_EQ(kept([&] { return gen_local_wcstoul(wide.c_str(), &wide_end, c.base); }), as_unsigned);
        EXPECT_EQ(wide_end - wide.c_str(), c.length);
        if (c.base != 10)
            continue;
        EXPECT_EQ(kept([&] { return gen_local_atoi(c.text); }), c.value);
        EXPECT_EQ(kept([&] { return gen_local_atol(c.text); }), c.value);
        EXPECT_EQ(kept([&] { return gen_local_atosqword(c.text); }), c.value);
        EXPECT_EQ(kept([&] { return gen_local_wtoi(wide.c_str()); }), c.value);
        EXPECT_EQ(kept([&] { return gen_local_wtol(wide.c_str()); }), c.value);
    }
}

TEST_P(GenLocal, ReadsTheNearestNumberInRange)
{
    constexpr std::int64_t HIGHEST = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t LOWEST = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(kept([] { return gen_local_atosqword("9223372036854775807"); }), HIGHEST);
    EXPECT_EQ(kept([] { return gen_local_atosqword("-9223372036854775808"); }), LOWEST);
    EXPECT_EQ(kept([] { return gen_local_atosqword("9223372036854775808"); }), HIGHEST);
    EXPECT_EQ(kept([] { return gen_local_atosqword("-99999999999999999999"); }), LOWEST);
    EXPECT_EQ(kept([] { return gen_local_atosqword("4294967296"); }), 4294967296);

    EXPECT_EQ(kept([] { return gen_local_wtoi(L"2147483648"); }), std::numeric_limits<int>::max());
    EXPECT_EQ(kept([] { return gen_local_wtoi(L"-4294967295"); }), std::numeric_limits<int>::min());
    EXPECT_EQ(kept([] { return gen_local_wtol(L"99999999999999999999"); }), std::numeric_limits<long>::max());
    EXPECT_EQ(kept([] { return gen_local_wtol(L"-99999999999999999999"); }), std::numeric_limits<long>::min());

    EXPECT_EQ(kept([] { return gen_local_strtol("99999999999999999999", nullptr, 10); }),
              std::numeric_limits<long>::max());
    EXPECT_EQ(kept([] { return gen_local_strtoul("99999999999999999999", nullptr, 10); }),
              std::numeric_limits<unsigned long>::max());
}

TEST_P(GenLocal, KeepsTheErrorNumberOfTheCall)
{
    errno = 0;
    kept([] { return gen_local_strtol("99999999999999999999", nullptr, 10); });
    EXPECT_EQ(errno, ERANGE);
    errno = 0;
    kept([] { return gen_local_strtod("1.5", nullptr); });
    EXPECT_EQ(errno, 0);
}

// Character classes.

struct ClassCase
{
    char const *name;
    int (*narrow)(int);
    int (*wide)(unsigned short);
    int (*platform)(std::wint_t);
    unsigned type;
    bool (*contains)(int);
};

bool is_between(int code, char first, char last)
{
    return code >= first && code <= last;
}
bool is_upper(int code)
{
    return is_between(code, 'A', 'Z');
}
bool is_lower(int code)
{
    return is_between(code, 'a', 'z');
}
bool is_digit(int code)
{
    return is_between(code, '0', '9');
}
bool is_alpha(int code)
{
    return is_upper(code) || is_lower(code);
}
bool is_alnum(int code)
{
    return is_alpha(code) || is_digit(code);
}
bool is_xdigit(int code)
{
    return is_digit(code) || is_between(code, 'A', 'F') || is_between(code, 'a', 'f');
}
bool is_cntrl(int code)
{
    return (code >= 0 && code < ' ') || code == 127;
}
bool is_space(int code)
{
    return code == ' ' || is_between(code, '\t', '\r');
}
bool is_graph(int code)
{
    return is_between(code, '!', '~');
}
bool is_print(int code)
{
    return is_between(code, ' ', '~');
}
bool is_punct(int code)
{
    return is_graph(code) && !is_alnum(code);
}

ClassCase const CLASS_CASES[] = {
    {"alnum", gen_local_isalnum, gen_local_iswalnum, std::iswalnum, 0x104, is_alnum},
    {"alpha", gen_local_isalpha, gen_local_iswalpha, std::iswalpha, 0x100, is_alpha},
    {"cntrl", gen_local_iscntrl, gen_local_iswcntrl, std::iswcntrl, 0x020, is_cntrl},
    {"digit", gen_local_isdigit, gen_local_iswdigit, std::iswdigit, 0x004, is_digit},
    {"graph", gen_local_isgraph, gen_local_iswgraph, std::iswgraph, 0x114, is_graph},
    {"lower", gen_local_islower, gen_local_iswlower, std::iswlower, 0x002, is_lower},
    {"print", gen_local_isprint, gen_local_iswprint, std::iswprint, 0, is_print},
    {"punct", gen_local_ispunct, gen_local_iswpunct, std::iswpunct, 0x010, is_punct},
    {"space", gen_local_isspace, gen_local_iswspace, std::iswspace, 0x008, is_space},
    {"upper", gen_local_isupper, gen_local_iswupper, std::iswupper, 0x001, is_upper},
    {"xdigit", gen_local_isxdigit, gen_local_iswxdigit, std::iswxdigit, 0x080, is_xdigit},
};

// Codes that are no characters.
constexpr int STRANGE_CODES[] = {std::numeric_limits<int>::min(), -1000, -129, -128, -2, -1, 256, 1000, 0x10041,
                                 std::numeric_limits<int>::max()};

TEST_P(GenLocal, PutsBytesIntoTheClassesOfC)
{
    for (ClassCase const &c : CLASS_CASES) {
        for (int code = 0; code < 256; ++code)
            EXPECT_EQ(kept([&] { return c.narrow(code); }) != 0, c.contains(code)) << c.name << ' ' << code;
        for (int const code : STRANGE_CODES)
            EXPECT_EQ(kept([&] { return c.narrow(code); }), 0) << c.name << ' ' << code;
    }
}

TEST_P(GenLocal, PutsWideCharactersIntoTheClassesOfC)
{
    for (ClassCase const &c : CLASS_CASES) {
        for (unsigned short code = 0; code < 128; ++code) {
            // The tab is a blank to Windows, and blanks print.
            bool const is_printed_tab = ON_WINDOWS && code == '\t' && c.contains == is_print;
            EXPECT_EQ(kept([&] { return c.wide(code); }) != 0, c.contains(code) || is_printed_tab)
                << c.name << ' ' << code;
        }
    }
}

// Characters above 127 are tested on all of Latin-1 and on some more.
std::vector<unsigned short> high_codes()
{
    std::vector<unsigned short> codes{0x100,  0x17F,  0x3B1,  0x416,  0x660, 0x2003,
                                      0x3042, 0x4E00, 0xD800, 0xFF21, 0xFFFF};
    for (unsigned short code = 128; code < 256; ++code)
        codes.push_back(code);
    return codes;
}

TEST_P(GenLocal, PutsHighWideCharactersWhereThePlatformsCDoes)
{
    for (ClassCase const &c : CLASS_CASES) {
        for (unsigned short const code : high_codes()) {
            int expected = 0;
            {
                ProcessLocale const plain("C");
                expected = c.platform(code);
            }
            EXPECT_EQ(kept([&] { return c.wide(code); }), expected) << c.name << ' ' << code;
            if (!ON_WINDOWS) {
                EXPECT_EQ(expected, 0) << c.name << ' ' << code;
            }
        }
    }
}

TEST_P(GenLocal, KnowsTheClassesOfATypeWord)
{
    for (unsigned short code = 0; code < 128; ++code) {
        auto const contains = [code](unsigned type) {
            return kept([&] { return gen_local_iswctype(code, static_cast<unsigned short>(type)); }) != 0;
        };
        for (ClassCase const &c : CLASS_CASES) {
            if (c.type != 0) {
                EXPECT_EQ(contains(c.type), c.contains(code)) << c.name << ' ' << code;
            }
        }
        EXPECT_EQ(contains(0x040), code == ' ' || code == '\t') << code;
        EXPECT_FALSE(contains(0)) << code;
    }
    EXPECT_TRUE(gen_local_iswctype('Q', 0xFFFF));
    if (!ON_WINDOWS) {
        EXPECT_EQ(gen_local_iswctype(0xE4, 0xFFFF), 0);
    }
}

TEST_P(GenLocal, GivesOneOrZeroForDigitsAsciiAndNames)
{
    for (int code = 0; code < 256; ++code) {
        auto const wide = static_cast<unsigned short>(code);
        EXPECT_EQ(kept([&] { return gen_local_isdigit(code); }), is_digit(code) ? 1 : 0) << code;
        EXPECT_EQ(kept([&] { return gen_local_isascii(code); }), code < 128 ? 1 : 0) << code;
        EXPECT_EQ(kept([&] { return gen_local_iswascii(wide); }) != 0, code < 128) << code;
        EXPECT_EQ(kept([&] { return gen_local_iscsym(code); }), is_alnum(code) || code == '_' ? 1 : 0) << code;
        EXPECT_EQ(kept([&] { return gen_local_iscsymf(code); }), is_alpha(code) || code == '_' ? 1 : 0) << code;
        EXPECT_EQ(kept([&] { return gen_local_isleadbyte(code); }), 0) << code;
    }
    for (int const code : STRANGE_CODES) {
        for (auto const function :
             {gen_local_isdigit, gen_local_isascii, gen_local_iscsym, gen_local_iscsymf, gen_local_isleadbyte})
            EXPECT_EQ(kept([&] { return function(code); }), 0) << code;
    }
    EXPECT_EQ(gen_local_iscsym(95), 1);
    EXPECT_EQ(gen_local_iscsym(45), 0);
    EXPECT_EQ(gen_local_iscsymf(49), 0);
    EXPECT_EQ(gen_local_iscsymf(95), 1);
    EXPECT_FALSE(gen_local_iswascii(0xFFFF));
}

int lower_of(int code)
{
    return is_upper(code) ? code + 32 : code;
}
int upper_of(int code)
{
    return is_lower(code) ? code - 32 : code;
}

TEST_P(GenLocal, FoldsTheLettersOfAscii)
{
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(kept([&] { return gen_local_tolower(code); }), lower_of(code)) << code;
        EXPECT_EQ(kept([&] { return gen_local_toupper(code); }), upper_of(code)) << code;
    }
    for (int const code : STRANGE_CODES) {
        EXPECT_EQ(kept([&] { return gen_local_tolower(code); }), code);
        EXPECT_EQ(kept([&] { return gen_local_toupper(code); }), code);
    }
    for (unsigned short code = 0; code < 128; ++code) {
        EXPECT_EQ(kept([&] { return gen_local_towlower(code); }), lower_of(code)) << code;
        EXPECT_EQ(kept([&] { return gen_local_towupper(code); }), upper_of(code)) << code;
    }
}

TEST_P(GenLocal, FoldsHighWideCharactersAsThePlatformsCDoes)
{
    for (unsigned short const code : high_codes()) {
        int lower = 0;
        int upper = 0;
        {
            ProcessLocale const plain("C");
            lower = static_cast<int>(std::towlower(code));
            upper = static_cast<int>(std::towupper(code));
        }
        EXPECT_EQ(kept([&] { return gen_local_towlower(code); }), lower) << code;
        EXPECT_EQ(kept([&] { return gen_local_towupper(code); }), upper) << code;
        if (!ON_WINDOWS) {
            EXPECT_EQ(lower, code);
            EXPECT_EQ(upper, code);
        }
    }
}

// Text.

TEST_P(GenLocal, FoldsTextInPlace)
{
    char text[] = "Bus[12] \xC4\xE4_Z";
    EXPECT_EQ(kept([&] { return gen_local_strlwr(text); }), text);
    EXPECT_STREQ(text, "bus[12] \xC4\xE4_z");
    EXPECT_EQ(kept([&] { return gen_local_strupr(text); }), text);
    EXPECT_STREQ(text, "BUS[12] \xC4\xE4_Z");
    EXPECT_EQ(kept([] { return gen_local_strlwr(nullptr); }), nullptr);
    EXPECT_EQ(kept([] { return gen_local_strupr(nullptr); }), nullptr);
}

TEST_P(GenLocal, TakesABytePerCharacter)
{
    unsigned char const letter[] = "\xC3\xA4"; // one character in UTF-8
    unsigned char copy[] = "__";
    kept([&] {
        gen_local_mbccpy(copy, letter);
        return 0;
    });
    EXPECT_EQ(copy[0], 0xC3);
    EXPECT_EQ(copy[1], '_');
    EXPECT_EQ(kept([&] { return gen_local_mbclen(letter); }), 1u);
    EXPECT_EQ(kept([&] { return gen_local_mbclen(letter + 2); }), 1u); // the terminator
    EXPECT_EQ(kept([] { return gen_local_mbstrlen("\xC3\xA4x"); }), 3u);
    EXPECT_EQ(kept([] { return gen_local_mbstrlen(""); }), 0u);
}

TEST_P(GenLocal, MeasuresCharacters)
{
    EXPECT_EQ(kept([] { return gen_local_mblen("ab", 2); }), 1);
    EXPECT_EQ(kept([] { return gen_local_mblen("", 1); }), 0);
    EXPECT_EQ(kept([] { return gen_local_mblen(nullptr, 0); }), 0);
    EXPECT_EQ(kept([] { return gen_local_mblen("\xC3\xA4", 2); }), ON_WINDOWS ? 1 : -1);
}

TEST_P(GenLocal, WidensCharactersAndText)
{
    wchar_t character = L'_';
    EXPECT_EQ(kept([&] { return gen_local_mbtowc(&character, "ab", 2); }), 1);
    EXPECT_EQ(character, L'a');
    EXPECT_EQ(kept([&] { return gen_local_mbtowc(&character, "", 1); }), 0);
    EXPECT_EQ(character, L'\0');
    EXPECT_EQ(kept([&] { return gen_local_mbtowc(&character, "\xC3\xA4", 2); }), ON_WINDOWS ? 1 : -1);

    wchar_t wide[8] = L"_______";
    EXPECT_EQ(kept([&] { return gen_local_mbstowcs(wide, "bus9", 8); }), 4u);
    EXPECT_EQ(std::wstring(wide), L"bus9");
    EXPECT_EQ(kept([&] { return gen_local_mbstowcs(wide, "node", 2); }), 2u);
    EXPECT_EQ(std::wstring(wide), L"nos9");
    EXPECT_EQ(kept([&] { return gen_local_mbstowcs(nullptr, "node", 0); }), 4u);
    EXPECT_EQ(kept([&] { return gen_local_mbstowcs(wide, "\xC3\xA4", 8); }),
              ON_WINDOWS ? 2u : std::numeric_limits<std::uint64_t>::max());
}

TEST_P(GenLocal, NarrowsCharactersAndText)
{
    char narrow[MB_LEN_MAX + 8] = "_______";
    EXPECT_EQ(kept([&] { return gen_local_wctomb(narrow, L'a'); }), 1);
    EXPECT_EQ(narrow[0], 'a');
    EXPECT_EQ(kept([&] { return gen_local_wctomb(narrow, L'\xE4'); }), ON_WINDOWS ? 1 : -1);
    EXPECT_EQ(kept([&] { return gen_local_wctomb(narrow, L'\x416'); }), -1);

    EXPECT_EQ(kept([&] { return gen_local_wcstombs(narrow, L"bus9", 8); }), 4u);
    EXPECT_STREQ(narrow, "bus9");
    EXPECT_EQ(kept([&] { return gen_local_wcstombs(narrow, L"node", 2); }), 2u);
    EXPECT_STREQ(narrow, "nos9");
    EXPECT_EQ(kept([&] { return gen_local_wcstombs(nullptr, L"node", 0); }), 4u);
    EXPECT_EQ(kept([&] { return gen_local_wcstombs(narrow, L"\x416", 8); }), std::numeric_limits<std::uint64_t>::max());
}

// Time.

TEST_P(GenLocal, NamesDaysAndMonthsInEnglish)
{
    std::tm const time = monday_in_march();
    char text[64] = "";
    EXPECT_EQ(kept([&] { return gen_local_strftime(text, sizeof text, "%A|%a|%B|%b|%p", &time); }), 23u);
    EXPECT_STREQ(text, "Monday|Mon|March|Mar|PM");
    EXPECT_EQ(kept([&] { return gen_local_strftime(text, 4, "%A", &time); }), 0u);

    wchar_t wide[64] = L"";
    EXPECT_EQ(kept([&] { return gen_local_wcsftime(wide, 64, L"%A|%a|%B|%b|%p", &time); }), 23u);
    EXPECT_EQ(std::wstring(wide), L"Monday|Mon|March|Mar|PM");
    // The result for a value that doesn't fit is left to the runtime library: not every one for Windows returns 0.
    std::size_t cut = 0;
    {
        ProcessLocale const plain("C");
        cut = std::wcsftime(wide, 4, L"%A", &time);
    }
    EXPECT_EQ(kept([&] { return gen_local_wcsftime(wide, 4, L"%A", &time); }), cut);
    if (!ON_WINDOWS) {
        EXPECT_EQ(cut, 0u);
    }
}

std::tm nonsense_time()
{
    std::tm time;
    std::memset(&time, 0x5A, sizeof time);
    return time;
}

TEST_P(GenLocal, ReadsThePresentLocalTime)
{
    std::tm time = nonsense_time();
    std::time_t const before = std::time(nullptr);
    kept([&] {
        gen_local_tm_struct(&time);
        return 0;
    });
    std::time_t const after = std::time(nullptr);
    // The day of the week and of the year are no input to this: they must have come from the call.
    std::tm completed = time;
    std::time_t const seconds = std::mktime(&completed);
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    EXPECT_EQ(time.tm_wday, completed.tm_wday);
    EXPECT_EQ(time.tm_yday, completed.tm_yday);
    EXPECT_EQ(time.tm_isdst, completed.tm_isdst);
}

// Categories.

TEST(GenLocalCategories, AreForcedOneAtATime)
{
    std::tm const time = monday_in_march();
    for (char const *name : FOREIGN_LOCALES) {
        for (int const category : {LC_NUMERIC, LC_CTYPE, LC_TIME}) {
            ProcessLocale const locale(name, category);
            ASSERT_TRUE(locale.is_set()) << name;
            ASSERT_STREQ(std::setlocale(category, nullptr), name);
            char day[32] = "";
            EXPECT_EQ(kept([] { return gen_local_atof("1.5"); }), 1.5) << name << ' ' << category;
            EXPECT_EQ(kept([] { return gen_local_isalpha(0xE4); }), 0) << name << ' ' << category;
            kept([&] { return gen_local_strftime(day, sizeof day, "%A", &time); });
            EXPECT_STREQ(day, "Monday") << name << ' ' << category;
        }
    }
}

// Numbers without a locale.

TEST(GenLocalItoa, WritesDecimalDigits)
{
    struct Case
    {
        int value;
        char const *text;
    };
    constexpr Case CASES[] = {
        {0, "0"},
        {7, "7"},
        {10, "10"},
        {120, "120"},
        {std::numeric_limits<int>::max(), "2147483647"},
        {-5, "+"},
        {-1, "/"},
        {-10, "0"},
        {-123, "-"}, // one character made of the negative remainder
        {std::numeric_limits<int>::min(), "("},
    };
    for (Case const &c : CASES) {
        char text[16];
        std::memset(text, '_', sizeof text);
        gen_local_itoa(c.value, text);
        EXPECT_STREQ(text, c.text) << c.value;
        EXPECT_EQ(text[std::strlen(c.text) + 1], '_') << c.value;
    }
}

struct ParseCase
{
    char const *text;
    int base;
    std::int64_t value;
    std::ptrdiff_t end;
};

template <typename Number>
void expect_parsed(Number (*parse)(char const *, char **, int), char const *text, int base, Number value,
                   std::ptrdiff_t end)
{
    char *stop = nullptr;
    errno = 0;
    EXPECT_EQ(parse(text, &stop, base), value) << '"' << text << "\" base " << base;
    EXPECT_EQ(stop - text, end) << '"' << text << "\" base " << base;
    EXPECT_EQ(errno, 0) << '"' << text << "\" base " << base;
    EXPECT_EQ(parse(text, nullptr, base), value) << '"' << text << "\" base " << base;
}

// Alike in all four.
constexpr ParseCase COMMON_CASES[] = {
    {"123", 10, 123, 3},
    {" \t\n\v\f\r42 ", 10, 42, 8},
    {"+7", 10, 7, 2},
    {"12a", 10, 12, 2},
    {"12a", 16, 0x12A, 3},
    {"zZ", 36, 1295, 2},
    {"1012", 2, 5, 3},
    {"00012", 10, 12, 5},
    // The base that the prefix of the text selects.
    {"017", 0, 15, 3},
    {"017", 16, 23, 3},
    {"0x1f", 0, 31, 4},
    {"0X1F", 0, 31, 4},
    {"19", 0, 19, 2},
    {"08", 0, 0, 1},
    {"0", 0, 0, 1},
    {"0x1F", 16, 31, 4},
    {"0x1F", 10, 0, 1},
    {"0x1", 36, 1189, 3},
    {"0x0x1F", 0, 31, 6},
    {"0x0x1F", 16, 0, 3},
    {"0x0x0x1", 0, 0, 5},
    {"+0x10", 0, 16, 5},
    {"- 1", 10, 0, 0},
    {"+-1", 10, 0, 0},
    // Without digits.
    {"", 10, 0, 0},
    {"x", 10, 0, 0},
    {" x", 10, 0, 1},
    {"+x", 10, 0, 0},
    {"  -", 10, 0, 2},
    {"-x", 0, 0, 0},
    {"0x", 0, 0, 2},
    {"0x", 16, 0, 2},
    {"-0x", 16, 0, 3},
    {"   ", 10, 0, 3},
    {"0xg", 0, 0, 2},
    {"\xA0"
     "1",
     10, 0, 0},
    {"@", 36, 0, 0},
    {"[", 36, 0, 0},
    {"`", 36, 0, 0},
    {"{", 36, 0, 0},
    {"/", 36, 0, 0},
    {":", 36, 0, 0},
    // No such base.
    {"12", 1, 0, 0},
    {" 12", 37, 0, 0},
    {"12", -10, 0, 0},
    {" +1", -1, 0, 0},
};

TEST(GenLocalParsers, ReadTheSameInAllWidths)
{
    for (ParseCase const &c : COMMON_CASES) {
        expect_parsed(gen_local_strtoint, c.text, c.base, static_cast<std::int32_t>(c.value), c.end);
        expect_parsed(gen_local_strtouint, c.text, c.base, static_cast<std::uint32_t>(c.value), c.end);
        expect_parsed(gen_local_strtoSQWORD, c.text, c.base, c.value, c.end);
        expect_parsed(gen_local_strtoQWORD, c.text, c.base, static_cast<std::uint64_t>(c.value), c.end);
    }
}

TEST(GenLocalParsers, StopOnTheDigitThatIsTooMuch)
{
    constexpr std::int32_t INT_HIGHEST = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t INT_LOWEST = std::numeric_limits<std::int32_t>::min();
    expect_parsed(gen_local_strtoint, "2147483647", 10, INT_HIGHEST, 10);
    expect_parsed(gen_local_strtoint, "2147483648", 10, INT_HIGHEST, 9);
    expect_parsed(gen_local_strtoint, "-2147483647", 10, -INT_HIGHEST, 11);
    expect_parsed(gen_local_strtoint, "-2147483648", 10, INT_LOWEST, 10);
    expect_parsed(gen_local_strtoint, "99999999999", 10, INT_HIGHEST, 9);
    expect_parsed(gen_local_strtoint, "21474836470", 10, INT_HIGHEST, 10);
    expect_parsed(gen_local_strtoint, "0x7fffffff", 0, INT_HIGHEST, 10);
    expect_parsed(gen_local_strtoint, "0x80000000", 0, INT_HIGHEST, 9);

    constexpr std::uint32_t UINT_HIGHEST = std::numeric_limits<std::uint32_t>::max();
    expect_parsed(gen_local_strtouint, "4294967295", 10, UINT_HIGHEST, 10);
    expect_parsed(gen_local_strtouint, "4294967296", 10, UINT_HIGHEST, 9);
    expect_parsed(gen_local_strtouint, "-1", 10, UINT_HIGHEST, 2);
    expect_parsed(gen_local_strtouint, "-0", 10, 0u, 2);
    expect_parsed(gen_local_strtouint, "-4294967295", 10, 1u, 11);
    expect_parsed(gen_local_strtouint, "-4294967296", 10, 1u, 10);

    constexpr std::int64_t SQWORD_HIGHEST = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t SQWORD_LOWEST = std::numeric_limits<std::int64_t>::min();
    expect_parsed(gen_local_strtoSQWORD, "9223372036854775807", 10, SQWORD_HIGHEST, 19);
    expect_parsed(gen_local_strtoSQWORD, "9223372036854775808", 10, SQWORD_HIGHEST, 18);
    expect_parsed(gen_local_strtoSQWORD, "-9223372036854775807", 10, -SQWORD_HIGHEST, 20);
    expect_parsed(gen_local_strtoSQWORD, "-9223372036854775808", 10, SQWORD_LOWEST, 19);
    expect_parsed(gen_local_strtoSQWORD, "1y2p0ij32e8e8", 36, SQWORD_HIGHEST, 12);

    constexpr std::uint64_t QWORD_HIGHEST = std::numeric_limits<std::uint64_t>::max();
    expect_parsed(gen_local_strtoQWORD, "18446744073709551615", 10, QWORD_HIGHEST, 20);
    expect_parsed(gen_local_strtoQWORD, "18446744073709551616", 10, QWORD_HIGHEST, 19);
    expect_parsed(gen_local_strtoQWORD, "-1", 10, QWORD_HIGHEST, 2);
    expect_parsed(gen_local_strtoQWORD, "-18446744073709551616", 10, std::uint64_t{1}, 20);
    expect_parsed(gen_local_strtoQWORD, "0xFFFFFFFFFFFFFFFFF", 16, QWORD_HIGHEST, 18);
}

// Calls `visit` with every text of up to `length` characters of the alphabet.
template <typename Visit>
void for_each_text(std::string const &alphabet, std::size_t length, std::string &text, Visit visit)
{
    visit(text);
    if (text.size() == length)
        return;
    for (char const character : alphabet) {
        text += character;
        for_each_text(alphabet, length, text, visit);
        text.pop_back();
    }
}

// Where strtoll has nothing to read it goes back to the start; these stay at the sign or after the blanks.
std::ptrdiff_t end_without_digits(std::string const &text)
{
    return static_cast<std::ptrdiff_t>(std::min(text.find_first_not_of(" \n"), text.size()));
}

TEST(GenLocalParsers, ReadShortTextsAsTheRuntimeLibraryDoes)
{
    std::string text;
    for_each_text(" \n+-019afgZ", 5, text, [](std::string const &input) {
        for (int const base : {0, 2, 8, 10, 16, 36}) {
            char *end = nullptr;
            std::int64_t const expected = std::strtoll(input.c_str(), &end, base);
            std::ptrdiff_t const read = end - input.c_str();
            std::ptrdiff_t const expected_end = read != 0 ? read : end_without_digits(input);
            char *stop = nullptr;
            std::int64_t const value = gen_local_strtoSQWORD(input.c_str(), &stop, base);
            ASSERT_EQ(value, expected) << '"' << input << "\" base " << base;
            ASSERT_EQ(stop - input.c_str(), expected_end) << '"' << input << "\" base " << base;
            ASSERT_EQ(gen_local_strtoint(input.c_str(), nullptr, base), expected) << input;
            ASSERT_EQ(gen_local_strtouint(input.c_str(), nullptr, base), static_cast<std::uint32_t>(expected)) << input;
            ASSERT_EQ(gen_local_strtoQWORD(input.c_str(), nullptr, base), static_cast<std::uint64_t>(expected))
                << input;
        }
    });
}

// Preconditions.

TEST(GenLocalDeathTest, NoPlaceForTheTimeIsAnInternalError)
{
    EXPECT_EXIT(gen_local_tm_struct(nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("timeptr != NULL", "gen_localization*"));
}

TEST(GenLocalDeathTest, NoPlaceForTheDigitsIsAnInternalError)
{
    EXPECT_EXIT(gen_local_itoa(5, nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("string != 0", "gen_localization*"));
}

} // namespace
