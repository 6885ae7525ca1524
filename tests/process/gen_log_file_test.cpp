// One file that the library writes, over a file that takes no text. tests/profile/full_disk_test.cpp has the files of
// all writers.
#include "gen/process/gen_log_file.h"

#include "tests/support/message_recorder.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using testing::ElementsAre;
using testing::StartsWith;

namespace {

class GenLogFile : public testing::Test
{
protected:
    // Every write to a file that was opened for reading fails, on any platform.
    GEN_LOG_FILE::File open_for_reading() const
    {
        return GEN_LOG_FILE::File(std::fopen(m_directory.write("log.txt", "former").c_str(), "r"));
    }

    TempDir m_directory;
    MessageRecorder m_messages;
};

TEST_F(GenLogFile, WritesAtAFlushAndAtTheEnd)
{
    {
        GEN_LOG_FILE log(m_directory.text("log.txt"), std::ios::out);
        log.stream() << "first, " << std::flush;
        EXPECT_EQ(m_directory.read("log.txt"), "first, ");
        log.write("second");
        EXPECT_TRUE(log.stream().good());
    }
    EXPECT_EQ(m_directory.read("log.txt"), "first, second");
    EXPECT_THAT(m_messages.lines(), ElementsAre());
}

TEST_F(GenLogFile, TakesNoTextAfterAFlushThatFailed)
{
    std::string const more_than_a_block(200000, 'x');
    {
        GEN_LOG_FILE log("name of the file", open_for_reading());
        ASSERT_TRUE(log.is_open());
        log.stream() << "first" << std::flush;
        EXPECT_TRUE(log.stream().bad());
        EXPECT_EQ(m_messages.lines().size(), 1U);
        log.write(more_than_a_block);
        log.stream().clear();
        log.stream() << more_than_a_block << std::flush;
        EXPECT_TRUE(log.stream().bad());
    }
    EXPECT_THAT(m_messages.lines(), ElementsAre(StartsWith("cannot write \"name of the file\": ")));
}

TEST_F(GenLogFile, DropsTheTextOfAFileThatIsNotOpen)
{
    {
        GEN_LOG_FILE log("name of the file", GEN_LOG_FILE::File());
        EXPECT_FALSE(log.is_open());
        EXPECT_TRUE(log.stream().fail());
        log.write("text");
    }
    EXPECT_THAT(m_messages.lines(), ElementsAre());
}

} // namespace
