#include "gen_path_sys.h"

#include <gtest/gtest.h>

TEST(GenSyncPathSeparators, TurnsBackSlashesAlone)
{
    struct SyncCase
    {
        char const *text;
        char const *synced;
    };
    constexpr SyncCase CASES[] = {
        {"", ""},
        {"a/b.v", "a/b.v"},
        {"\\", "/"},
        {"\\\\host\\Share", "//host/Share"},
        {"C:\\A\\\\b//c", "C:/A//b//c"},
        {"a \\ b\xe4\\", "a / b\xe4/"},
        {"..\\.\\a", ".././a"},
    };
    for (SyncCase const &c : CASES)
        EXPECT_EQ(gen_sync_path_separators(c.text), c.synced);
    EXPECT_EQ(gen_sync_path_separators(std::string("a\0\\b", 4)), std::string("a\0/b", 4));
}
