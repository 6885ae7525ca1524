// Which of the two platforms a test runs on, for expectations that differ between them.
#ifndef TESTS_SUPPORT_PLATFORM_H
#define TESTS_SUPPORT_PLATFORM_H

#include <string>

#ifdef _WIN32
constexpr bool ON_WINDOWS = true;
#else
constexpr bool ON_WINDOWS = false;
#endif

/// The bytes of a file to which `text` was written in text mode.
inline std::string in_text_mode(std::string const &text)
{
    std::string bytes;
    for (char const c : text) {
        if (ON_WINDOWS && c == '\n')
            bytes += '\r';
        bytes += c;
    }
    return bytes;
}

#endif
