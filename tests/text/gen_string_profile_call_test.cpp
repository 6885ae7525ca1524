// The arguments and the result of the system's private profile call, over a fake of it.
#include "gen_string_sys.h"

#include "tests/support/gen_os_fake.h"

#include <gtest/gtest.h>

TEST(GenWriteprivateprofilestring, PassesStraightThrough)
{
    struct Case
    {
        char const *section;
        char const *key;
        char const *value;
        char const *file;
        int result;
    };
    for (Case const &c : {Case{"section", "key", "value", "tool.ini", 1}, Case{"section", "key", "value", "", 0},
                          Case{"", "a=b", "\r\n", "missing/tool.ini", -7}, Case{"section", "key", nullptr, "x", 256},
                          Case{"section", nullptr, nullptr, "x", 1}, Case{nullptr, nullptr, nullptr, nullptr, 0}}) {
        gen_os_fake_set_profile_result(c.result);
        EXPECT_EQ(gen_writeprivateprofilestring(c.section, c.key, c.value, c.file), c.result);
        gen_os_fake_profile_call const call = gen_os_fake_last_profile_call();
        EXPECT_EQ(call.section, c.section);
        EXPECT_EQ(call.key, c.key);
        EXPECT_EQ(call.value, c.value);
        EXPECT_EQ(call.file, c.file);
    }
}
