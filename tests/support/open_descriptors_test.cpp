#include "tests/support/open_descriptors.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

TEST(OpenDescriptorCount, CountsEachOpenFile)
{
    TempDir const directory;
    std::size_t const before = open_descriptor_count();
    std::vector<std::FILE *> files;
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(open_descriptor_count(), before + i);
        files.push_back(std::fopen(directory.text("file").c_str(), "w"));
        ASSERT_NE(files.back(), nullptr);
    }
    for (std::FILE *const file : files)
        std::fclose(file);
    EXPECT_EQ(open_descriptor_count(), before);
}
