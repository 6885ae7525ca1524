// Changes of initialisation files that have the same result on every platform.
#ifndef TESTS_SUPPORT_INI_CASES_H
#define TESTS_SUPPORT_INI_CASES_H

#include <gtest/gtest.h>

#include <string>

struct IniCase
{
    char const *text;
    char const *section;
    char const *key;
    char const *value;
    char const *result;
};

// The results of the calls on both platforms, except for the line ends.
inline constexpr IniCase INI_CASES[] = {
    {"", "a", "x", "1", "[a]\nx=1\n"},
    {"", "a", "x", "", "[a]\nx=\n"},
    {"[a]\nx=1\n", "a", "x", "2", "[a]\nx=2\n"},
    {"[a]\nx=1\n", "a", "y", "2", "[a]\nx=1\ny=2\n"},
    {"[a]\nx=1\n", "b", "y", "2", "[a]\nx=1\n[b]\ny=2\n"},
    {"[a]\nx=1\n[b]\nx=1\n", "b", "x", "2", "[a]\nx=1\n[b]\nx=2\n"},
    {"[a]\nx=1\n[b]\nx=1\n", "a", "y", "2", "[a]\nx=1\ny=2\n[b]\nx=1\n"},
    // Case doesn't matter, and stays.
    {"[Sec]\nKey=1\n", "sEC", "kEY", "2", "[Sec]\nKey=2\n"},
    // Comments stay.
    {"; about\n[a]\n; x=0\nx=1\n", "a", "x", "2", "; about\n[a]\n; x=0\nx=2\n"},
    // Null removes.
    {"[a]\nx=1\ny=2\n", "a", "x", nullptr, "[a]\ny=2\n"},
    {"[a]\nx=1\n", "a", "y", nullptr, "[a]\nx=1\n"},
    {"[a]\nx=1\n", "b", "x", nullptr, "[a]\nx=1\n"},
    {"[a]\nx=1\n[b]\ny=2\n", "a", nullptr, nullptr, "[b]\ny=2\n"},
    {"[a]\nx=1\n[b]\ny=2\n", "B", nullptr, "1", "[a]\nx=1\n"},
    {"[a]\nx=1\n", "b", nullptr, nullptr, "[a]\nx=1\n"},
};

inline std::string shown(IniCase const &c)
{
    return testing::PrintToString(c.text) + ", " + c.section + ", " + testing::PrintToString(c.key) + ", " +
           testing::PrintToString(c.value);
}

#endif
