// A full disk: nothing is reported, nothing is thrown, and the process continues. Linux has a device that is always
// full; Windows has none.
#include "gen_cookie_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_undo_redo_sys.h"

#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class FullDisk : public testing::Test
{
protected:
    void TearDown() override
    {
        for (auto const &entry : std::filesystem::directory_iterator(m_directory.path()))
            EXPECT_TRUE(entry.is_symlink()) << entry.path();
    }

    // A file of this name in the current directory takes no text.
    void fill(std::string const &name) const
    {
        std::filesystem::create_symlink("/dev/full", m_directory.path() / name);
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

} // namespace

TEST_F(FullDisk, TheCookieLogSendsNoMessage)
{
    mem_cfg_set("gen_print_cookie_log", "on");
    fill("cookie_db_tool.log");
    start_bins("Root");
    for (std::uint64_t k = 0; k < 1000; ++k)
        gen_log_cookie("cookie", k);
    m_messages.clear();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(m_messages.lines(), Not(IsEmpty()));
    EXPECT_THAT(m_messages.lines(), testing::Each(Not(HasSubstr("cookie"))));
}

TEST_F(FullDisk, TheLogsOfAStageSendNoFurtherMessage)
{
    mem_cfg_set("gen_enable_mem_fileline_profiling", "on");
    for (char const *dump : {"fileline", "subsystem", "bin stats", "tag stats"})
        mem_fake_set_dump(dump, std::string(100000, 'x'));
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_SOURCES | MEM_TRACKING_STATISTICS));
    for (char const *log : {"fileline", "subsystem", "pbin_tag_stats", "pbin_stats"})
        for (char const *stage : {"prefit", "placer"})
            fill(std::string("mem_tbb_") + log + '.' + stage + ".log");
    start_bins("Fitter");
    run_bin("fit2_fit_plan", 0, 0);
    m_messages.clear();
    run_bin("Placer", 0, 0);
    std::string const first = "Dumping detailed memory logs for the prefit stage of the flow";
    EXPECT_THAT(m_messages.lines(), ElementsAre(first));
    run_bin("fit2_fit_route_init", 0, 0);
    EXPECT_THAT(m_messages.lines(),
                ElementsAre(first, "Dumping detailed memory logs for the placer stage of the flow"));
}

// Only the open of a file is checked.
TEST_F(FullDisk, TheReportsSendNoFurtherMessage)
{
    mem_cfg_set("gen_print_profile_bins", "on");
    fill("profile_bins_tool.log");
    fill("profile_bins_tagged_tool.log");
    start_bins("R");
    GEN_PROFILE_BINS::open_with_tag("TST", "A", GEN_PB_FLAG_IMMEDIATE, "t");
    close_bin();
    close_bin();
    m_messages.clear();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
    EXPECT_THAT(m_messages.lines(),
                ElementsAre("Overhead for bin R is 0.0s (0.0s WC)", "Overhead for bin R is 0.0s (0.0s WC)",
                            "Deleted all bins; buffer was full 0 times", "Dumping bins took 0.0s",
                            "0 bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)"));
}

TEST_F(FullDisk, TheUndoFileSendsNoMessage)
{
    fill("undo_redo.txt");
    GEN_UNDO_REDO_MGR manager;
    manager.start_new_file("");
    manager.begin_section("finished");
    manager.add_undo_command("undo", "");
    manager.end_section();
    CapturedOutput output(StandardStream::OUTPUT);
    CapturedOutput errors(StandardStream::ERROR_OUTPUT);
    EXPECT_NO_THROW(manager.commit_file());
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(errors.text(), "");
    EXPECT_THAT(m_messages.lines(), IsEmpty());
}
