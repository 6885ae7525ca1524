// The tests of the file system, those of every platform and those of one.
#ifndef TESTS_FIO_FIO_FILE_SYSTEM_FIXTURE_H
#define TESTS_FIO_FIO_FILE_SYSTEM_FIXTURE_H

#include "fio_sys.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

constexpr unsigned MODE_DIRECTORY = 0x4000;
constexpr unsigned MODE_REGULAR = 0x8000;

constexpr unsigned ATTRIBUTE_READ_ONLY = 0x01;
constexpr unsigned ATTRIBUTE_HIDDEN = 0x02;
constexpr unsigned ATTRIBUTE_DIRECTORY = 0x10;
constexpr unsigned ATTRIBUTE_LINK = 0x400;

class FioFileSystem : public testing::Test
{
protected:
    std::string at(std::string const &name) const { return m_temp.text(name); }

    unsigned mode(std::string const &path) const
    {
        struct _stat64i32 record = {};
        EXPECT_TRUE(FIO_FILE_SYSTEM::status(path, &record)) << path;
        return record.st_mode;
    }

    TempDir m_temp;
};

class FioFileScan : public FioFileSystem
{
protected:
    // The records of a whole scan.
    std::vector<struct _finddata64i32_t> scan(std::string const &pattern)
    {
        std::vector<struct _finddata64i32_t> records;
        struct _finddata64i32_t data = {};
        std::intptr_t const handle = FIO_FILE_SYSTEM::findfirst(at(pattern).c_str(), &data);
        if (handle == -1)
            return records;
        do
            records.push_back(data);
        while (FIO_FILE_SYSTEM::findnext(handle, &data) == 0);
        EXPECT_EQ(errno, ENOENT) << pattern;
        EXPECT_EQ(FIO_FILE_SYSTEM::findnext(handle, &data), -1) << "it has ended: " << pattern;
        EXPECT_EQ(FIO_FILE_SYSTEM::findclose(handle), 0) << pattern;
        return records;
    }
    std::vector<std::string> names(std::string const &pattern)
    {
        std::vector<std::string> result;
        for (struct _finddata64i32_t const &record : scan(pattern))
            result.emplace_back(record.name);
        return result;
    }
};

#endif
