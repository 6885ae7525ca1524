// Signals, partial writes and full pipes.
#include "sys/sys_write.h"

#include "tests/support/interruptions_linux.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

// A wait that ends long before it in every working build.
constexpr int HANG_GUARD_MSEC = 60'000;

class SysWritePipe : public testing::Test
{
protected:
    SysWritePipe()
    {
        EXPECT_EQ(pipe2(m_ends, O_CLOEXEC), 0);
        EXPECT_EQ(fcntl(m_ends[1], F_SETPIPE_SZ, 4096), 4096);
    }
    ~SysWritePipe() override
    {
        end_input();
        end_output();
    }

    int writer() const { return m_ends[1]; }
    void stop_blocking() const { fcntl(m_ends[1], F_SETFL, O_NONBLOCK); }
    void fill() const
    {
        stop_blocking();
        while (write(m_ends[1], "#", 1) == 1)
            continue;
    }
    void end_input() { end(m_ends[0]); }
    void end_output() { end(m_ends[1]); }

    // Everything up to the end of the output, in parts after pauses.
    std::string read_slowly() const
    {
        std::string text;
        char part[1000];
        for (;;) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            ssize_t const size = read(m_ends[0], static_cast<char *>(part), sizeof part);
            if (size <= 0)
                return text;
            text.append(static_cast<char *>(part), static_cast<std::size_t>(size));
        }
    }

    // Writes a text that many reads have to make room for.
    void expect_whole_text()
    {
        std::string text;
        for (int k = 0; k < 20000; ++k)
            text += std::to_string(k) + ' ';
        std::string received;
        std::thread reader([this, &received] { received = read_slowly(); });
        SYS_WRITTEN const written = sys_write(writer(), text.data(), text.size(), HANG_GUARD_MSEC);
        end_output();
        reader.join();
        EXPECT_EQ(written.error, 0);
        EXPECT_EQ(written.size, text.size());
        EXPECT_EQ(received, text);
    }

private:
    static void end(int &descriptor)
    {
        if (descriptor >= 0)
            close(descriptor);
        descriptor = -1;
    }

    int m_ends[2] = {-1, -1};
};

} // namespace

TEST_F(SysWritePipe, TakesAllPartsOfADescriptorThatBlocks)
{
    expect_whole_text();
}

TEST_F(SysWritePipe, GoesOnAfterAnInterruption)
{
    Interruptions const interruptions;
    fcntl(writer(), F_SETPIPE_SZ, 4096);
    std::string const text(2'000'000, 'x');
    std::size_t received = 0;
    sigset_t alarms;
    sigemptyset(&alarms);
    sigaddset(&alarms, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarms, nullptr); // in the reader
    std::thread reader([this, &received] { received = read_slowly().size(); });
    pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
    SYS_WRITTEN const written = sys_write(writer(), text.data(), text.size(), HANG_GUARD_MSEC);
    end_output();
    reader.join();
    EXPECT_EQ(written.error, 0);
    EXPECT_EQ(written.size, text.size());
    EXPECT_EQ(received, text.size());
}

TEST_F(SysWritePipe, WaitsForTheReaderOfADescriptorThatDoesNotBlock)
{
    stop_blocking();
    expect_whole_text();
}

TEST_F(SysWritePipe, WaitsThroughInterruptions)
{
    fill();
    Interruptions const interruptions;
    SYS_WRITTEN const written = sys_write(writer(), "text", 4, /*milliseconds=*/50);
    EXPECT_EQ(written.error, EAGAIN);
    EXPECT_EQ(written.size, 0U);
}

TEST_F(SysWritePipe, GivesUpWithoutAReader)
{
    fill();
    for (int const milliseconds : {0, 1, 100}) {
        auto const start = std::chrono::steady_clock::now();
        SYS_WRITTEN const written = sys_write(writer(), "text", 4, milliseconds);
        auto const waited = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(written.error, EAGAIN);
        EXPECT_EQ(written.size, 0U);
        EXPECT_GE(waited, std::chrono::milliseconds(milliseconds - 1)) << "it did not wait";
    }
}

TEST_F(SysWritePipe, ReportsThePartThatHadRoom)
{
    stop_blocking();
    std::string const text(10'000, 'x');
    SYS_WRITTEN const written = sys_write(writer(), text.data(), text.size(), /*milliseconds=*/1);
    EXPECT_EQ(written.error, EAGAIN);
    EXPECT_EQ(written.size, 4096U);
}

TEST_F(SysWritePipe, ReportsAReaderThatIsGone)
{
    auto *const former = std::signal(SIGPIPE, SIG_IGN);
    end_input();
    SYS_WRITTEN const written = sys_write(writer(), "text", 4, HANG_GUARD_MSEC);
    std::signal(SIGPIPE, former);
    EXPECT_EQ(written.error, EPIPE);
    EXPECT_EQ(written.size, 0U);
}

// The system takes the part up to the limit and refuses the rest.
TEST(SysWriteLimit, ReportsThePartOfAFileThatHadRoom)
{
    TempDir const dir;
    int const file = open(dir.text("file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    rlimit const limit{1000, former.rlim_max};
    auto *const former_handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    SYS_WRITTEN const written = sys_write(file, std::string(5000, 'x').data(), 5000, /*milliseconds=*/0);
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, former_handler);
    close(file);
    EXPECT_EQ(written.error, EFBIG);
    EXPECT_EQ(written.size, 1000U);
    EXPECT_EQ(dir.read("file"), std::string(1000, 'x'));
}
