#include "gen/os/gen_os_text.h"

#include "gen/base/gen_time_format.h"

#include <ctype.h>
#include <mbstring.h>
#include <stdlib.h>
#include <time.h>
#include <wchar.h>
#include <wctype.h>

std::int64_t gen_os_atoi64(char const *text)
{
    return _atoi64(text);
}

int gen_os_wtoi(wchar_t const *text)
{
    return _wtoi(text);
}

long gen_os_wtol(wchar_t const *text)
{
    return _wtol(text);
}

int gen_os_isleadbyte(int code)
{
    return isleadbyte(code);
}

int gen_os_iswctype(unsigned short code, unsigned short type)
{
    return iswctype(code, type);
}

void gen_os_mbccpy(unsigned char *to, unsigned char const *from)
{
    _mbccpy(to, from);
}

std::uint64_t gen_os_mbclen(unsigned char const *text)
{
    return _mbclen(text);
}

std::uint64_t gen_os_mbstrlen(char const *text)
{
    return _mbstrlen(text);
}

std::uint64_t gen_os_strftime(char *to, std::uint64_t size, char const *format, std::tm const *time)
{
    if (gen_is_portable_time_format(format))
        return strftime(to, size, format, time);
    if (size != 0)
        *to = 0;
    return 0;
}

std::uint64_t gen_os_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, std::tm const *time)
{
    if (gen_is_portable_time_format(format))
        return wcsftime(to, size, format, time);
    if (size != 0)
        *to = 0;
    return 0;
}
