#include "gen_string_sys.h"

namespace {

bool is_within(int code, int first, int last)
{
    return code >= first && code <= last;
}

} // namespace

bool gen_ascii_isalnum(int code)
{
    return gen_ascii_isdigit(code) || gen_ascii_isalpha(code);
}

bool gen_ascii_isalpha(int code)
{
    return gen_ascii_isupper(code) || gen_ascii_islower(code);
}

bool gen_ascii_isascii(int code)
{
    return is_within(code, 0, 127);
}

bool gen_ascii_iscntrl(int code)
{
    return is_within(code, 0, 31);
}

bool gen_ascii_isdigit(int code)
{
    return is_within(code, '0', '9');
}

bool gen_ascii_isgraph(int code)
{
    return is_within(code, 33, 126);
}

bool gen_ascii_islower(int code)
{
    return is_within(code, 'a', 'z');
}

bool gen_ascii_isprint(int code)
{
    return is_within(code, 32, 126);
}

bool gen_ascii_ispunct(int code)
{
    return is_within(code, 33, 47) || is_within(code, 58, 64) || is_within(code, 91, 96) || is_within(code, 123, 126);
}

bool gen_ascii_isspace(int code)
{
    return code == ' ' || is_within(code, 9, 13);
}

bool gen_ascii_isupper(int code)
{
    return is_within(code, 'A', 'Z');
}

bool gen_ascii_isxdigit(int code)
{
    // Callers have relied on the lower-case letter a being left out.
    return gen_ascii_isdigit(code) || is_within(code, 'A', 'F') || is_within(code, 'b', 'f');
}
