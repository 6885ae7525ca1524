#include "gen_localization_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os_text.h"
#include "gen_string_sys.h"

#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <cwctype>
#include <string>

namespace {

constexpr char const *C_LOCALE = "C";
constexpr int MAX_BYTE = 255;

// Returns the result of `call`, made with one category of the process's locale forced to "C".
template <typename Function>
auto with_c_locale(int category, Function call)
{
    // A copy: the next call of setlocale overwrites the text.
    std::string const name = std::setlocale(category, nullptr);
    std::setlocale(category, C_LOCALE);
    auto const result = call();
    std::setlocale(category, name.c_str());
    return result;
}

// The result of a classifier, with LC_CTYPE forced already. The runtime library looks codes up in a table without a
// check: codes other than bytes and EOF may lie outside it.
int class_of(int (*classifier)(int), int code)
{
    return code >= EOF && code <= MAX_BYTE ? classifier(code) : 0;
}

int classify(int (*classifier)(int), int code)
{
    return with_c_locale(LC_CTYPE, [=] { return class_of(classifier, code); });
}

// A code that is not a byte is returned unchanged, even EOF, which not every runtime library accepts.
int fold(int (*folder)(int), int code)
{
    return with_c_locale(LC_CTYPE, [=] { return code >= 0 && code <= MAX_BYTE ? folder(code) : code; });
}

int classify_wide(int (*classifier)(std::wint_t), unsigned short code)
{
    return with_c_locale(LC_CTYPE, [=] { return classifier(code); });
}

int fold_wide(std::wint_t (*folder)(std::wint_t), unsigned short code)
{
    return with_c_locale(LC_CTYPE, [=] { return static_cast<int>(folder(code)); });
}

// Whether a character may be part of a name in C; `classifier` decides on characters other than the underscore.
int classify_symbol(int (*classifier)(int), int code)
{
    return with_c_locale(LC_CTYPE, [=] { return code == '_' || class_of(classifier, code) != 0 ? 1 : 0; });
}

} // namespace

double gen_local_atof(char const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::atof(text); }); // NOLINT(cert-err34-c)
}

int gen_local_atoi(char const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::atoi(text); }); // NOLINT(cert-err34-c)
}

long gen_local_atol(char const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::atol(text); }); // NOLINT(cert-err34-c)
}

std::int64_t gen_local_atosqword(char const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return gen_os_atoi64(text); });
}

double gen_local_strtod(char const *text, char **end)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::strtod(text, end); });
}

long gen_local_strtol(char const *text, char **end, int base)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::strtol(text, end, base); });
}

unsigned long gen_local_strtoul(char const *text, char **end, int base)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::strtoul(text, end, base); });
}

double gen_local_wcstod(wchar_t const *text, wchar_t **end)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::wcstod(text, end); });
}

long gen_local_wcstol(wchar_t const *text, wchar_t **end, int base)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::wcstol(text, end, base); });
}

unsigned long gen_local_wcstoul(wchar_t const *text, wchar_t **end, int base)
{
    return with_c_locale(LC_NUMERIC, [=] { return std::wcstoul(text, end, base); });
}

int gen_local_wtoi(wchar_t const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return gen_os_wtoi(text); });
}

long gen_local_wtol(wchar_t const *text)
{
    return with_c_locale(LC_NUMERIC, [=] { return gen_os_wtol(text); });
}

int gen_local_isdigit(int code)
{
    return code >= '0' && code <= '9' ? 1 : 0;
}

int gen_local_isalnum(int code)
{
    return classify(std::isalnum, code);
}

int gen_local_isalpha(int code)
{
    return classify(std::isalpha, code);
}

int gen_local_iscntrl(int code)
{
    return classify(std::iscntrl, code);
}

int gen_local_isgraph(int code)
{
    return classify(std::isgraph, code);
}

int gen_local_islower(int code)
{
    return classify(std::islower, code);
}

int gen_local_isprint(int code)
{
    return classify(std::isprint, code);
}

int gen_local_ispunct(int code)
{
    return classify(std::ispunct, code);
}

int gen_local_isspace(int code)
{
    return classify(std::isspace, code);
}

int gen_local_isupper(int code)
{
    return classify(std::isupper, code);
}

int gen_local_isxdigit(int code)
{
    return classify(std::isxdigit, code);
}

int gen_local_isleadbyte(int code)
{
    return classify(gen_os_isleadbyte, code);
}

int gen_local_isascii(int code)
{
    return with_c_locale(LC_CTYPE, [=] { return static_cast<unsigned>(code) < 128 ? 1 : 0; });
}

