// The stat record where the system's header, with its macros for the times, comes before it; in
// fio_file_system_test.cpp it comes after it.
#include <sys/stat.h>

#include "fio_sys.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

TEST(FioStatRecord, HasItsTimesAfterTheSystemsHeader)
{
    TempDir const temp;
    std::string const file = temp.write("a.v", "12345");
    struct stat expected;
    ASSERT_EQ(stat(file.c_str(), &expected), 0);
    struct _stat64i32 record = {};
    ASSERT_TRUE(FIO_FILE_SYSTEM::status(file, &record));
    EXPECT_EQ(record.st_mtime, expected.st_mtime);
    EXPECT_EQ(record.st_atime, expected.st_atime);
    EXPECT_EQ(record.st_ctime, expected.st_ctime);
    EXPECT_GT(record.st_mtime, 0);
}

} // namespace
