// The break into the debugger, over stand-ins for the siblings that see it.
#include "gen_flow_sys.h"

#include "gen/os/gen_os.h"
#include "mem_sys.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct BreakError
{
};

bool l_is_on = false;
bool l_default = true;
bool l_throws = false;
bool l_is_release = false;
int l_break_count = 0;
std::string l_key;
std::string l_output;

} // namespace

bool mem_cfg_is_on(char const *key, bool default_value)
{
    l_key = key;
    l_default = default_value;
    return l_is_on;
}

void thr_debug_break()
{
    ++l_break_count;
    if (l_throws)
        throw BreakError();
}

bool ver_is_release_branch()
{
    return l_is_release;
}

void gen_os_debug_output(char const *text)
{
    l_output += text;
}

TEST(GenDebugBreak, IsMadeIfTheKeyIsOn)
{
    for (bool const is_on : {false, true})
        for (bool const swallow : {false, true}) {
            SCOPED_TRACE(testing::Message() << "key " << is_on << " swallow " << swallow);
            l_is_on = is_on;
            l_throws = false;
            l_break_count = 0;
            EXPECT_NO_THROW(gen_debug_break(swallow));
            EXPECT_EQ(l_break_count, is_on ? 1 : 0);
            EXPECT_EQ(l_key, "dont_catch_all_exceptions");
            EXPECT_FALSE(l_default);
        }
}

TEST(GenDebugBreak, DropsAnExceptionOnlyOnRequest)
{
    l_is_on = true;
    l_throws = true;
    l_break_count = 0;
    EXPECT_NO_THROW(gen_debug_break(true));
    EXPECT_THROW(gen_debug_break(false), BreakError);
    EXPECT_EQ(l_break_count, 2);
}

TEST(GenDebugIsCustomerBuild, AsksEachTime)
{
    for (bool const is_release : {true, false, true}) {
        l_is_release = is_release;
        EXPECT_EQ(gen_debug_is_customer_build(), is_release);
    }
}

TEST(GenDebugOutputString, PassesTheTextAsItIs)
{
    l_output.clear();
    gen_debug_output_string("100% of\r\na text");
    gen_debug_output_string("");
    gen_debug_output_string("|");
    EXPECT_EQ(l_output, "100% of\r\na text|");
}
