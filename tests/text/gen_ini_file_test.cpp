// The change of a file on disk by the system itself.
#include "gen_string_sys.h"

#include "tests/support/ini_cases.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <string>

#include <gmock/gmock.h>

TEST(GenWriteprivateprofilestring, ChangesOneKeyOfTheFile)
{
    TempDir const dir;
    for (IniCase const &c : INI_CASES) {
        // A file of its own, as the system may keep what it has read.
        std::string const name = std::to_string(&c - INI_CASES) + ".ini";
        std::string const file = *c.text != '\0' ? dir.write(name, c.text) : dir.text(name);
        EXPECT_NE(gen_writeprivateprofilestring(c.section, c.key, c.value, file.c_str()), 0) << shown(c);
        EXPECT_EQ(without_carriage_returns(dir.read(name)), c.result) << shown(c);
    }
}

TEST(GenWriteprivateprofilestring, LeavesNoOtherFile)
{
    TempDir const dir;
    std::string const file = dir.write("tool.ini", "[a]\nx=1\n");
    for (char const *value : {"1", "2", "3"})
        EXPECT_NE(gen_writeprivateprofilestring("a", "x", value, file.c_str()), 0);
    EXPECT_THAT(entry_names(dir.path()), testing::ElementsAre("tool.ini"));
}

TEST(GenWriteprivateprofilestring, FailsWithoutASectionOrADirectory)
{
    TempDir const dir;
    std::string const file = dir.write("tool.ini", "[a]\nx=1\n");
    EXPECT_EQ(gen_writeprivateprofilestring(nullptr, "x", "2", file.c_str()), 0);
    EXPECT_EQ(dir.read("tool.ini"), "[a]\nx=1\n");
    EXPECT_EQ(gen_writeprivateprofilestring("a", "x", "2", dir.text("missing/tool.ini").c_str()), 0);
    EXPECT_EQ(gen_writeprivateprofilestring("a", "x", "2", dir.text().c_str()), 0);
}

#ifndef _WIN32 // there the call is the system's own
TEST(GenWriteprivateprofilestring, KeepsLinksAndPermissions)
{
    namespace fs = std::filesystem;
    TempDir const dir;
    dir.write("real.ini", "[a]\nx=1\n");
    fs::create_symlink("real.ini", dir.path() / "link.ini");
    fs::permissions(dir.path() / "real.ini", fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(gen_writeprivateprofilestring("a", "x", "2", dir.text("link.ini").c_str()), 1);
    EXPECT_EQ(dir.read("real.ini"), "[a]\nx=2\n");
    EXPECT_TRUE(fs::is_symlink(dir.path() / "link.ini"));
    EXPECT_EQ(fs::status(dir.path() / "real.ini").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(gen_writeprivateprofilestring("a", "x", "2", nullptr), 0);
    EXPECT_EQ(gen_writeprivateprofilestring("a", "x", "2", ""), 0);
}
#endif
