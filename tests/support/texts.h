// Helpers that split, build and display texts.
#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// A text in quotes, with what isn't printable as escapes.
inline std::string shown(std::string const &text)
{
    return testing::PrintToString(text);
}

/// The text with its terminator and not a byte more, so that a sanitizer sees any step too far.
inline std::vector<char> terminated(std::string const &text)
{
    return {text.c_str(), text.c_str() + text.size() + 1};
}

inline std::string repeated(std::string const &text, std::size_t count)
{
    std::string result;
    result.reserve(count * text.size());
    while (count-- > 0)
        result += text;
    return result;
}

/// How often a part occurs, without overlaps. The part is not empty.
inline std::size_t count_of(std::string const &text, std::string const &part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// The lines of a text without their ends. A last line without an end gets " (without a line end)".
inline std::vector<std::string> lines_of(std::string const &text, std::string const &line_end = "\n")
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(line_end, start)) != std::string::npos; start = end + line_end.size())
        lines.push_back(text.substr(start, end - start));
    if (start < text.size())
        lines.push_back(text.substr(start) + " (without a line end)");
    return lines;
}

inline std::string without_carriage_returns(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

#endif
