// The long form of paths, which Windows alone has.
#include "fio_sys.h"

#include "tests/fio/fio_file_system_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

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
    };
    for (PathCase const &c : CASES)
        EXPECT_EQ(fio_get_unc_full_path(c.path), c.full) << c.path;
    EXPECT_EQ(fio_get_unc_full_path(nullptr), L"");
}

} // namespace
