#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os.h"

#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <istream>

namespace {

constexpr char const *BLANK = " ";
constexpr char const *WHITE_SPACE = " \t\n\r";

std::string trimmed(std::string const &text, char const *characters)
{
    std::size_t const first = text.find_first_not_of(characters);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

// What a backslash and this character stand for.
char decoded(char c)
{
    switch (c) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c;
    }
}

void append_as_expression(std::string &expression, char c)
{
    if (c == '?') {
        expression += '.';
    } else if (gen_ascii_isalpha(c)) {
        expression += {'[', gen_ascii_tolower(c), gen_ascii_toupper(c), ']'};
    } else {
        if (c == '*')
            expression += '.';
        else if (std::strchr("().[\\]|", c) != nullptr && c != '\0')
            expression += '\\';
        expression += c;
    }
}

struct Substitution
{
    char from;
    char to;
};

// The letters that stand for characters without a place in an identifier.
constexpr Substitution SUBSTITUTIONS[] = {
    {' ', '_'}, {'!', 'E'}, {'#', 'F'}, {'$', 'R'},  {'%', 'C'}, {'&', 'K'}, {'\'', 'T'}, {'+', 'M'},
    {'.', 'L'}, {'/', 'I'}, {':', 'U'}, {'<', 'A'},  {'=', 'D'}, {'(', 'Q'}, {')', 'P'},  {'-', 'J'},
    {'>', 'B'}, {'?', 'G'}, {'[', 'O'}, {'\\', 'H'}, {']', 'N'}, {'|', 'S'},
};

// What takes the place of each byte in a name that is hashed.
constexpr std::array<unsigned char, 256> make_name_bytes()
{
    std::array<unsigned char, 256> bytes{};
    for (std::size_t byte = 0; byte < bytes.size(); ++byte)
        bytes[byte] = static_cast<unsigned char>(byte);
    for (Substitution const &substitution : SUBSTITUTIONS)
        bytes[static_cast<unsigned char>(substitution.from)] = static_cast<unsigned char>(substitution.to);
    return bytes;
}
constexpr std::array<unsigned char, 256> NAME_BYTES = make_name_bytes();

// The library's own polynomial, lowest bit first.
constexpr std::uint32_t HASH_POLYNOMIAL = 0x48728408;

// What eight steps of the hash make of each low byte.
constexpr std::array<std::uint32_t, 256> make_hash_steps()
{
    std::array<std::uint32_t, 256> steps{};
    for (std::uint32_t byte = 0; byte < steps.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = value >> 1 ^ ((value & 1) != 0 ? HASH_POLYNOMIAL : 0);
        steps[byte] = value;
    }
    return steps;
}
constexpr std::array<std::uint32_t, 256> HASH_STEPS = make_hash_steps();

// The largest prime below 2^k, for k from 4 to 32.
constexpr std::uint64_t HASH_SIZES[] = {
    13,       31,       61,       127,       251,       509,       1021,       2039,       4093,       8191,
    16381,    32749,    65521,    131071,    262139,    524287,    1048573,    2097143,    4194301,    8388593,
    16777213, 33554393, 67108859, 134217689, 268435399, 536870909, 1073741789, 2147483647, 4294967291,
};

} // namespace

std::string gen_remove_leading_and_trailing_spaces(std::string const &text)
{
    return trimmed(text, BLANK);
}

void gen_remove_leading_and_trailing_spaces(std::string const &text, std::string *out)
{
    if (out != nullptr)
        *out = trimmed(text, BLANK);
}

std::string gen_remove_leading_and_trailing_white_spaces(std::string const &text)
{
    return trimmed(text, WHITE_SPACE);
}

void gen_remove_leading_and_trailing_white_spaces(std::string const &text, std::string *out)
{
    if (out != nullptr)
        *out = trimmed(text, WHITE_SPACE);
}

std::string gen_repeat_str(std::string const &text, int num_reps)
{
    GEN_ASSERT(num_reps >= 0, "num_reps >= 0");
    std::string result;
    result.reserve(text.size() * static_cast<std::size_t>(num_reps));
    for (int i = 0; i < num_reps && !text.empty(); ++i)
        result += text;
    return result;
}

