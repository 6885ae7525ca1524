#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>

namespace {

TEST(TempDir, IsEmptyAndDiffersFromAnother)
{
    TempDir const first;
    TempDir const second;
    EXPECT_TRUE(std::filesystem::is_directory(first.path()));
    EXPECT_TRUE(std::filesystem::is_empty(first.path()));
    EXPECT_NE(first.path(), second.path());
}

TEST(TempDir, IsRemovedWithItsContent)
{
    std::filesystem::path path;
    try {
        TempDir const dir;
        path = dir.path();
        dir.write("a/b/c.txt", "content");
        throw std::runtime_error("out of the scope");
    } catch (std::runtime_error const &) {
    }
    EXPECT_NE(path, std::filesystem::path());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TempDir, TextHasForwardSlashesAndNoneAtTheEnd)
{
    TempDir const dir;
    EXPECT_EQ(dir.text().find('\\'), std::string::npos);
    EXPECT_NE(dir.text().back(), '/');
    EXPECT_EQ(dir.text("a/b"), dir.text() + "/a/b");
}

TEST(TempDir, KeepsTheBytesOfAFile)
{
    TempDir const dir;
    std::string const bytes("a\r\n\n\0\xff\x1a", 7);
    std::string const name = dir.write("new/file", bytes);
    EXPECT_EQ(name, dir.text("new/file"));
    EXPECT_EQ(dir.read("new/file"), bytes);
    dir.write("new/file", "b");
    EXPECT_EQ(dir.read("new/file"), "b");
    EXPECT_EQ(dir.read("missing"), "");
}

TEST(EntryNames, AreThoseOfFilesAndDirectoriesAtOneLevel)
{
    TempDir const dir;
    EXPECT_TRUE(entry_names(dir.path()).empty());
    dir.write("b", "");
    dir.write("a/c", "");
    EXPECT_EQ(entry_names(dir.path()), (std::set<std::string>{"a", "b"}));
}

TEST(CurrentDirectory, IsPutBackAtTheEndOfTheScope)
{
    std::filesystem::path const former = std::filesystem::current_path();
    TempDir const dir;
    {
        CurrentDirectory const current(dir.path());
        EXPECT_EQ(std::filesystem::current_path(), dir.path());
    }
    EXPECT_EQ(std::filesystem::current_path(), former);
}

} // namespace
