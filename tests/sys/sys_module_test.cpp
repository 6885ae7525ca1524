#include "sys/sys_module.h"

#include "tests/support/own_executable.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <locale>
#include <string>
#include <string_view>

namespace {

struct FileNameCase
{
    char const *path;
    char const *name;
};
constexpr FileNameCase FILE_NAME_CASES[] = {
    {"/a/b/libx.so", "libx.so"}, {"libx.so", "libx.so"}, {"/libx.so", "libx.so"}, {"/a/", ""}, {"", ""}, {"/", ""},
};

TEST(SysFileName, IsTheTextAfterTheLastSlash)
{
    for (FileNameCase const &c : FILE_NAME_CASES)
        EXPECT_EQ(sys_file_name(c.path), c.name) << c.path;
}

struct VersionCase
{
    char const *name;
    char const *text;
    bool is_version;
};
constexpr VersionCase VERSION_CASES[] = {
    {"libx.so", "libx.so.1", true},
    {"libx.so", "libx.so.1.20.3", true},
    {"libx.so.1", "libx.so.1.2", true},
    {"libx.so", "libx.so", false},
    {"libx.so", "libx.so.", false},
    {"libx.so", "libx.so.old", false},
    {"libx.so", "libx.so.1a", false},
    {"libx.so", "libx.so1", false},
    {"libx.so", "liby.so.1", false},
    {"libx.so.1", "libx.so.12", false},
    {"libx.so", "", false},
    {"", ".1", true},
};

TEST(SysIsVersionOf, TakesAPointAndThenDigitsAndPoints)
{
    for (VersionCase const &c : VERSION_CASES)
        EXPECT_EQ(sys_is_version_of(c.name, c.text), c.is_version) << c.name << " and " << c.text;
}

struct NameCase
{
    char const *asked;
    char const *loaded;
    bool is_named;
};

constexpr NameCase NAME_CASES[] = {
    {"libx.so", "/a/libx.so", true},
    {"libx.so", "libx.so", true},
    {"libx.so", "/a/liby.so", false},
    {"libx.so", "/a/mylibx.so", false},
    {"libx.so", "/libx.so/y", false},
    // A name that ends in ".so" means every version.
    {"libx.so", "/a/libx.so.1", true},
    {"libx.so", "/a/libx.so.1.20.3", true},
    {"libx.so", "/a/libx.so.", false},
    {"libx.so", "/a/libx.so.old", false},
    {"libx.so", "/a/libx.so.1a", false},
    {"libx.so", "/a/libx.so1", false},
    // Any other name means itself.
    {"libx", "/a/libx.so", false},
    {"libx", "/a/libx.1", false},
    {"libx.so.1", "/a/libx.so.1", true},
    {"libx.so.1", "/a/libx.so.1.2", false},
    {"libx.so.1.2", "/a/libx.so.1", false},
    {".so", "/a/.so.1", false},
    // A name with a directory is compared whole.
    {"/a/libx.so", "/a/libx.so", true},
    {"/a/libx.so", "/a/libx.so.1", true},
    {"/b/libx.so", "/a/libx.so", false},
    // The process itself has an empty name in the loader's list.
    {"", "", false},
    {"libx.so", "", false},
};

TEST(SysLibraryNames, ComparesFileNamesWithVersions)
{
    for (NameCase const &c : NAME_CASES)
        EXPECT_EQ(sys_library_names(c.asked, c.loaded), c.is_named) << c.asked << " and " << c.loaded;
}

TEST(SysFindLibrary, GivesThePathFromWhichALibraryWasLoaded)
{
    std::string path;
    ASSERT_TRUE(sys_find_library(ON_WINDOWS ? "libstdc++-6.dll" : "libstdc++.so", path));
    EXPECT_TRUE(std::filesystem::exists(path)) << path;
    EXPECT_EQ(std::filesystem::path(path).filename().string().rfind("libstdc++", 0), 0U) << path;
    // It is found by that path too.
    EXPECT_TRUE(sys_is_library_loaded(path.c_str())) << path;
    std::string same;
    EXPECT_TRUE(sys_find_library(path.c_str(), same));
    EXPECT_EQ(same, path);
}

TEST(SysFindLibrary, TakesTheNameOfTheFileToWhichAVersionLinkLeads)
{
    // On Linux the loader finds libstdc++.so.6, a link to a file with a longer version.
    std::string path;
    ASSERT_TRUE(sys_find_library(ON_WINDOWS ? "libstdc++-6.dll" : "libstdc++.so.6", path));
    std::string const file = std::filesystem::canonical(path).filename().string();
    EXPECT_TRUE(ON_WINDOWS || file.size() > std::string("libstdc++.so.6").size()) << file;
    std::string same;
    EXPECT_TRUE(sys_find_library(file.c_str(), same)) << file;
    // Links are not resolved in the result.
    EXPECT_EQ(same, path);
}

TEST(SysFindLibrary, LeavesThePathAloneIfTheLibraryIsNotLoaded)
{
    for (std::string const &name :
         {std::string(), std::string("no_such_library"), std::string("libstdc++.so.9999"), std::string("/libstdc++.so"),
          std::string("libstdc++-6.dll.1"), std::string(100000, 'x')}) {
        std::string path = "before";
        EXPECT_FALSE(sys_find_library(name.c_str(), path)) << name.substr(0, 40);
        EXPECT_EQ(path, "before") << name.substr(0, 40);
        EXPECT_FALSE(sys_is_library_loaded(name.c_str())) << name.substr(0, 40);
    }
}

TEST(SysFindModule, NamesTheExecutableForAFunctionOfIt)
{
    auto const address = reinterpret_cast<std::uintptr_t>(&own_executable);
    SYS_MODULE module;
    ASSERT_TRUE(sys_find_module(address, module));
    EXPECT_EQ(module.name, own_executable().filename().string());
    EXPECT_LT(module.begin, address);
}

TEST(SysFindModule, NamesALibraryByItsFileName)
{
    // An object that the standard library itself holds.
    auto const *const facet = &std::use_facet<std::ctype<char>>(std::locale::classic());
    SYS_MODULE module;
    ASSERT_TRUE(sys_find_module(reinterpret_cast<std::uintptr_t>(facet), module));
    EXPECT_EQ(std::string(module.name).rfind("libstdc++", 0), 0U) << module.name;
    // The beginning belongs to the module itself.
    SYS_MODULE same;
    ASSERT_TRUE(sys_find_module(module.begin, same));
    EXPECT_STREQ(same.name, module.name);
    EXPECT_EQ(same.begin, module.begin);
}

TEST(SysFindModule, BeginsWithTheHeaderOfTheModule)
{
    auto const *const facet = &std::use_facet<std::ctype<char>>(std::locale::classic());
    for (std::uintptr_t const address :
         {reinterpret_cast<std::uintptr_t>(&own_executable), reinterpret_cast<std::uintptr_t>(facet)}) {
        SYS_MODULE module;
        ASSERT_TRUE(sys_find_module(address, module));
        std::string_view const magic = ON_WINDOWS ? "MZ"
                                                  : "\x7f"
                                                    "ELF";
        EXPECT_EQ(std::string_view(reinterpret_cast<char const *>(module.begin), magic.size()), magic) << module.name;
    }
}

TEST(SysFindModule, LeavesTheModuleAloneForAnAddressInNone)
{
    int on_the_stack = 0;
    for (std::uintptr_t const address : {std::uintptr_t{0}, reinterpret_cast<std::uintptr_t>(&on_the_stack)}) {
        SYS_MODULE module = {"before", 4711};
        EXPECT_FALSE(sys_find_module(address, module)) << address;
        EXPECT_STREQ(module.name, "before");
        EXPECT_EQ(module.begin, 4711U);
    }
}

} // namespace
