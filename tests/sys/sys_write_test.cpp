// Writes that end as on every platform. sys_write_linux.cpp and sys_write_windows.cpp have the rest.
#include "sys/sys_write.h"

#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Longer than what a system takes at once from a terminal or for a pipe.
std::string const LONG_TEXT(3000000, 'x');

} // namespace

TEST(SysWrite, WritesTheWholeText)
{
    TempDir const dir;
    for (std::string const &text : {std::string(), std::string("text"), std::string("a\0b", 3), LONG_TEXT}) {
        int const file = open(dir.text("file").c_str(), O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
        ASSERT_GE(file, 0);
        SYS_WRITTEN const written = sys_write(file, text.data(), text.size(), /*milliseconds=*/0);
        close(file);
        EXPECT_EQ(written.error, 0) << text.size();
        EXPECT_EQ(written.size, text.size());
        EXPECT_EQ(dir.read("file"), text);
    }
}

TEST(SysWrite, ReportsTheErrorOfTheSystem)
{
    TempDir const dir;
    dir.write("file", "former");
    int const file = open(dir.text("file").c_str(), O_RDONLY);
    ASSERT_GE(file, 0);
    SYS_WRITTEN const written = sys_write(file, "text", 4, /*milliseconds=*/0);
    close(file);
    EXPECT_EQ(written.error, EBADF);
    EXPECT_EQ(written.size, 0U);
    EXPECT_EQ(dir.read("file"), "former");
}

TEST(SysDescriptorOf, IsThatOfTheStream)
{
    TempDir const dir;
    std::FILE *const stream = std::fopen(dir.text("file").c_str(), "w");
    ASSERT_NE(stream, nullptr);
    std::fputs("one\n", stream);
    std::fflush(stream);
    EXPECT_EQ(sys_write(sys_descriptor_of(stream), "two\n", 4, /*milliseconds=*/0).error, 0);
    std::fclose(stream);
    EXPECT_EQ(dir.read("file"), in_text_mode("one\ntwo\n"));
}
