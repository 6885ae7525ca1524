// Messages and forks, which Windows doesn't have.
#include "mem_sys.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Ends the child of a fork that hangs, by a signal.
constexpr unsigned HANG_GUARD_SEC = 60;

bool is_full(int descriptor)
{
    pollfd query{descriptor, POLLOUT, 0};
    return poll(&query, 1, 0) == 0;
}

// The child, whose standard output nobody reads.
int emit_to_file(std::string const &path)
{
    alarm(HANG_GUARD_SEC);
    bool const is_emitted =
        mem_msg_redirect_to_file(path.c_str()) && mem_msg_local_vinfo("T", "from the child", nullptr);
    return is_emitted ? 0 : 1;
}

} // namespace

// A thread is inside a write that ends only when its reader reads.
TEST(MemMsgFork, WaitsForNoWriter)
{
    TempDir const dir;
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    int const output = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    std::thread writer([] {
        for (int k = 0; k < 1000; ++k)
            mem_msg_local_vinfo("T", "more than the pipe holds", nullptr);
    });
    while (!is_full(ends[1]))
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // on its way into the write that blocks
    pid_t const child = fork();
    if (child == 0)
        std::_Exit(emit_to_file(dir.text("log.txt")));
    int status = -1;
    waitpid(child, &status, 0);

    std::thread reader([&ends] {
        char part[4096];
        while (read(ends[0], static_cast<char *>(part), sizeof part) > 0)
            continue;
    });
    writer.join();
    dup2(output, STDOUT_FILENO);
    close(output);
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(dir.read("log.txt"), "Info (T): from the child\n");
}
