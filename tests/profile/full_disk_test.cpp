// Files that can't be written to their end: the file takes no more text, one information message names file and reason,
// and the flow goes on. Linux has a device that is always full, limits for files, and system calls that a test can
// replace; Windows has none of these.
#include "gen_cookie_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_undo_redo_sys.h"

#include "mem_sys.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

// Faults of the next call for a descriptor of a file of that name; no name, no fault.
struct Fault
{
    std::string file;
    int error;
};
Fault l_write_fault;
Fault l_close_fault;

// The memory logs that were closed, each with the number of those that existed then.
std::vector<std::string> l_closed_logs;

std::string name_of(int descriptor)
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error).filename().string();
}

bool takes_effect(Fault &fault, int descriptor)
{
    if (fault.file.empty() || name_of(descriptor) != fault.file)
        return false;
    errno = fault.error;
    fault = {};
    return true;
}

template <typename Function>
Function *next(char const *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" [[gnu::visibility("default")]] ssize_t write(int descriptor, void const *text, std::size_t size)
{
    static auto *const real = next<ssize_t(int, void const *, std::size_t)>("write");
    return takes_effect(l_write_fault, descriptor) ? -1 : real(descriptor, text, size);
}

extern "C" [[gnu::visibility("default")]] ssize_t writev(int descriptor, iovec const *parts, int count)
{
    static auto *const real = next<ssize_t(int, iovec const *, int)>("writev");
    return takes_effect(l_write_fault, descriptor) ? -1 : real(descriptor, parts, count);
}

extern "C" [[gnu::visibility("default")]] int fclose(std::FILE *file)
{
    static auto *const real = next<int(std::FILE *)>("fclose");
    std::string const name = name_of(fileno(file));
    if (name.rfind("mem_tbb_", 0) == 0)
        l_closed_logs.push_back(std::to_string(entry_names(".").size()) + ": " + name);
    bool const fails = takes_effect(l_close_fault, fileno(file));
    int const error = errno;
    int const result = real(file);
    errno = error;
    return fails ? EOF : result;
}

namespace {

constexpr int ROWS = 1500; // of each file, much more than one block

// Runs that write one file each, the same each time but for what they append to it.

void run_flow(char const *tag)
{
    start_bins("R");
    for (int k = 0; k < ROWS; ++k) {
        GEN_PROFILE_BINS::open_with_tag("TST", ("bin " + std::to_string(k)).c_str(), GEN_PB_FLAG_IMMEDIATE, tag);
        close_bin();
    }
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

void write_report()
{
    mem_cfg_set("gen_print_profile_bins", "on");
    run_flow(nullptr);
}

void write_tagged_report()
{
    mem_cfg_set("gen_print_profile_bins", "on");
    run_flow("tag");
}

void write_cookies_of(int count)
{
    mem_cfg_set("gen_print_profile_bins", "off");
    mem_cfg_set("gen_print_cookie_log", "on");
    start_bins("R");
    for (int k = 0; k < count; ++k)
        gen_log_cookie("cookie", static_cast<std::uint64_t>(k));
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

void write_cookies()
{
    write_cookies_of(ROWS);
}

void write_one_cookie()
{
    write_cookies_of(1);
}

// All files of a selected bin; the dumps of the others are empty.
void write_bin_logs()
{
    mem_cfg_set("gen_print_cookie_log", "off");
    mem_cfg_set("gen_mem_fileline_profile_bin", "Selected");
    mem_fake_set_dump("subsystem", std::string(200000, 'x') + '\n');
    start_bins("R");
    GEN_PROFILE_BINS::open("TST", "Selected", GEN_PB_FLAG_IMMEDIATE);
    GEN_PROFILE_BINS::close("Selected");
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

void write_commands()
{
    GEN_UNDO_REDO_MGR manager;
    manager.start_new_file("");
    manager.begin_section("finished");
    for (int k = 0; k < ROWS; ++k)
        manager.add_undo_command("undo command with some text " + std::to_string(k), "comment of that command");
    manager.end_section();
    manager.commit_file();
}

struct Writer
{
    char const *file;
    void (*write)();
};
constexpr Writer WRITERS[] = {
    {"profile_bins_tool.log", write_report}, {"profile_bins_tagged_tool.log", write_tagged_report},
    {"cookie_db_tool.log", write_cookies},   {"mem_tbb_subsystem_Selected_1.log", write_bin_logs},
    {"undo_redo.txt", write_commands},
};

std::string message_of(Writer const &writer, char const *reason)
{
    return std::string("cannot write \"") + writer.file + "\": " + reason;
}

class FullDisk : public testing::Test
{
protected:
    // The information messages of a run.
    std::vector<std::string> messages_of(Writer const &writer)
    {
        m_messages.clear();
        writer.write();
        std::vector<std::string> lines;
        for (RecordedMessage const &message : m_messages.messages())
            if (message.kind == MEM_MSG_INFO && message.module == "GEN")
                lines.push_back(message.text);
        return lines;
    }

    void remove(Writer const &writer) const { std::filesystem::remove(m_directory.path() / writer.file); }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

TEST_F(FullDisk, SendsOneMessageForAFile)
{
    for (Writer const &writer : WRITERS) {
        std::filesystem::create_symlink("/dev/full", m_directory.path() / writer.file);
        EXPECT_THAT(messages_of(writer), ElementsAre(message_of(writer, "No space left on device")));
        EXPECT_TRUE(std::filesystem::is_symlink(m_directory.path() / writer.file));
        remove(writer);
        EXPECT_THAT(messages_of(writer), ElementsAre()) << writer.file;
        remove(writer);
    }
}

// The part that the system took, and nothing after it.
TEST_F(FullDisk, LeavesTheBeginningOfAFile)
{
    constexpr std::size_t LIMIT = 70000;
    for (Writer const &writer : WRITERS) {
        {
            FileSizeLimit const limit(LIMIT);
            ASSERT_TRUE(limit.is_set());
            // The tagged report is written after the other one.
            EXPECT_THAT(messages_of(writer), Contains(message_of(writer, "File too large")).Times(1));
        }
        std::string const part = m_directory.read(writer.file);
        remove(writer);
        writer.write();
        std::string const whole = m_directory.read(writer.file);
        remove(writer);
        EXPECT_EQ(part.size(), LIMIT) << writer.file;
        EXPECT_GT(whole.size(), LIMIT) << writer.file;
        EXPECT_THAT(whole, StartsWith(part)) << writer.file;
    }
}

// There is room again at once, but a file without its beginning would look complete.
TEST_F(FullDisk, TakesNoTextAfterTheBlockThatFailed)
{
    for (Writer const &writer : WRITERS) {
        l_write_fault = {writer.file, ENOSPC};
        EXPECT_THAT(messages_of(writer), ElementsAre(message_of(writer, "No space left on device")));
        EXPECT_EQ(m_directory.read(writer.file), "") << writer.file;
        remove(writer);
    }
}

// The stream of such a file keeps a short text, and would write it at the close.
TEST_F(FullDisk, TakesNothingOfAShortTextThatFailed)
{
    Writer const writer = {"cookie_db_tool.log", write_one_cookie};
    l_write_fault = {writer.file, ENOSPC};
    EXPECT_THAT(messages_of(writer), ElementsAre(message_of(writer, "No space left on device")));
    EXPECT_EQ(m_directory.read(writer.file), "");
}

// A system may keep text and find at the close that there is no room for it.
TEST_F(FullDisk, ReportsACloseThatFails)
{
    for (Writer const &writer : WRITERS) {
        l_close_fault = {writer.file, EDQUOT};
        EXPECT_THAT(messages_of(writer), ElementsAre(message_of(writer, "Disk quota exceeded")));
        remove(writer);
    }
}

TEST_F(FullDisk, ReportsAWriteAndACloseOnce)
{
    for (Writer const &writer : WRITERS) {
        l_write_fault = {writer.file, EIO};
        l_close_fault = {writer.file, EDQUOT};
        EXPECT_THAT(messages_of(writer), ElementsAre(message_of(writer, "Input/output error")));
        remove(writer);
    }
}

// All logs of a stage, although each of them fails.
TEST_F(FullDisk, ReportsEachLogOfAStage)
{
    mem_cfg_set("gen_enable_mem_fileline_profiling", "on");
    for (char const *dump : {"fileline", "subsystem", "bin stats", "tag stats"})
        mem_fake_set_dump(dump, std::string(100000, 'x'));
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_SOURCES | MEM_TRACKING_STATISTICS));
    for (char const *log : {"fileline", "subsystem", "pbin_tag_stats", "pbin_stats"})
        std::filesystem::create_symlink("/dev/full",
                                        m_directory.path() / (std::string("mem_tbb_") + log + ".prefit.log"));
    start_bins("Fitter");
    run_bin("fit2_fit_plan", 0, 0);
    m_messages.clear();
    run_bin("Placer", 0, 0);
    auto const message = [](std::string const &log) {
        return "cannot write \"mem_tbb_" + log + ".prefit.log\": No space left on device";
    };
    EXPECT_THAT(m_messages.lines(),
                ElementsAre("Dumping detailed memory logs for the prefit stage of the flow", message("fileline"),
                            message("subsystem"), message("pbin_tag_stats"), message("pbin_stats")));
}

// Not a matter of a full disk, but of the calls that this test sees.
TEST_F(FullDisk, IsNeverMetByTwoOpenLogsOfAStage)
{
    mem_cfg_set("gen_enable_mem_fileline_profiling", "on");
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_SOURCES | MEM_TRACKING_STATISTICS));
    start_bins("Fitter");
    run_bin("fit2_fit_plan", 0, 0);
    l_closed_logs.clear();
    run_bin("Placer", 0, 0);
    EXPECT_THAT(l_closed_logs, ElementsAre("1: mem_tbb_fileline.prefit.log", "2: mem_tbb_subsystem.prefit.log",
                                           "3: mem_tbb_pbin_tag_stats.prefit.log", "4: mem_tbb_pbin_stats.prefit.log"));
}

// The contract of receivers forbids it; the run goes on all the same.
TEST_F(FullDisk, SurvivesAReceiverThatThrows)
{
    mem_msg_redirect(
        [](MEM_MSG_KIND kind, char const *, char const *text, void *) {
            if (kind == MEM_MSG_INFO)
                throw std::runtime_error(text);
        },
        nullptr);
    Writer const &commands = WRITERS[4];
    l_close_fault = {commands.file, EDQUOT};
    EXPECT_NO_THROW(commands.write());
    EXPECT_TRUE(l_close_fault.file.empty());
    remove(commands);
}

} // namespace
