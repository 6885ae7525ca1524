// Changes of one file by many threads and processes at once: no key is lost.
#include "gen_string_sys.h"

#include "tests/support/child_process.h"
#include "tests/support/own_executable.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

namespace {

constexpr int WRITERS = 4;
constexpr int KEYS_EACH = 200;

// Writes the keys of one writer, as the child does, and returns how many calls failed.
int write_keys(std::string const &file, int writer)
{
    int failures = 0;
    for (int key = 0; key < KEYS_EACH; ++key) {
        std::string const name = "w" + std::to_string(writer) + "k" + std::to_string(key);
        if (gen_writeprivateprofilestring("keys", name.c_str(), std::to_string(key).c_str(), file.c_str()) == 0)
            ++failures;
    }
    return failures;
}

// The keys of all writers that the file doesn't contain.
std::vector<std::string> lost_keys(std::string const &text)
{
    std::vector<std::string> lost;
    for (int writer = 0; writer < WRITERS; ++writer)
        for (int key = 0; key < KEYS_EACH; ++key) {
            std::string const name = "w" + std::to_string(writer) + "k" + std::to_string(key);
            if (count_of(text, "\n" + name + "=" + std::to_string(key) + "\n") != 1)
                lost.push_back(name);
        }
    return lost;
}

} // namespace

TEST(GenWriteprivateprofilestringShared, LosesNoKeyOfThreads)
{
    TempDir const dir;
    std::string const file = dir.text("tool.ini");
    std::vector<std::thread> threads;
    std::vector<int> failures(WRITERS, -1);
    for (int i = 0; i < WRITERS; ++i)
        threads.emplace_back([&, i] { failures[static_cast<std::size_t>(i)] = write_keys(file, i); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(failures, testing::Each(0));
    EXPECT_THAT(lost_keys(without_carriage_returns(dir.read("tool.ini"))), testing::IsEmpty());
    EXPECT_THAT(entry_names(dir.path()), testing::ElementsAre("tool.ini"));
}

TEST(GenWriteprivateprofilestringShared, LosesNoKeyOfProcesses)
{
    TempDir const dir;
    std::string const file = dir.text("tool.ini");
    std::string const child =
        (own_executable().parent_path() / (ON_WINDOWS ? "gen_ini_file_child.exe" : "gen_ini_file_child")).string();
    std::vector<ChildProcess> children;
    for (int i = 0; i < WRITERS; ++i)
        children.emplace_back(child, '"' + file + "\" " + std::to_string(i) + ' ' + std::to_string(KEYS_EACH));
    for (ChildProcess &process : children) {
        ChildResult const result = process.wait();
        EXPECT_EQ(result.status, 0) << result.output;
    }
    EXPECT_THAT(lost_keys(without_carriage_returns(dir.read("tool.ini"))), testing::IsEmpty());
    EXPECT_THAT(entry_names(dir.path()), testing::ElementsAre("tool.ini"));
}
