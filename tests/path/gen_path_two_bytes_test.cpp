// Paths in code page 932, by a fake. "\x83\x5c" and "\x83\x41" are one character each, whose second bytes have the
// codes of "\" and "A".
#include "gen_path_sys.h"

#include "tests/support/gen_os_fake.h"

#include <gtest/gtest.h>

#include <string>

TEST(GenSyncPathSeparators, LeavesSecondBytes)
{
    EXPECT_EQ(gen_sync_path_separators("a\\\x83\x5c\\\x83\x5c\x83\x5c"), "a/\x83\x5c/\x83\x5c\x83\x5c");
    EXPECT_EQ(gen_sync_path_separators("\xb1\\"), "\xb1/");
}

TEST(GenExecutableFullpath, IsInLowerCaseButForSecondBytes)
{
    gen_os_fake_set_executable_path("C:/\x83\x41"
                                    "A/KGUI.exe");
    for (bool const case_matters : {false, true}) {
        gen_os_fake_set_case_matters(case_matters);
        EXPECT_EQ(gen_get_executable_fullpath(), "c:/\x83\x41"
                                                 "a/kgui.exe")
            << case_matters;
    }
}
