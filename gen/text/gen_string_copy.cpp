#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>
#include <cstring>

std::string gen_repeat_str(std::string const &text, int num_reps)
{
    GEN_ASSERT(num_reps >= 0, "num_reps >= 0");
    std::string result;
    result.reserve(text.size() * static_cast<std::size_t>(num_reps));
    for (int i = 0; i < num_reps && !text.empty(); ++i)
        result += text;
    return result;
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
