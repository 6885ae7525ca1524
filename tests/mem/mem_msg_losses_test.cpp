// Messages to descriptors that are full, interrupted or shared with the child of a fork, none of which Windows has.
// Each test is a process of its own, since it replaces the standard output.
#include "mem_sys.h"

#include "tests/support/argument_slots.h"
#include "tests/support/environment.h"
#include "tests/support/interruptions_linux.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using testing::EndsWith;
using testing::StartsWith;

// A wait that ends long before it in every working build.
constexpr std::chrono::seconds HANG_GUARD{60};

constexpr int LINES = 3000;

bool info(std::string const &text)
{
    ArgumentSlots slots(text.c_str());
    return mem_msg_local_vinfo("T", "%s", slots.begin());
}

std::string line_of(std::string const &text)
{
    return "Info (T): " + text + "\n";
}

std::string numbered(int number)
{
    return "line " + std::to_string(number);
}

std::string all_lines()
{
    std::string text;
    for (int k = 0; k < LINES; ++k)
        text += line_of(numbered(k));
    return text;
}

int count_losses_of_all_lines()
{
    int losses = 0;
    for (int k = 0; k < LINES; ++k)
        losses += info(numbered(k)) ? 0 : 1;
    return losses;
}

// The standard output leads to a descriptor during the scope. GoogleTest's own output does too.
class OutputTo
{
public:
    explicit OutputTo(int descriptor) : m_former(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        dup2(descriptor, STDOUT_FILENO);
    }
    ~OutputTo()
    {
        std::fflush(stdout);
        dup2(m_former, STDOUT_FILENO);
        close(m_former);
    }
    OutputTo(OutputTo const &) = delete;
    OutputTo &operator=(OutputTo const &) = delete;

private:
    int m_former;
};

class Pipe
{
public:
    Pipe() { EXPECT_EQ(pipe2(m_ends, O_CLOEXEC), 0); }
    ~Pipe()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    Pipe(Pipe const &) = delete;
    Pipe &operator=(Pipe const &) = delete;

    int writer() const { return m_ends[1]; }

    void stop_blocking() const
    {
        fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
        fcntl(m_ends[1], F_SETFL, O_NONBLOCK);
    }

    // To the last byte of its room.
    void fill() const
    {
        stop_blocking();
        for (std::size_t size : {std::size_t{4096}, std::size_t{1}})
            while (write(m_ends[1], std::string(size, '#').c_str(), size) > 0)
                continue;
    }

    // Everything that is in it.
    std::string drain() const
    {
        std::string text;
        pollfd query{m_ends[0], POLLIN, 0};
        while (poll(&query, 1, 0) > 0) {
            char part[4096];
            ssize_t const size = read(m_ends[0], part, sizeof part);
            if (size <= 0)
                break;
            text.append(part, static_cast<std::size_t>(size));
        }
        return text;
    }

private:
    int m_ends[2] = {-1, -1};
};

// Reads a pipe in small parts on a thread of its own, up to the last byte of a text of that size.
class SlowReader
{
public:
    SlowReader(Pipe const &pipe, std::size_t size) : m_thread([this, &pipe, size] { read_all(pipe, size); }) {}

    std::string text()
    {
        m_thread.join();
        return m_text;
    }

private:
    void read_all(Pipe const &pipe, std::size_t size)
    {
        auto const end = std::chrono::steady_clock::now() + HANG_GUARD;
        while (m_text.size() < size && std::chrono::steady_clock::now() < end) {
            m_text += pipe.drain();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::string m_text;
    std::thread m_thread;
};

class MemMsgLosses : public testing::Test
{
protected:
    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory{m_dir.path()};
    Pipe m_pipe;
};

void block_alarms(int how)
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    pthread_sigmask(how, &set, nullptr);
}

TEST_F(MemMsgLosses, NoneByInterruptions)
{
    fcntl(m_pipe.writer(), F_SETPIPE_SZ, 4096);
    block_alarms(SIG_BLOCK); // in the reader
    SlowReader reader(m_pipe, all_lines().size());
    block_alarms(SIG_UNBLOCK);
    int losses = 0;
    {
        OutputTo const output(m_pipe.writer());
        Interruptions const interruptions;
        losses = count_losses_of_all_lines();
    }
    EXPECT_EQ(losses, 0);
    EXPECT_EQ(reader.text(), all_lines());
}

TEST_F(MemMsgLosses, NoneWhileTheReaderIsSlow)
{
    m_pipe.stop_blocking();
    fcntl(m_pipe.writer(), F_SETPIPE_SZ, 4096);
    SlowReader reader(m_pipe, all_lines().size());
    int losses = 0;
    {
        OutputTo const output(m_pipe.writer());
        losses = count_losses_of_all_lines();
    }
    EXPECT_EQ(losses, 0);
    EXPECT_EQ(reader.text(), all_lines());
}

// Only the first line waits: the others would take a second each.
TEST_F(MemMsgLosses, AreCountedByTheNextLine)
{
    m_pipe.fill();
    auto const start = std::chrono::steady_clock::now();
    int losses = 0;
    {
        OutputTo const output(m_pipe.writer());
        losses = count_losses_of_all_lines();
    }
    EXPECT_EQ(losses, LINES);
    EXPECT_LT(std::chrono::steady_clock::now() - start, HANG_GUARD);
    EXPECT_THAT(m_pipe.drain(), EndsWith("##"));
    bool is_emitted = false;
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info("again") && info("and again");
    }
    EXPECT_TRUE(is_emitted);
    EXPECT_EQ(m_pipe.drain(), "Warning: 3000 messages were lost here: Resource temporarily unavailable\n" +
                                  line_of("again") + line_of("and again"));
}