void gen_process_escaped_quotes(std::string &text)
{
    bool is_in_quotes = false;
    std::size_t write = 0;
    for (std::size_t read = 0; read < text.size(); ++read) {
        if (text[read] == '\\' && !is_in_quotes) {
            ++read;
            if (read < text.size())
                text[write++] = decoded(text[read]);
            continue;
        }
        if (text[read] == '"')
            is_in_quotes = !is_in_quotes;
        text[write++] = text[read];
    }
    text.resize(write);
}

void gen_process_escaped_quotes(char *text)
{
    if (text == nullptr)
        return;
    int const length = boost::numeric_cast<int>(std::strlen(text));
    std::string processed(text, static_cast<std::size_t>(length));
    gen_process_escaped_quotes(processed);
    std::memcpy(text, processed.c_str(), processed.size() + 1);
}

void gen_wildcard_to_reg_expr(std::string *wildcard, bool anchor)
{
    GEN_ASSERT(wildcard != nullptr, "wildcard != 0");
    std::string expression;
    expression.reserve(wildcard->size() * 4 + 2); // a letter takes four characters
    if (anchor)
        expression += '^';
    for (char c : *wildcard)
        append_as_expression(expression, c);
    if (anchor)
        expression += '$';
    *wildcard = std::move(expression);
}

bool gen_is_empty_string(char const *text)
{
    return text == nullptr || *text == '\0';
}

int gen_strlen(char const *text)
{
    return text == nullptr ? 0 : static_cast<int>(std::strlen(text));
}

char *gen_strcpy(char *dst, char const *src)
{
    if (src == nullptr)
        *dst = '\0';
    else if (dst != nullptr)
        std::memcpy(dst, src, std::strlen(src) + 1);
    return dst;
}

char *gen_strncpy(char *dst, char const *src, std::uint64_t count)
{
    if (src == nullptr) {
        *dst = '\0';
        return dst;
    }
    if (dst == nullptr)
        return dst;
    std::uint64_t length = 0;
    for (; length < count && src[length] != '\0'; ++length)
        dst[length] = src[length];
    dst[length] = '\0';
    std::uint64_t const left_over = count - length;
    if (left_over >= 2)
        std::memset(dst + length, 0, left_over - 1);
    return dst;
}

char *gen_strcat(char *dst, char const *src)
{
    if (dst != nullptr && src != nullptr)
        std::memcpy(dst + std::strlen(dst), src, std::strlen(src) + 1);
    return dst;
}

std::uint64_t gen_strlcpy(char *dst, char const *src, std::uint64_t size)
{
    std::uint64_t const length = std::strlen(src);
    if (size == 0)
        return length;
    std::uint64_t const copied = std::min(length, size - 1);
    std::memcpy(dst, src, copied);
    dst[copied] = '\0';
    return length;
}

std::uint64_t gen_strlcat(char *dst, char const *src, std::uint64_t size)
{
    std::uint64_t const length = std::strlen(dst);
    if (length >= size)
        return length + std::strlen(src);
    return length + gen_strlcpy(dst + length, src, size - length);
}

char *gen_strrev(char *text)
{
    if (text != nullptr)
        std::reverse(text, text + std::strlen(text));
    return text;
}

std::uint32_t gen_crc_string_to_dword(char *name)
{
    std::size_t length = std::strlen(name);
    while (length > 0 && name[length - 1] == ' ')
        --length;
    name[length] = '\0';
    if (length == 0)
        return 0;
    std::uint32_t value = 0xffffffff;
    for (char *c = name; *c != '\0'; ++c) {
        unsigned char const byte = NAME_BYTES[static_cast<unsigned char>(*c)];
        *c = static_cast<char>(byte);
        value = value >> 8 ^ HASH_STEPS[(value ^ byte) & 0xff];
    }
    return value;
}

std::uint64_t gen_hash_next_size(std::uint64_t n)
{
    std::uint64_t const *const rval = std::lower_bound(std::begin(HASH_SIZES), std::end(HASH_SIZES), n);
    GEN_ASSERT(rval != std::end(HASH_SIZES), "rval != 0");
    return *rval;
}

bool gen_getline(std::istream *in, std::string *line, char delimiter)
{
    if (!in->good()) {
        line->clear();
        return false;
    }
    std::getline(*in, *line, delimiter);
    return true;
}

int gen_writeprivateprofilestring(char const *section, char const *key, char const *value, char const *file)
{
    return gen_os_write_private_profile_string(section, key, value, file);
}
