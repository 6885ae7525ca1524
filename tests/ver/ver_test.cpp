#include "ver_sys.h"

#include <gtest/gtest.h>

#include <string>

namespace {

#ifdef ZEL_CUSTOMER_TEST
constexpr bool IS_RELEASE_BRANCH = true;
#else
constexpr bool IS_RELEASE_BRANCH = ZEL_RELEASE_BRANCH != 0;
#endif

TEST(VerIsReleaseBranch, IsThatOfTheLibraryInTheProcess)
{
    EXPECT_EQ(ver_is_release_branch(), IS_RELEASE_BRANCH);
}

TEST(VerTexts, AreThoseOfTheBuild)
{
    EXPECT_STREQ(ver_get_brisel_product_filename(), ZEL_PRODUCT_FILENAME);
    EXPECT_EQ(ver_get_copyright_string(), ZEL_COPYRIGHT);
    EXPECT_STREQ(ver_get_version_string(), ZEL_VERSION_TEXT);
}

TEST(VerGetBriselProductFilename, IsLowerCaseWithoutDirectoryAndExtension)
{
    std::string const name = ver_get_brisel_product_filename();
    EXPECT_FALSE(name.empty());
    EXPECT_EQ(name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ./\\"), std::string::npos) << name;
}

TEST(VerGetCopyrightString, IsOneLine)
{
    std::string const line = ver_get_copyright_string();
    EXPECT_FALSE(line.empty());
    EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
}

TEST(VerSetModulePath, ChangesNoFact)
{
    for (char const *directory : {"/opt/kalvern/bin/", "", static_cast<char const *>(nullptr), "/other/"}) {
        ver_set_module_path(directory);
        EXPECT_STREQ(ver_get_brisel_product_filename(), ZEL_PRODUCT_FILENAME)
            << "directory " << (directory == nullptr ? "null" : directory);
    }
}

} // namespace
