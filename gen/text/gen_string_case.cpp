#include "gen_string_sys.h"

namespace {

// The difference between the codes of a lower-case and an upper-case letter.
constexpr int CASE_DISTANCE = 'a' - 'A';

} // namespace

char gen_ascii_tolower(int code)
{
    return static_cast<char>(code >= 'A' && code <= 'Z' ? code + CASE_DISTANCE : code);
}

char gen_ascii_toupper(int code)
{
    return static_cast<char>(code >= 'a' && code <= 'z' ? code - CASE_DISTANCE : code);
}

void gen_tolower(char *text)
{
    gen_strlwr(text);
}

void gen_toupper(char *text)
{
    gen_strupr(text);
}

void gen_ascii_tolower(char *text)
{
    gen_tolower(text);
}

void gen_ascii_toupper(char *text)
{
    gen_toupper(text);
}

void gen_tolower(std::string &text)
{
    for (char &letter : text)
        letter = gen_ascii_tolower(letter);
}

void gen_toupper(std::string &text)
{
    for (char &letter : text)
        letter = gen_ascii_toupper(letter);
}

void gen_ascii_tolower(std::string &text)
{
    gen_tolower(text);
}

void gen_ascii_toupper(std::string &text)
{
    gen_toupper(text);
}

char *gen_strlwr(char *text)
{
    if (text == nullptr)
        return nullptr;
    for (char *letter = text; *letter != '\0'; ++letter)
        *letter = gen_ascii_tolower(*letter);
    return text;
}

char *gen_strupr(char *text)
{
    if (text == nullptr)
        return nullptr;
    for (char *letter = text; *letter != '\0'; ++letter)
        *letter = gen_ascii_toupper(*letter);
    return text;
}
