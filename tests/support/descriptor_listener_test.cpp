#include "tests/support/descriptor_listener.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdio>

namespace {

testing::TestInfo const &this_test()
{
    return *testing::UnitTest::GetInstance()->current_test_info();
}

// What the listener finds if an action runs as a test.
template <typename Action>
void listen_to(Action const &action)
{
    DescriptorListener listener;
    listener.OnTestStart(this_test());
    action();
    listener.OnTestEnd(this_test());
}

std::FILE *l_file = nullptr;

} // namespace

TEST(DescriptorListener, FailsATestThatLeavesAFileOpen)
{
    TempDir const directory;
    EXPECT_NONFATAL_FAILURE(listen_to([&] { l_file = std::fopen(directory.text("file").c_str(), "w"); }),
                            "the test leaves descriptors open");
    ASSERT_NE(l_file, nullptr);
    std::fclose(l_file);
}

TEST(DescriptorListener, PassesATestThatClosesItsFiles)
{
    TempDir const directory;
    l_file = std::fopen(directory.text("file").c_str(), "w");
    ASSERT_NE(l_file, nullptr);
    listen_to([] {}); // the file was open before
    listen_to([&] { std::fclose(std::fopen(directory.text("other").c_str(), "w")); });
    listen_to([] { std::fclose(l_file); });
}
