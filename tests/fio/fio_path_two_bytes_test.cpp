// Paths in a code page in which a character may have two bytes (932, by a fake), the second of which may be 0x5c, the
// code of "\". In the tables "\x83\x5c" and "\x83\x41" are one character each.
#include "fio_sys.h"

#include "sys/sys_path_text.h"
#include "tests/support/fio_os_fake.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TwoByteCharacters, AreToldFromSeparators)
{
    struct ByteCase
    {
        char const *text;
        std::size_t at;
        bool is_trail_byte;
    };
    constexpr ByteCase CASES[] = {
        {"\\", 0, false},
        {"a\\", 1, false},
        {"\x83\\", 1, true},
        {"\x83\x83\\", 2, false}, // one character of two bytes, and a separator
        {"\x83\x83\x83\\", 3, true},
        {"\x83\\\\", 2, false},
        {"\xb1\\", 1, false}, // a character of one byte
        {"\x83\xb1\\", 2, false},
        {"\x83/\\", 2, false}, // "/" is no second byte of any character
    };
    for (ByteCase const &c : CASES) {
        EXPECT_EQ(sys_is_trail_byte(c.text, c.at), c.is_trail_byte) << c.text;
        EXPECT_EQ(sys_is_separator(c.text, c.at), !c.is_trail_byte) << c.text;
    }
    EXPECT_FALSE(sys_ends_in_separator(""));
    EXPECT_FALSE(sys_ends_in_separator("a\x83\\"));
    EXPECT_TRUE(sys_ends_in_separator("a\x83\\\\"));
}

TEST(TwoByteCharacters, StayWholeInPaths)
{
    struct PathCase
    {
        char const *text;
        char const *fullpath;
        char const *directory;
        char const *base;
        char const *extension;
        int levels;
    };
    constexpr PathCase CASES[] = {
        {"\x83\x5c.v", "\x83\x5c.v", "", "\x83\x5c", "v", 0},
        {"c:\\\x83\x5c\\\x83\x5c.v", "c:/\x83\x5c/\x83\x5c.v", "c:/\x83\x5c/", "\x83\x5c", "v", 1},
        {"\x83\x5c\\\\\x83\x5c\x83\x5c", "\x83\x5c/\x83\x5c\x83\x5c", "\x83\x5c/", "\x83\x5c\x83\x5c", "", 1},
        {"\x83\x5c/", "\x83\x5c/", "\x83\x5c/", "", "", 1},
        {"//\x83\x5c/a", "//\x83\x5c/a", "//\x83\x5c/", "a", "", 0},
        {"\\\\h\x83\x5c\\a", "//h\x83\x5c/a", "//h\x83\x5c/", "a", "", 0},
    };
    for (PathCase const &c : CASES) {
        FIO_PATH path(c.text);
        EXPECT_EQ(path.fullpath(), c.fullpath) << c.text;
        EXPECT_EQ(path.full_directory(), c.directory) << c.text;
        EXPECT_EQ(path.base(), c.base) << c.text;
        EXPECT_EQ(path.extension(), c.extension) << c.text;
        EXPECT_EQ(path.levels(), c.levels) << c.text;
        path.path_separator('\\');
        EXPECT_EQ(path.levels(), c.levels) << c.text << " with back slashes";
        EXPECT_EQ(path.full_directory().size(), std::string(c.directory).size()) << c.text << " with back slashes";
        path.path_separator('/');
        EXPECT_EQ(path.fullpath(), c.fullpath) << c.text << " and back again";
    }
}

TEST(TwoByteCharacters, StayWholeInChangedPaths)
{
    EXPECT_EQ(FIO_PATH("c:/\x83\x5c").cd("a").fullpath(), "c:/\x83\x5c/a/");
    EXPECT_EQ(FIO_PATH("c:/a/\x83\x5c").cd("..").fullpath(), "c:/a/");
    EXPECT_EQ(FIO_PATH("c:/a").cd("\x83\x5c").fullpath(), "c:/a/\x83\x5c/");
    EXPECT_EQ(FIO_PATH("a.v").directory("\x83\x5c").fullpath(), "\x83\x5c/a.v");
    EXPECT_EQ(FIO_PATH("a/b.v").base("\x83\x5c").fullpath(), "a/\x83\x5c.v");
    EXPECT_EQ(FIO_PATH("a/b").filename("\x83\x5c\\\x83\x5c").fullpath(), "a/\x83\x5c/\x83\x5c");
    EXPECT_EQ(FIO_PATH("a.v").become_absolute("c:/\x83\x5c").fullpath(), "c:/\x83\x5c/a.v");
    EXPECT_EQ(FIO_PATH("a/../\x83\x5c.").become_simplified().fullpath(), "\x83\x5c.");
    EXPECT_EQ(FIO_PATH("\x83\x5c/.\\\x83\x5c").become_simplified().fullpath(), "\x83\x5c/\x83\x5c");
}

TEST(TwoByteCharacters, StayWholeInSearches)
{
    fio_fake().entries = {{"/d/\x83\x5c/a.v", false}, {"/d/\x83\x5c.v", false}};
    FIO_FIND find("/none;/d/\x83\x5c;/d");
    EXPECT_EQ(find.find_first_relative_path("a.v").fullpath(), "/d/\x83\x5c/a.v");
    EXPECT_EQ(find.find_first_relative_path("\x83\x5c.v").fullpath(), "/d/\x83\x5c.v");
}

TEST(TwoByteCharacters, KeepTheirSecondByteInLowerCase)
{
    std::string text = "AZaz@[\x83\x41\x83\x5a"
                       "A\xb1"
                       "A";
    sys_lower_letters(text);
    EXPECT_EQ(text, "azaz@[\x83\x41\x83\x5a"
                    "a\xb1"
                    "a");
}

} // namespace
