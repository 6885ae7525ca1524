// Text mode, which expands line ends: the size counts the characters of the text.
#include "sys/sys_write.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

TEST(SysWrite, CountsTheTextBeforeItsLineEndsAreExpanded)
{
    TempDir const dir;
    int const file = _open(dir.text("file").c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_TEXT, _S_IREAD | _S_IWRITE);
    ASSERT_GE(file, 0);
    SYS_WRITTEN const written = sys_write(file, "a\nb\n", 4, /*milliseconds=*/0);
    _close(file);
    EXPECT_EQ(written.error, 0);
    EXPECT_EQ(written.size, 4U);
    EXPECT_EQ(dir.read("file"), "a\r\nb\r\n");
}
