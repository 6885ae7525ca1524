#include "gen/text/gen_ini_text.h"

#include "tests/support/ini_cases.h"

#include <algorithm>
#include <string>

namespace {

// Further rules of the platforms without a call of the system.
constexpr IniCase EDIT_CASES[] = {
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
    // A key without a value, a value with the sign of equality, and lines before any section.
    {"[a]\nx\n", "a", "X", "1", "[a]\nx=1\n"},
    {"[a]\nx=1\n", "a", "x", "a=b;c [d]", "[a]\nx=a=b;c [d]\n"},
    {"x=0\n[a]\nx=1\n", "a", "x", "2", "x=0\n[a]\nx=2\n"},
    // Brackets: the last one closes, and without one there is no section.
    {"[a]b]\nx=1\n", "a]b", "x", "2", "[a]b]\nx=2\n"},
    {"[a\nx=1\n", "a", "x", "2", "[a\nx=1\n[a]\nx=2\n"},
    {"[a]\n[k=1\n", "a", "[k", "2", "[a]\n[k=2\n"},
    // Blanks around the names that are asked for.
    {"[a]\nx=1\n", " a ", " x ", "2", "[a]\nx=2\n"},
    {"", " a ", "\tx ", " 2 ", "[a]\nx= 2 \n"},
};

} // namespace

TEST(GenSetIniKey, ChangesOneLine)
{
    auto const check = [](IniCase const &c) {
        std::string text = c.text;
        EXPECT_TRUE(gen_set_ini_key(text, c.section, c.key, c.value)) << shown(c);
        EXPECT_EQ(text, c.result) << shown(c);
    };
    std::for_each(std::begin(INI_CASES), std::end(INI_CASES), check);
    std::for_each(std::begin(EDIT_CASES), std::end(EDIT_CASES), check);
}

TEST(GenSetIniKey, RefusesWhatCouldNotBeReadBack)
{
    for (IniCase const &c : {
             IniCase{"[a]\nx=1\n", nullptr, "x", "2", nullptr},
             IniCase{"[a]\nx=1\n", "a\nb", "x", "2", nullptr},
             IniCase{"[a]\nx=1\n", "a", "x\r", "2", nullptr},
             IniCase{"[a]\nx=1\n", "a", "x=y", "2", nullptr},
             IniCase{"[a]\nx=1\n", "a", "x", "2\n[b]", nullptr},
             IniCase{"[a]\nx=1\n", "a", " ;x", "2", nullptr}, // a comment
             IniCase{"[a]\nx=1\n", "a", "[b]", "2", nullptr}, // a section's line
             IniCase{"[a]\n[k=1\n", "a", "[k", "v]", nullptr},
         }) {
        std::string text = c.text;
        EXPECT_FALSE(gen_set_ini_key(text, c.section, c.key, c.value));
        EXPECT_EQ(text, c.text);
    }
}
