// What only Windows has: the long form of paths, names that mean devices, and names outside the code page.
#include "fio_sys.h"

#include "tests/fio/fio_file_system_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <list>
#include <string>
#include <vector>

#include <windows.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

std::wstring native(std::filesystem::path path)
{
    return path.make_preferred().wstring();
}

TEST_F(FioFileSystem, UncFullPathIsTheLongForm)
{
    CurrentDirectory const current(m_temp.path());
    std::wstring const here = L"\\\\?\\" + native(m_temp.path());
    EXPECT_EQ(fio_get_unc_full_path("a.v"), here + L"\\a.v");
    EXPECT_EQ(fio_get_unc_full_path("d/../e/./a.v"), here + L"\\e\\a.v");
    EXPECT_EQ(fio_get_unc_full_path(at("a.v").c_str()), here + L"\\a.v");

    struct PathCase
    {
        char const *path;
        wchar_t const *full;
    };
    constexpr PathCase CASES[] = {
        {"", L""},
        {"C:/a/b.v", L"\\\\?\\C:\\a\\b.v"},
        {"C:\\a\\..\\b.v", L"\\\\?\\C:\\b.v"},
        {"C:/", L"\\\\?\\C:\\"},
        {"C:/a//b/", L"\\\\?\\C:\\a\\b\\"},
        {"//host/share/a.v", L"\\\\?\\UNC\\host\\share\\a.v"},
        {"\\\\host\\share\\d\\..\\a.v", L"\\\\?\\UNC\\host\\share\\a.v"},
        {"\\\\?\\C:\\a.v", L"\\\\?\\C:\\a.v"},
        {"//?/C:/a.v", L"\\\\?\\C:\\a.v"},
        {"NUL", L"\\\\.\\NUL"},
        // A colon that doesn't follow a drive: part of no name.
        {"C:/a:b.v", L""},
        {"C:/a:b/c.v", L""},
        {"a/b:c", L""},
        {"//host/share/a:b", L""},
    };
    for (PathCase const &c : CASES)
        EXPECT_EQ(fio_get_unc_full_path(c.path), c.full) << c.path;
    EXPECT_EQ(fio_get_unc_full_path(nullptr), L"");
}

// Files are made by their long paths, in which a name never means a device.
void write_long(std::filesystem::path const &directory, wchar_t const *name)
{
    std::ofstream(std::filesystem::path(L"\\\\?\\" + native(directory) + L"\\" + name)) << "text";
}

TEST_F(FioFileScan, DevicesAreNoFiles)
{
    m_temp.write("d/x.v", "");
    for (wchar_t const *name : {L"aux.v", L"nul", L"com1.v"})
        write_long(m_temp.path() / "d", name);
    FIO_FIND search(at("d") + ';' + at("none"));
    for (char const *name : {"aux.v", "nul", "com1.v", "con", "LPT2.x.v"}) {
        EXPECT_FALSE(FIO_FILE_SYSTEM::exists(at(std::string("d/") + name))) << name;
        EXPECT_FALSE(FIO_FILE_SYSTEM::exists(name)) << name;
        EXPECT_EQ(search.find_first_relative_path(name).fullpath(), "") << name;
        EXPECT_THAT(names(std::string("d/") + name), IsEmpty()) << name;
    }
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("d/x.v"));
    EXPECT_THAT(names("d/*"), UnorderedElementsAre(".", "..", "x.v"));
    std::list<FIO_PATH> found;
    EXPECT_FALSE(search.find_all("aux", {"v"}, &found, /*absolute=*/true, /*descend=*/false));
    EXPECT_TRUE(search.find_all("*", {}, &found, /*absolute=*/true, /*descend=*/false));
    EXPECT_EQ(found.size(), 1U);
    FIO_FIND scan(at("d/*"));
    EXPECT_EQ(scan.find_first(), "x.v");
    EXPECT_EQ(scan.find_next(), "");
    for (wchar_t const *name : {L"aux.v", L"nul", L"com1.v"})
        std::filesystem::remove(L"\\\\?\\" + native(m_temp.path() / "d") + L"\\" + name);
}

TEST_F(FioFileScan, TakesPathsOfAnyLength)
{
    std::string deep = "d";
    ASSERT_TRUE(FIO_FILE_SYSTEM::create(at(deep)));
    while (at(deep).size() < 300) {
        deep += '/' + std::string(50, 'd');
        ASSERT_TRUE(FIO_FILE_SYSTEM::create(at(deep))) << deep;
    }
    std::fclose(FIO_FILE_SYSTEM::fopen((at(deep) + "/a.v").c_str(), "w"));
    std::fclose(FIO_FILE_SYSTEM::fopen((at(deep) + "/b").c_str(), "w"));
    EXPECT_THAT(names(deep + "/*.v"), ElementsAre("a.v"));
    EXPECT_THAT(names(deep + "/*.*"), UnorderedElementsAre(".", "..", "a.v", "b"));
    EXPECT_THAT(names(deep + "/a.v"), ElementsAre("a.v"));
    FIO_FIND scan(at(deep) + "/*.v");
    EXPECT_EQ(scan.find_first(), "a.v");
    FIO_FIND walk(at("d"));
    std::list<FIO_PATH> found;
    EXPECT_TRUE(walk.find_all("a", {"v"}, &found, /*absolute=*/true, /*descend=*/true));
}

// "a.v" is the name that the system would give for the second one in code page 1252.
TEST_F(FioFileScan, NamesOutsideTheCodePageAreNoResults)
{
    write_long(m_temp.path(), L"\u65e5\u672c.v");
    write_long(m_temp.path(), L"\u0101.v");
    std::vector<std::string> expected;
    if (GetACP() == CP_UTF8)
        expected = {"\xc4\x81.v", "\xe6\x97\xa5\xe6\x9c\xac.v"};
    EXPECT_THAT(names("*.v"), UnorderedElementsAreArray(expected));
    FIO_FIND search(at(""));
    std::list<FIO_PATH> found;
    EXPECT_EQ(search.find_all("*", {}, &found, /*absolute=*/false, /*descend=*/false), !expected.empty());
    for (std::string const &name : expected)
        EXPECT_TRUE(FIO_FILE_SYSTEM::exists(at("") + name)) << name;
}

// A colon would name a stream of the file, which no listing shows.
TEST_F(FioFileScan, ANameWithAColonIsNoFile)
{
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(at("mem_a:b.log").c_str(), "w"), nullptr);
    EXPECT_FALSE(FIO_FILE_SYSTEM::create(at("a:b")));
    EXPECT_FALSE(FIO_FILE_SYSTEM::exists(at("mem_a:b.log")));
    EXPECT_THAT(names("*"), UnorderedElementsAre(".", ".."));
}

} // namespace
