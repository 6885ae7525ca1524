#include "gen/text/gen_string_profile.h"

#include "gen_string_sys.h"

#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

struct ProfileCase
{
    char const *text;
    char const *section;
    char const *key;
    char const *value;
    char const *result;
};

// Results that are the same on both platforms, except for line ends.
constexpr ProfileCase PROFILE_CASES[] = {
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

// Results of the edit on the other platforms alone.
constexpr ProfileCase EDIT_CASES[] = {
    // Line ends and white space of the other lines stay.
    {"[a]\r\nx=1\r\n", "a", "x", "2", "[a]\r\nx=2\r\n"},
    {"[a]\r\nx=1\r\n", "a", "y", "2", "[a]\r\nx=1\r\ny=2\r\n"},
    {"[a]\nx=1", "a", "y", "2", "[a]\nx=1\ny=2\n"},
    {"[a]\r\nx=1", "b", "y", "2", "[a]\r\nx=1\r\n[b]\r\ny=2\r\n"},
    {"[a]\nx=1", "a", "x", "2", "[a]\nx=2"},
    {"[a]", "a", "x", "1", "[a]\nx=1\n"},
    {" [ a ] \n\tx = 1\n", "a", "x", "2", " [ a ] \n\tx =2\n"},
    {"[a]\nx=1\n\n  \n[b]\n", "a", "y", "2", "[a]\nx=1\ny=2\n\n  \n[b]\n"},
    {"[a]\n\n", "a", "y", "2", "[a]\ny=2\n\n"},
    {"[a]\nx = 1 \ny=2", "a", "y", nullptr, "[a]\nx = 1 \n"},
    // The first of several counts.
    {"[a]\nx=1\nx=2\n", "a", "x", "3", "[a]\nx=3\nx=2\n"},
    {"[a]\nx=1\n[a]\ny=2\n", "a", "y", "3", "[a]\nx=1\ny=3\n[a]\ny=2\n"},
    // A key without a value, a value with the sign of equality, and lines before the first section.
    {"[a]\nx\n", "a", "X", "1", "[a]\nx=1\n"},
    {"[a]\nx=1\n", "a", "x", "a=b;c [d]", "[a]\nx=a=b;c [d]\n"},
    {"x=0\n[a]\nx=1\n", "a", "x", "2", "x=0\n[a]\nx=2\n"},
    // Brackets: the last one closes, and without one there is no section.
    {"[a]b]\nx=1\n", "a]b", "x", "2", "[a]b]\nx=2\n"},
    {"[a\nx=1\n", "a", "x", "2", "[a\nx=1\n[a]\nx=2\n"},
    {"[a]\n[k=1\n", "a", "[k", "2", "[a]\n[k=2\n"},
    // Blanks around the given names.
    {"[a]\nx=1\n", " a ", " x ", "2", "[a]\nx=2\n"},
    {"", " a ", "\tx ", " 2 ", "[a]\nx= 2 \n"},
};

std::string shown(ProfileCase const &c)
{
    return testing::PrintToString(c.text) + ", " + c.section + ", " + testing::PrintToString(c.key) + ", " +
           testing::PrintToString(c.value);
}

} // namespace

TEST(GenSetProfileKey, ChangesOneLine)
{
    auto const check = [](ProfileCase const &c) {
        std::string text = c.text;
        EXPECT_TRUE(gen_set_profile_key(text, c.section, c.key, c.value)) << shown(c);
        EXPECT_EQ(text, c.result) << shown(c);
    };
    std::for_each(std::begin(PROFILE_CASES), std::end(PROFILE_CASES), check);
    std::for_each(std::begin(EDIT_CASES), std::end(EDIT_CASES), check);
}

TEST(GenSetProfileKey, RefusesWhatCouldNotBeReadBack)
{
    for (ProfileCase const &c : {
             ProfileCase{"[a]\nx=1\n", nullptr, "x", "2", nullptr},
             ProfileCase{"[a]\nx=1\n", "a\nb", "x", "2", nullptr},
             ProfileCase{"[a]\nx=1\n", "a", "x\r", "2", nullptr},
             ProfileCase{"[a]\nx=1\n", "a", "x=y", "2", nullptr},
             ProfileCase{"[a]\nx=1\n", "a", "x", "2\n[b]", nullptr},
             ProfileCase{"[a]\nx=1\n", "a", " ;x", "2", nullptr}, // a comment
             ProfileCase{"[a]\nx=1\n", "a", "[b]", "2", nullptr}, // a section's line
             ProfileCase{"[a]\n[k=1\n", "a", "[k", "v]", nullptr},
         }) {
        std::string text = c.text;
        EXPECT_FALSE(gen_set_profile_key(text, c.section, c.key, c.value));
        EXPECT_EQ(text, c.text);
    }
}

TEST(GenWriteprivateprofilestring, ChangesOneKeyOfTheFile)
{
    TempDir const dir;
    for (ProfileCase const &c : PROFILE_CASES) {
        // A file of its own, as the system may keep what it has read.
        std::string const name = std::to_string(&c - PROFILE_CASES) + ".ini";
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
    std::vector<std::string> names;
    for (auto const &entry : std::filesystem::directory_iterator(dir.path()))
        names.push_back(entry.path().filename().string());
    EXPECT_THAT(names, testing::ElementsAre("tool.ini"));
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
