// The calls that each wrapper makes to setlocale, step by step: the source of the wrappers over a stand-in for
// setlocale.
#include "gen_localization_sys.h"

#include <clocale>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Longer than a string that needs no memory of its own.
constexpr char const *PRESENT_LOCALE = "the locale that the process has set";

std::vector<std::string> l_steps;

} // namespace

// Each result is in the same buffer: a kept pointer leads to the result of the latest call.
char *recorded_setlocale(int category, char const *name)
{
    static char answer[64];
    l_steps.push_back(std::to_string(category) + (name == nullptr ? "?" : std::string("=") + name));
    return std::strcpy(answer, name == nullptr ? PRESENT_LOCALE : name);
}

namespace std {
using ::recorded_setlocale;
}
#define setlocale recorded_setlocale
#include "gen/text/gen_localization.cpp"
#undef setlocale

namespace {

struct Wrapper
{
    char const *name;
    void (*call)();
};
#define WRAPPER(name, ...)                                                                                             \
    Wrapper                                                                                                            \
    {                                                                                                                  \
#name, [] { name(__VA_ARGS__); }                                                                               \
    }

wchar_t l_wide_text[8];
char l_text[16];
unsigned char l_bytes[8];
std::tm l_time{};

Wrapper const NUMERIC_WRAPPERS[] = {
    WRAPPER(gen_local_atof, "1"),
    WRAPPER(gen_local_atoi, "1"),
    WRAPPER(gen_local_atol, "1"),
    WRAPPER(gen_local_atosqword, "1"),
    WRAPPER(gen_local_strtod, "1", nullptr),
    WRAPPER(gen_local_strtol, "1", nullptr, 10),
    WRAPPER(gen_local_strtoul, "1", nullptr, 10),
    WRAPPER(gen_local_wcstod, L"1", nullptr),
    WRAPPER(gen_local_wcstol, L"1", nullptr, 10),
    WRAPPER(gen_local_wcstoul, L"1", nullptr, 10),
    WRAPPER(gen_local_wtoi, L"1"),
    WRAPPER(gen_local_wtol, L"1"),
};

Wrapper const CHARACTER_WRAPPERS[] = {
    WRAPPER(gen_local_isalnum, 'a'),
    WRAPPER(gen_local_isalpha, 'a'),
    WRAPPER(gen_local_iscntrl, 'a'),
    WRAPPER(gen_local_isgraph, 'a'),
    WRAPPER(gen_local_isleadbyte, 'a'),
    WRAPPER(gen_local_islower, 'a'),
    WRAPPER(gen_local_isprint, 'a'),
    WRAPPER(gen_local_ispunct, 'a'),
    WRAPPER(gen_local_isspace, 'a'),
    WRAPPER(gen_local_isupper, 'a'),
    WRAPPER(gen_local_isxdigit, 'a'),
    WRAPPER(gen_local_tolower, 'a'),
    WRAPPER(gen_local_toupper, 'a'),
    WRAPPER(gen_local_iswalnum, 'a'),
    WRAPPER(gen_local_iswalpha, 'a'),
    WRAPPER(gen_local_iswascii, 'a'),
    WRAPPER(gen_local_iswcntrl, 'a'),
    WRAPPER(gen_local_iswdigit, 'a'),
    WRAPPER(gen_local_iswgraph, 'a'),
    WRAPPER(gen_local_iswlower, 'a'),
    WRAPPER(gen_local_iswprint, 'a'),
    WRAPPER(gen_local_iswpunct, 'a'),
    WRAPPER(gen_local_iswspace, 'a'),
    WRAPPER(gen_local_iswupper, 'a'),
    WRAPPER(gen_local_iswxdigit, 'a'),
    WRAPPER(gen_local_towlower, 'a'),
    WRAPPER(gen_local_towupper, 'a'),
    WRAPPER(gen_local_isascii, 'a'),
    WRAPPER(gen_local_iscsym, 'a'),
    WRAPPER(gen_local_iscsymf, 'a'),
    WRAPPER(gen_local_iswctype, 'a', 1),
    WRAPPER(gen_local_strlwr, l_text),
    WRAPPER(gen_local_strupr, l_text),
    WRAPPER(gen_local_mbccpy, l_bytes, l_bytes + 1),
    WRAPPER(gen_local_mbclen, l_bytes),
    WRAPPER(gen_local_mblen, "a", 1),
    WRAPPER(gen_local_mbstowcs, l_wide_text, "a", 2),
    WRAPPER(gen_local_mbstrlen, "a"),
    WRAPPER(gen_local_mbtowc, l_wide_text, "a", 1),
    WRAPPER(gen_local_wcstombs, l_text, L"a", 2),
    WRAPPER(gen_local_wctomb, l_text, L'a'),
};

Wrapper const TIME_WRAPPERS[] = {
    WRAPPER(gen_local_strftime, l_text, 8, "%Y", &l_time),
    WRAPPER(gen_local_wcsftime, l_wide_text, 8, L"%Y", &l_time),
    WRAPPER(gen_local_tm_struct, &l_time),
};

template <std::size_t COUNT>
void expect_one_category_forced(Wrapper const (&wrappers)[COUNT], int category)
{
    std::string const number = std::to_string(category);
    for (Wrapper const &wrapper : wrappers) {
        l_steps.clear();
        wrapper.call();
        EXPECT_THAT(l_steps, ElementsAre(number + "?", number + "=C", number + "=" + PRESENT_LOCALE)) << wrapper.name;
    }
}

TEST(GenLocalSteps, ForceOneCategoryAndPutTheFormerLocaleBack)
{
    expect_one_category_forced(NUMERIC_WRAPPERS, LC_NUMERIC);
    expect_one_category_forced(CHARACTER_WRAPPERS, LC_CTYPE);
    expect_one_category_forced(TIME_WRAPPERS, LC_TIME);
    static_assert(std::size(NUMERIC_WRAPPERS) + std::size(CHARACTER_WRAPPERS) + std::size(TIME_WRAPPERS) == 56);
}

TEST(GenLocalSteps, AreNotTakenForADigit)
{
    l_steps.clear();
    gen_local_isdigit('1');
    EXPECT_THAT(l_steps, IsEmpty());
}

} // namespace
