// The change of a file over a scripted system, which has a call of its own or only changes files.
#include "gen_string_sys.h"

#include "tests/support/gen_os_fake.h"

#include <gtest/gtest.h>

TEST(GenWriteprivateprofilestring, IsTheCallOfASystemThatHasOne)
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
        GEN_OS_FAKE_PROFILE_CALL const call = gen_os_fake_last_profile_call();
        EXPECT_EQ(call.section, c.section);
        EXPECT_EQ(call.key, c.key);
        EXPECT_EQ(call.value, c.value);
        EXPECT_EQ(call.file, c.file);
        EXPECT_EQ(call.lock_msec, 10'000);
    }
}

TEST(GenWriteprivateprofilestring, ChangesTheFileOfASystemWithoutACall)
{
    struct Case
    {
        char const *name;
        GEN_OS_FAKE_ANSWERS answers;
        char const *section;
        char const *value;
        char const *file;
        int result;
        char const *calls;
        char const *text;
    };
    GEN_OS_FAKE_ANSWERS system;
    system.private_profile_string = false;
    GEN_OS_FAKE_ANSWERS unwritable = system;
    unwritable.change_file = false;
    constexpr char const *FORMER = "[a]\nx=1\n";
    for (Case const &c : {
             Case{"a change", system, "a", "2", "t.ini", 1, "change t.ini within 10000\n", "[a]\nx=2\n"},
             Case{"no change", system, "a", "1", "t.ini", 1, "change t.ini within 10000\n", FORMER},
             Case{"a refused change", system, nullptr, "2", "t.ini", 0, "change t.ini within 10000\n", FORMER},
             Case{"no file", system, "a", "2", nullptr, 0, "", FORMER},
             Case{"an unwritable file", unwritable, "a", "2", "t.ini", 0, "change t.ini within 10000\n", FORMER},
         }) {
        gen_os_fake_set_answers(c.answers);
        gen_os_fake_set_file_text(FORMER);
        EXPECT_EQ(gen_writeprivateprofilestring(c.section, "x", c.value, c.file), c.result) << c.name;
        EXPECT_STREQ(gen_os_fake_file_calls(), c.calls) << c.name;
        EXPECT_STREQ(gen_os_fake_file_text(), c.text) << c.name;
    }
    gen_os_fake_set_answers({});
}
