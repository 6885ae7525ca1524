// Dumps that end by an exception: the bins and the dumps after them work as before, and no file stays open. Each
// allocation of a dump fails in turn; the replaced operator new reaches into the library.
#include "gen_profile_bins_sys.h"

#include "tests/support/message_recorder.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
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

std::ptrdiff_t open_file_count()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
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
    std::ptrdiff_t const files = open_file_count();
    EXPECT_GT(fail_at_each_allocation(placer, "dump.log"), 10U);
    EXPECT_EQ(open_file_count(), files);
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
