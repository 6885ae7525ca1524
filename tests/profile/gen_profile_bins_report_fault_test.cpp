// Reports that end by an exception: the bins and the reports after them work as before, and no file stays open. Each
// allocation of a report fails in turn; the replaced operator new reaches into the library.
#include "gen_profile_bins_sys.h"

#include "tests/support/message_recorder.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <new>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

constexpr std::size_t ALL = std::numeric_limits<std::size_t>::max();

std::size_t l_successes_left = ALL; // allocations up to the one that fails; ALL if none does

void *allocate(std::size_t size)
{
    if (l_successes_left == 0) {
        l_successes_left = ALL;
        throw std::bad_alloc();
    }
    if (l_successes_left != ALL)
        --l_successes_left;
    if (void *const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

class GenProfileBinsReportFault : public testing::Test
{
protected:
    // Dumps again and again, with a later allocation failing each time, until a dump ends before one fails. Returns the
    // number of the dumps that ended by an exception.
    static std::size_t fail_at_each_allocation(GEN_PROFILE_BIN *bin, char const *file)
    {
        std::size_t failures = 0;
        for (std::size_t successes = 0;; ++successes) {
            l_successes_left = successes;
            try {
                bin->dump(file, /*collect_tags=*/true);
            } catch (std::bad_alloc const &) {
                ++failures;
            }
            if (l_successes_left != ALL)
                break;
        }
        l_successes_left = ALL;
        return failures;
    }

    // Runs a flow in which a tag moves so many bins below one that it looks them up in an index, and another one moves
    // the bins that contained them. Returns the root, which is closed.
    static GEN_PROFILE_BIN *run_tagged_flow()
    {
        GEN_PROFILE_BIN *const root = start_bins("Fitter");
        int leaf = 0;
        for (char const *stage : {"Placer", "Router"}) {
            open_bin("Plan");
            GEN_PROFILE_BINS::open_with_tag("TST", stage, GEN_PB_FLAG_IMMEDIATE, "stages");
            for (int i = 0; i < LEAVES / 2; ++i) {
                GEN_PROFILE_BINS::open_with_tag("TST", leaf_name(leaf++).c_str(), GEN_PB_FLAG_IMMEDIATE, "leaves");
                close_bin();
            }
            close_bin();
            close_bin();
        }
        close_bin();
        return root;
    }

    static std::string leaf_name(int leaf) { return "leaf of a long name, " + std::to_string(leaf) + "."; }

    // Whether a report has one row for each leaf. Other bins with a tag also have copies above the leaves.
    testing::AssertionResult has_each_leaf_once(std::string const &file) const
    {
        std::string const report = m_directory.read(file);
        for (int leaf = 0; leaf < LEAVES; ++leaf) {
            std::size_t const count = count_of(report, "::" + leaf_name(leaf) + '\n');
            if (count != 1)
                return testing::AssertionFailure() << count << " times leaf " << leaf << " in\n" << report;
        }
        return testing::AssertionSuccess();
    }

    static constexpr int LEAVES = 40;

    static GEN_PROFILE_BIN *run_flow()
    {
        start_bins("Fitter");
        auto *const placer = open_bin("Placer");
        run_bin("Moves", /*cpu_usec=*/1000000, /*ticks=*/10000000);
        close_bin();
        return placer;
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

} // namespace

TEST_F(GenProfileBinsReportFault, InAFileLeavesNothingSet)
{
    GEN_PROFILE_BIN *const placer = run_flow();
    placer->dump("whole.log", /*collect_tags=*/true);
    std::size_t const files = open_descriptor_count();
    EXPECT_GT(fail_at_each_allocation(placer, "dump.log"), 10U);
    EXPECT_EQ(open_descriptor_count(), files);
    EXPECT_NE(open_bin("Router"), nullptr);
    close_bin();
    placer->dump("dump.log", /*collect_tags=*/true);
    EXPECT_NE(m_directory.read("dump.log"), "");
    EXPECT_EQ(m_directory.read("dump.log"), m_directory.read("whole.log"));
}

TEST_F(GenProfileBinsReportFault, InMessagesLeavesNothingSet)
{
    GEN_PROFILE_BIN *const placer = run_flow();
    m_messages.clear();
    placer->dump(nullptr, /*collect_tags=*/true);
    std::vector<std::string> const whole = m_messages.lines();
    EXPECT_GT(fail_at_each_allocation(placer, nullptr), 10U);
    EXPECT_NE(open_bin("Router"), nullptr);
    close_bin();
    m_messages.clear();
    placer->dump(nullptr, /*collect_tags=*/true);
    EXPECT_EQ(whole.size(), 5U);
    EXPECT_EQ(m_messages.lines(), whole);
}

TEST_F(GenProfileBinsReportFault, ByTheReceiverOfAMessageLeavesNothingSet)
{
    GEN_PROFILE_BIN *const placer = run_flow();
    mem_msg_redirect(
        [](MEM_MSG_KIND, char const *, char const *text, void *) {
            if (parse_row(text).name == "| Moves")
                throw std::runtime_error(text);
        },
        nullptr);
    EXPECT_THROW(placer->dump(nullptr, /*collect_tags=*/false), std::runtime_error);
    EXPECT_THROW(placer->dump(nullptr, /*collect_tags=*/false), std::runtime_error);
    EXPECT_NE(open_bin("Router"), nullptr);
    close_bin();
}

// The events after the one that fails are lost, and those that come later begin a new buffer.
TEST_F(GenProfileBinsReportFault, InAFlushDropsTheRestOfTheBuffer)
{
    constexpr int PAIRS = 20;
    int failures = 0;
    for (std::size_t successes = 0;; ++successes, ++failures) {
        GEN_PROFILE_BIN const *const root = start_bins("Fitter");
        l_successes_left = successes;
        for (int i = 0; i < PAIRS; ++i)
            try {
                GEN_PROFILE_BINS::open("TST", "a name that needs memory", GEN_PB_FLAG_RECORD);
                GEN_PROFILE_BINS::close(nullptr);
                GEN_PROFILE_BINS::open("TST", "another name that needs memory", GEN_PB_FLAG_RECORD);
                GEN_PROFILE_BINS::close(nullptr);
            } catch (std::bad_alloc const &) {
                // The tool goes on.
            }
        bool const is_done = l_successes_left != ALL;
        l_successes_left = ALL;
        // Bins whose close was lost are still open.
        std::vector<std::string> open_bins;
        open_bin("last")->get_path_names(&open_bins, root);
        ASSERT_GE(open_bins.size(), 2U);
        EXPECT_EQ(open_bins.back(), "last");
        for (std::size_t i = 1; i < open_bins.size(); ++i)
            GEN_PROFILE_BINS::close(nullptr);
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
        EXPECT_EQ(m_messages.lines().back().substr(0, 2), "0 ");
        if (is_done)
            break;
    }
    EXPECT_GT(failures, 5);
}

// The failing allocation is one between the main report and the tagged report, in which the bins move. After it,
// finalize() succeeds; it moves the bins anew, wherever they are.
TEST_F(GenProfileBinsReportFault, InTheMovesOfTaggedBinsLeavesEachBinInOnePlace)
{
    constexpr std::size_t MANY = 1000000;
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BIN *const root = run_tagged_flow();
    l_successes_left = MANY;
    root->dump("profile_bins_Fitter.log", /*collect_tags=*/true);
    std::size_t const allocations_of_dump = MANY - l_successes_left;
    l_successes_left = ALL;
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    ASSERT_TRUE(has_each_leaf_once("profile_bins_Fitter.log"));
    ASSERT_TRUE(has_each_leaf_once("profile_bins_tagged_Fitter.log"));

    int failures = 0;
    for (std::size_t successes = allocations_of_dump;; ++successes, ++failures) {
        std::filesystem::remove("profile_bins_tagged_Fitter.log");
        run_tagged_flow();
        l_successes_left = successes;
        EXPECT_THROW(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false), std::bad_alloc);
        if (std::filesystem::exists("profile_bins_tagged_Fitter.log"))
            break;
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
        ASSERT_TRUE(has_each_leaf_once("profile_bins_Fitter.log")) << successes;
        ASSERT_TRUE(has_each_leaf_once("profile_bins_tagged_Fitter.log")) << successes;
    }
    EXPECT_GT(failures, LEAVES);
}

// The flow can write its report after all.
TEST_F(GenProfileBinsReportFault, AtTheEndOfARunLeavesNothingSet)
{
    mem_cfg_set("gen_print_profile_bins", "on");
    run_flow();
    close_bin();
    std::size_t failures = 0;
    for (std::size_t successes = 0; m_directory.read("profile_bins_tool.log").find("Estimated") == std::string::npos;
         ++successes) {
        l_successes_left = successes;
        try {
            GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
        } catch (std::bad_alloc const &) {
            ++failures;
        }
        l_successes_left = ALL;
        ASSERT_LT(successes, 10000U);
    }
    EXPECT_GT(failures, 10U);
}

void *operator new(std::size_t size)
{
    return allocate(size);
}

// The sanitizers' own form of this operator doesn't call the other one.
void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    try {
        return allocate(size);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
