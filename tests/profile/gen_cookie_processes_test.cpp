// Processes that write one cookie log at the same time, each the first as far as it knows.
#include "gen_cookie_sys.h"

#include "gen_profile_bins_sys.h"
#include "mem_sys.h"
#include "tests/support/message_recorder.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int ROUNDS = 200;
constexpr int PROCESSES = 2;
constexpr int COOKIES = 100;

constexpr char FILE_NAME[] = "cookie_db_tool.log";

std::string description(int process, int cookie)
{
    return "process " + std::to_string(process) + " cookie " + std::to_string(cookie);
}

// A process that waits for the end of the start line with its cookies logged. It ends by a signal if that hangs.
void log_cookies(int process, int start_line)
{
    alarm(60);
    mem_cfg_set("gen_print_cookie_log", "on");
    MessageRecorder const messages;
    GEN_PROFILE_BINS::initialize("R", /*primary=*/true, /*debug_messages=*/false);
    for (int k = 0; k < COOKIES; ++k)
        gen_log_cookie(description(process, k).c_str(), 1);
    char none;
    while (read(start_line, &none, 1) < 0)
        continue;
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

// Runs all processes to their ends; they write at the same time.
void race()
{
    int start_line[2];
    ASSERT_EQ(pipe(start_line), 0);
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; ++process) {
        pid_t const child = fork();
        if (child == 0) {
            close(start_line[1]);
            log_cookies(process, start_line[0]);
            std::_Exit(0);
        }
        children.push_back(child);
    }
    close(start_line[1]);
    for (pid_t const child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    close(start_line[0]);
}

} // namespace

// Each row is there once, whole, and one heading is.
TEST(GenCookieProcesses, LoseNoRows)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    for (int round = 0; round < ROUNDS; ++round) {
        race();
        std::vector<std::string> lines = lines_of(directory.read(FILE_NAME), "\n");
        std::filesystem::remove(directory.path() / FILE_NAME);
        ASSERT_EQ(lines.size(), 4U + PROCESSES * COOKIES) << "round " << round;
        ASSERT_EQ(std::count(lines.begin(), lines.end(), "Cookie Database file for tool"), 1) << "round " << round;
        for (int process = 0; process < PROCESSES; ++process)
            for (int k = 0; k < COOKIES; ++k) {
                std::string row = description(process, k);
                row.resize(60, ' ');
                row += "|1                        |R";
                ASSERT_EQ(std::count(lines.begin(), lines.end(), row), 1) << "round " << round << ": " << row;
            }
    }
}

// Another process creates the file at the last moment; it writes its heading later.
TEST(GenCookieProcesses, AppendToTheFileOfTheFirst)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    MessageRecorder const messages;
    mem_cfg_set("gen_print_cookie_log", "on");
    GEN_PROFILE_BINS::initialize("R", /*primary=*/true, /*debug_messages=*/false);
    gen_log_cookie("cookie", 1);
    GEN_PROFILE_BINS::close(nullptr);
    {
        SystemCallFaults const faults({{"open", SystemCallFault::NO_ERROR, 1, 1,
                                        [&directory] { directory.write(FILE_NAME, "row of the first\n"); }}});
        GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
        EXPECT_EQ(faults.met(), 1);
    }
    std::vector<std::string> const lines = lines_of(directory.read(FILE_NAME), "\n");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "row of the first");
    EXPECT_EQ(lines[1].substr(0, 7), "cookie ");
}
