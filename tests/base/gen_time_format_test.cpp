#include "gen/base/gen_time_format.h"

#include "gen/os/gen_os_text.h"

#include <gtest/gtest.h>

#include <ctime>
#include <iterator>
#include <string>

namespace {

struct FormatCase
{
    char const *format;
    bool is_portable;
};
constexpr FormatCase CASES[] = {
    {"", true},
    {"text", true},
    {"%Y-%m-%d %H:%M:%S", true},
    {"100%%", true},
    {"%a%A%b%B%c%d%H%I%j%m%M%p%S%U%w%W%x%X%y%Y%Z%z", true},
    {"%#c %#H", true},
    {"%%F", true},
    {"\xe4%Y", true},
    // later than C89, or unknown
    {"%F", false},
    {"%T", false},
    {"%e", false},
    {"%Ey", false},
    {"%Od", false},
    {"%Q", false},
    {"%-d", false},
    {"%5Y", false},
    {"%\xe4", false},
    {"%H%R", false},
    // unfinished
    {"%", false},
    {"50%", false},
    {"%#", false},
    {"%##c", false},
};

} // namespace

TEST(GenPortableTimeFormat, HasConversionsOfC89)
{
    for (FormatCase const &c : CASES) {
        std::string const narrow = c.format;
        EXPECT_EQ(gen_is_portable_time_format(c.format), c.is_portable) << c.format;
        std::wstring wide;
        for (char const byte : narrow)
            wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
        EXPECT_EQ(gen_is_portable_time_format(wide.c_str()), c.is_portable) << c.format;
    }
    EXPECT_FALSE(gen_is_portable_time_format(L"%\u0159")) << "its low byte is that of Y";
}

#ifdef _WIN32
namespace {

int l_calls = 0;

} // namespace

// In place of the functions of the runtime library, which might end the process.
extern "C" {
std::size_t count_strftime(char *, std::size_t, char const *, std::tm const *) asm("strftime");
std::size_t count_wcsftime(wchar_t *, std::size_t, wchar_t const *, std::tm const *) asm("wcsftime");

std::size_t count_strftime(char *, std::size_t, char const *, std::tm const *)
{
    ++l_calls;
    return 7;
}

std::size_t count_wcsftime(wchar_t *, std::size_t, wchar_t const *, std::tm const *)
{
    ++l_calls;
    return 7;
}
}

TEST(GenOsStrftime, PassesOnPortableFormatsAlone)
{
    std::tm const time = {};
    for (FormatCase const &c : CASES) {
        char text[8] = "former";
        wchar_t wide_text[8] = L"former";
        std::wstring const wide(c.format, c.format + std::char_traits<char>::length(c.format));
        l_calls = 0;
        EXPECT_EQ(gen_os_strftime(text, sizeof text, c.format, &time), c.is_portable ? 7U : 0U) << c.format;
        EXPECT_EQ(gen_os_wcsftime(wide_text, std::size(wide_text), wide.c_str(), &time), c.is_portable ? 7U : 0U)
            << c.format;
        EXPECT_EQ(l_calls, c.is_portable ? 2 : 0) << c.format;
        if (!c.is_portable) {
            EXPECT_STREQ(text, "") << c.format;
            EXPECT_EQ(std::wstring(wide_text), L"") << c.format;
        }
    }
}
#endif
