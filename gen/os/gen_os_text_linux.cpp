#include "gen/os/gen_os_text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>

namespace {

struct CharacterClass
{
    unsigned bit;
    int (*contains)(std::wint_t);
};

constexpr CharacterClass CHARACTER_CLASSES[] = {
    {0x001, std::iswupper}, {0x002, std::iswlower},  {0x004, std::iswdigit},
    {0x008, std::iswspace}, {0x010, std::iswpunct},  {0x020, std::iswcntrl},
    {0x040, std::iswblank}, {0x080, std::iswxdigit}, {0x100, std::iswalpha},
};

} // namespace

std::int64_t gen_os_atoi64(char const *text)
{
    return std::strtoll(text, nullptr, 10);
}

int gen_os_wtoi(wchar_t const *text)
{
    constexpr long SMALLEST = std::numeric_limits<int>::min();
    constexpr long LARGEST = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::wcstol(text, nullptr, 10), SMALLEST, LARGEST));
}

long gen_os_wtol(wchar_t const *text)
{
    return std::wcstol(text, nullptr, 10);
}

int gen_os_isleadbyte(int /*code*/)
{
    return 0;
}

int gen_os_iswctype(unsigned short code, unsigned short type)
{
    // std::wctype() gives classes that are pointers here, which don't fit into `type`.
    unsigned classes = 0;
    for (CharacterClass const &character_class : CHARACTER_CLASSES) {
        if ((type & character_class.bit) != 0 && character_class.contains(code) != 0)
            classes |= character_class.bit;
    }
    return static_cast<int>(classes);
}

void gen_os_mbccpy(unsigned char *to, unsigned char const *from)
{
    *to = *from;
}

std::uint64_t gen_os_mbclen(unsigned char const * /*text*/)
{
    return 1;
}

std::uint64_t gen_os_mbstrlen(char const *text)
{
    return std::strlen(text);
}

std::uint64_t gen_os_strftime(char *to, std::uint64_t size, char const *format, std::tm const *time)
{
    return std::strftime(to, size, format, time);
}

std::uint64_t gen_os_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, std::tm const *time)
{
    return std::wcsftime(to, size, format, time);
}