TEST_F(MemMsgLosses, LetTheLinesAfterThemWaitAgain)
{
    m_pipe.fill();
    bool is_emitted = true;
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info("lost");
    }
    EXPECT_FALSE(is_emitted);
    m_pipe.drain();
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info("again");
    }
    EXPECT_TRUE(is_emitted);
    m_pipe.fill();
    std::string text;
    std::thread reader([this, &text] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        text = m_pipe.drain();
    });
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info("waits");
    }
    reader.join();
    EXPECT_TRUE(is_emitted);
    EXPECT_THAT(text + m_pipe.drain(), EndsWith("##" + line_of("waits")));
}

TEST_F(MemMsgLosses, EndALineThatWasCut)
{
    m_pipe.stop_blocking();
    std::string const longer_than_the_pipe(2000000, 'x');
    bool is_emitted = true;
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info(longer_than_the_pipe);
    }
    EXPECT_FALSE(is_emitted);
    std::string const part = m_pipe.drain();
    EXPECT_THAT(part, StartsWith("Info (T): xxx"));
    EXPECT_THAT(part, EndsWith("x"));
    {
        OutputTo const output(m_pipe.writer());
        is_emitted = info("again");
    }
    EXPECT_TRUE(is_emitted);
    EXPECT_EQ(m_pipe.drain(),
              "\nWarning: 1 message was lost here: Resource temporarily unavailable\n" + line_of("again"));
}

TEST_F(MemMsgLosses, OfAFullDiskEndWithIt)
{
    int const full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    int losses = 0;
    {
        OutputTo const output(full);
        losses += info("lost") ? 0 : 1;
        losses += info("lost too") ? 0 : 1;
    }
    close(full);
    EXPECT_EQ(losses, 2);
    {
        OutputTo const output(m_pipe.writer());
        losses += info("again") ? 0 : 1;
    }
    EXPECT_EQ(losses, 2);
    EXPECT_EQ(m_pipe.drain(), "Warning: 2 messages were lost here: No space left on device\n" + line_of("again"));
}

TEST_F(MemMsgLosses, OfTheToolsOwnTextBeginANewLine)
{
    int const full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    {
        OutputTo const output(full);
        std::printf("text of the tool, which is not a line");
        std::fflush(stdout);
        std::printf(" nor is this");
        info("lost");
    }
    close(full);
    {
        OutputTo const output(m_pipe.writer());
        info("again");
    }
    EXPECT_EQ(m_pipe.drain(), "\nWarning: 1 message was lost here: No space left on device\n" + line_of("again"));
}

TEST_F(MemMsgLosses, OfOneDestinationAreNotThoseOfAnother)
{
    ASSERT_TRUE(mem_msg_redirect_to_file("/dev/full"));
    EXPECT_FALSE(info("lost"));
    ASSERT_TRUE(mem_msg_redirect_to_file(m_dir.text("log.txt").c_str()));
    EXPECT_TRUE(info("one"));
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_EQ(m_dir.read("log.txt"), line_of("one"));
}

TEST_F(MemMsgLosses, NoneOfDescriptorsByRedirections)
{
    auto const count = [] { return entry_names("/proc/self/fd").size(); };
    std::size_t const before = count();
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(mem_msg_redirect_to_file(m_dir.text("log.txt").c_str()));
        EXPECT_TRUE(info("one"));
    }
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_EQ(count(), before);
}

TEST_F(MemMsgLosses, NoneOfTheOrderWithTheToolsOwnText)
{
    {
        OutputTo const output(m_pipe.writer());
        std::printf("one\n");
        info("two");
        std::printf("three\n");
        info("four");
    }
    EXPECT_EQ(m_pipe.drain(), "one\n" + line_of("two") + "three\n" + line_of("four"));
}

// A line of one thread stays whole although others wait for room at the same time.
TEST_F(MemMsgLosses, TearNoLineOfOtherThreads)
{
    constexpr int THREADS = 4;
    constexpr int ROUNDS = 50;
    auto const text_of = [](int thread) { return std::string(9000, static_cast<char>('a' + thread)); };
    m_pipe.stop_blocking();
    SlowReader reader(m_pipe, THREADS * ROUNDS * line_of(text_of(0)).size());
    {
        OutputTo const output(m_pipe.writer());
        std::vector<std::thread> threads;
        for (int thread = 0; thread < THREADS; ++thread)
            threads.emplace_back([&text_of, thread] {
                for (int round = 0; round < ROUNDS; ++round)
                    info(text_of(thread));
            });
        for (std::thread &thread : threads)
            thread.join();
    }
    std::string const text = reader.text();
    ASSERT_EQ(text.size(), THREADS * ROUNDS * line_of(text_of(0)).size());
    for (std::size_t at = 0; at < text.size(); at += line_of(text_of(0)).size()) {
        std::string const line = text.substr(at, line_of(text_of(0)).size());
        ASSERT_EQ(line, line_of(text_of(line[10] - 'a'))) << "at " << at;
    }
}

} // namespace