int gen_local_iscsym(int code)
{
    return classify_symbol(std::isalnum, code);
}

int gen_local_iscsymf(int code)
{
    return classify_symbol(std::isalpha, code);
}

int gen_local_tolower(int code)
{
    return fold(std::tolower, code);
}

int gen_local_toupper(int code)
{
    return fold(std::toupper, code);
}

int gen_local_iswalnum(unsigned short code)
{
    return classify_wide(std::iswalnum, code);
}

int gen_local_iswalpha(unsigned short code)
{
    return classify_wide(std::iswalpha, code);
}

int gen_local_iswcntrl(unsigned short code)
{
    return classify_wide(std::iswcntrl, code);
}

int gen_local_iswdigit(unsigned short code)
{
    return classify_wide(std::iswdigit, code);
}

int gen_local_iswgraph(unsigned short code)
{
    return classify_wide(std::iswgraph, code);
}

int gen_local_iswlower(unsigned short code)
{
    return classify_wide(std::iswlower, code);
}

int gen_local_iswprint(unsigned short code)
{
    return classify_wide(std::iswprint, code);
}

int gen_local_iswpunct(unsigned short code)
{
    return classify_wide(std::iswpunct, code);
}

int gen_local_iswspace(unsigned short code)
{
    return classify_wide(std::iswspace, code);
}

int gen_local_iswupper(unsigned short code)
{
    return classify_wide(std::iswupper, code);
}

int gen_local_iswxdigit(unsigned short code)
{
    return classify_wide(std::iswxdigit, code);
}

int gen_local_iswascii(unsigned short code)
{
    return with_c_locale(LC_CTYPE, [=] { return code < 128 ? 1 : 0; });
}

int gen_local_towlower(unsigned short code)
{
    return fold_wide(std::towlower, code);
}

int gen_local_towupper(unsigned short code)
{
    return fold_wide(std::towupper, code);
}

int gen_local_iswctype(unsigned short code, unsigned short type)
{
    return with_c_locale(LC_CTYPE, [=] { return gen_os_iswctype(code, type); });
}

char *gen_local_strlwr(char *text)
{
    return with_c_locale(LC_CTYPE, [=] { return gen_strlwr(text); });
}

char *gen_local_strupr(char *text)
{
    return with_c_locale(LC_CTYPE, [=] { return gen_strupr(text); });
}

void gen_local_mbccpy(unsigned char *to, unsigned char const *from)
{
    with_c_locale(LC_CTYPE, [=] {
        gen_os_mbccpy(to, from);
        return to;
    });
}

std::uint64_t gen_local_mbclen(unsigned char const *text)
{
    return with_c_locale(LC_CTYPE, [=] { return gen_os_mbclen(text); });
}

std::uint64_t gen_local_mbstrlen(char const *text)
{
    return with_c_locale(LC_CTYPE, [=] { return gen_os_mbstrlen(text); });
}

int gen_local_mblen(char const *text, std::uint64_t size_bytes)
{
    return with_c_locale(LC_CTYPE, [=] { return std::mblen(text, size_bytes); });
}

std::uint64_t gen_local_mbstowcs(wchar_t *to, char const *text, std::uint64_t size)
{
    return with_c_locale(LC_CTYPE, [=] { return std::mbstowcs(to, text, size); });
}

int gen_local_mbtowc(wchar_t *to, char const *text, std::uint64_t size_bytes)
{
    return with_c_locale(LC_CTYPE, [=] { return std::mbtowc(to, text, size_bytes); });
}

std::uint64_t gen_local_wcstombs(char *to, wchar_t const *text, std::uint64_t size_bytes)
{
    return with_c_locale(LC_CTYPE, [=] { return std::wcstombs(to, text, size_bytes); });
}

int gen_local_wctomb(char *to, wchar_t character)
{
    return with_c_locale(LC_CTYPE, [=] { return std::wctomb(to, character); });
}

std::uint64_t gen_local_strftime(char *to, std::uint64_t size, char const *format, tm const *time)
{
    return with_c_locale(LC_TIME, [=] { return gen_os_strftime(to, size, format, time); });
}

std::uint64_t gen_local_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, tm const *time)
{
    return with_c_locale(LC_TIME, [=] { return gen_os_wcsftime(to, size, format, time); });
}

void gen_local_tm_struct(tm *timeptr)
{
    GEN_ASSERT(timeptr != nullptr, "timeptr != NULL");
    tm const *const local = with_c_locale(LC_TIME, [] {
        std::time_t const seconds = std::time(nullptr);
        return std::localtime(&seconds);
    });
    if (local != nullptr)
        *timeptr = *local;
}
