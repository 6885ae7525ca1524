#include "gen_string_sys.h"
#include "tests/support/texts.h"

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

TEST(GenGetline, ReturnsWhetherTheStreamWasGoodBefore)
{
    struct LineCase
    {
        std::string text;
        char delimiter;
        std::vector<std::string> lines; // of the calls that gave true
    };
    for (LineCase const &c : {
             LineCase{"", '\n', {""}},
             LineCase{"a", '\n', {"a"}},
             LineCase{"a\nb", '\n', {"a", "b"}},
             LineCase{"a\nb\n", '\n', {"a", "b", ""}}, // one line too many after a last delimiter
             LineCase{"\n", '\n', {"", ""}},
             LineCase{"\n\nx\n", '\n', {"", "", "x", ""}},
             LineCase{"a;b\nc;", ';', {"a", "b\nc", ""}},
             LineCase{"a\r\nb", '\n', {"a\r", "b"}},
         }) {
        std::istringstream in(c.text);
        std::vector<std::string> lines;
        std::string line = "left over";
        while (gen_getline(&in, &line, c.delimiter) && lines.size() < 10)
            lines.push_back(line);
        EXPECT_EQ(lines, c.lines) << shown(c.text);
        EXPECT_EQ(line, "") << shown(c.text);
    }
}

TEST(GenGetline, ClearsTheLineOfAStreamThatIsNotGood)
{
    for (std::ios_base::iostate state : {std::ios_base::eofbit, std::ios_base::failbit, std::ios_base::badbit}) {
        std::istringstream in("text");
        in.setstate(state);
        std::string line = "left over";
        EXPECT_FALSE(gen_getline(&in, &line, '\n'));
        EXPECT_EQ(line, "");
    }
}

TEST(GenGetline, LeavesTheStreamFailedAfterAReadOfNothing)
{
    std::istringstream in("a\n");
    std::string line;
    EXPECT_TRUE(gen_getline(&in, &line, '\n'));
    EXPECT_TRUE(in.good());
    EXPECT_TRUE(gen_getline(&in, &line, '\n'));
    EXPECT_TRUE(in.fail());
}
