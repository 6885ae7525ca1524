#include "sys/sys_file_mode.h"

#include <gtest/gtest.h>

namespace {

struct ModeCase
{
    unsigned mode; // as the Windows runtime has it
    bool is_directory;
    bool is_regular;
};
constexpr ModeCase MODE_CASES[] = {
    {0x41ff, true, false},  {0x4000, true, false}, // directories
    {0x81b6, false, true},  {0x8000, false, true}, // regular files
    {0x2180, false, false}, {0x1000, false, false},
    {0, false, false},      {0777, false, false}, // a device, a pipe, no type
};

TEST(SysMode, RecognisesDirectoriesAndRegularFiles)
{
    for (ModeCase const &c : MODE_CASES) {
        EXPECT_EQ(sys_mode_is_directory(c.mode), c.is_directory) << std::hex << c.mode;
        EXPECT_EQ(sys_mode_is_regular(c.mode), c.is_regular) << std::hex << c.mode;
    }
}

} // namespace
