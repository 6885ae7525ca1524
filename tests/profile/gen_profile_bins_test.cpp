// The profile bins as tools use them, over the real system: guards, reports, and threads that the bins don't belong to.
#include "gen_profile_bins_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <atomic>
#include <memory>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr unsigned PLAIN = GEN_PB_FLAG_RECORD;
constexpr unsigned IMMEDIATE = GEN_PB_FLAG_IMMEDIATE;
constexpr unsigned ANNOUNCED = GEN_PB_FLAG_ANNOUNCE | GEN_PB_FLAG_IMMEDIATE;

constexpr unsigned ALL_METRICS[] = {
    GEN_PB_METRIC_WC,
    GEN_PB_METRIC_CPU,
    GEN_PB_METRIC_START_MEM,
    GEN_PB_METRIC_END_MEM,
    GEN_PB_METRIC_PEAK_MEM,
    GEN_PB_METRIC_WC_EST,
    GEN_PB_METRIC_CPU_ERRORS,
    GEN_PB_METRIC_WC_ERRORS,
    0, // not one at all
};

void start()
{
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
}

std::string current_path()
{
    GEN_PROFILE_BIN const *const bin = gen_profile_bin_get_current_bin();
    return bin == nullptr ? "none" : bin->get_path(nullptr);
}

GEN_PROFILE_BIN &writable(GEN_PROFILE_BIN const *bin)
{
    return *const_cast<GEN_PROFILE_BIN *>(bin);
}

// Every operation that has no effect for a caller that doesn't own the bins, and the current bin, which exists if `bin`
// does. Returns an empty text, or one that names the first operation that had an effect all the same.
std::string use_without_effect(GEN_PROFILE_BIN const *bin)
{
    if (GEN_PROFILE_BINS::open("T", "X", IMMEDIATE) != nullptr || GEN_PROFILE_BINS::open("T", "X", 0) != nullptr ||
        GEN_PROFILE_BINS::open_with_tag("T", "X", ANNOUNCED, "tag") != nullptr ||
        GEN_PROFILE_BINS::open_with_user_tag("T", "X", ANNOUNCED, "tag", "Label") != nullptr)
        return "an open gave a bin";
    if ((gen_profile_bin_get_current_bin() == nullptr) != (bin == nullptr))
        return bin == nullptr ? "there is a current bin" : "there is no current bin";
    {
        GEN_PROFILER const guard("T", "X", IMMEDIATE);
        GEN_PROFILER const copy(guard);
        if (guard.bin() != nullptr || copy.bin() != nullptr)
            return "a guard has a bin";
    }
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::close("wrong");
    GEN_PROFILE_BINS::close_recursively(bin);
    if (bin == nullptr)
        return "";
    writable(bin).close();
    writable(bin).dump(nullptr, false);
    writable(bin).dump("foreign.log", true);
    for (unsigned const metric : ALL_METRICS)
        for (bool const cumulative : {false, true})
            if (bin->get_metric(metric, cumulative) != -1.0)
                return "metric " + std::to_string(metric) + " has a value";
    if (bin->get_last_cpu_sec() != -1.0 || bin->get_last_wc_sec() != -1.0)
        return "a time has a value";
    std::vector<std::string> names;
    bin->get_path_names(&names, nullptr);
    bin->get_path_names(&names, bin);
    if (!names.empty() || !bin->get_path(nullptr).empty() || !bin->get_path("::", bin).empty())
        return "there is a path";
    return "";
}

} // namespace

// Where nothing has an effect.

TEST(GenProfileBins, AreSilentBeforeInitialize)
{
    MessageRecorder const messages;
    EXPECT_EQ(use_without_effect(nullptr), "");
    EXPECT_THAT(messages.lines(), IsEmpty());
    start();
    EXPECT_EQ(current_path(), "Fitter");
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EQ(messages.lines().back().substr(0, 2), "0 ") << "nothing was ignored either";
    EXPECT_TRUE(messages.has("Deleted all bins; buffer was full 0 times"));
}

TEST(GenProfileBins, AreSilentAfterFinalize)
{
    MessageRecorder messages;
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    messages.clear();
    EXPECT_EQ(use_without_effect(nullptr), "");
    EXPECT_THAT(messages.lines(), IsEmpty());
}

TEST(GenProfileBins, AreSilentOnOtherThreadsWhileTheirOwnWorks)
{
    constexpr int THREAD_COUNT = 3;
    constexpr int MIN_ROUNDS = 100;
    constexpr int OWN_ROUNDS = 500;
    TempDir const dir;
    CurrentDirectory const here(dir.path());
    MessageRecorder messages;
    start();
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    GEN_PROFILE_BIN const *const bin = GEN_PROFILE_BINS::open("T", "A", IMMEDIATE);
    messages.clear();

    std::atomic<bool> is_done{false};
    std::vector<std::string> effects(THREAD_COUNT);
    std::vector<std::thread> threads;
    for (std::string &effect : effects)
        threads.emplace_back([&effect, &is_done, bin, root] {
            for (int i = 0; (i < MIN_ROUNDS || !is_done) && effect.empty(); ++i)
                effect = use_without_effect(i % 2 == 0 ? bin : root);
        });
    for (int i = 0; i < OWN_ROUNDS; ++i)
        GEN_PROFILER const guard("T", "B", PLAIN);
    for (int i = 0; i < OWN_ROUNDS; ++i) {
        GEN_PROFILER const guard("T", "D", IMMEDIATE);
        ASSERT_EQ(guard.bin(), gen_profile_bin_get_current_bin());
        ASSERT_GE(guard->get_last_wc_sec(), 0.0);
    }
    is_done = true;
    for (std::thread &thread : threads)
        thread.join();
    for (std::string const &effect : effects)
        EXPECT_EQ(effect, "");

    EXPECT_THAT(messages.lines(), IsEmpty());
    EXPECT_EQ(current_path(), "Fitter/A");
    for (char const *const name : {"B", "D"})
        GEN_PROFILER const guard("T", name, ANNOUNCED);
    std::vector<std::string> const lines = messages.lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "### Opened profile bin 'B' (501) ###");
    EXPECT_EQ(lines[2], "### Opened profile bin 'D' (501) ###");
    GEN_PROFILE_BINS::close("A");
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_TRUE(messages.has("Deleted all bins; buffer was full 100 times")); // two events a round, ten a flush
    EXPECT_EQ(messages.lines().back().substr(0, 2), "0 ") << "no open was ignored";
    EXPECT_FALSE(std::filesystem::exists("foreign.log"));
}

TEST(GenProfileBins, WorkOnTheThreadThatInitializes)
{
    std::string path;
    GEN_PROFILE_BIN const *root = nullptr;
    std::thread([&path, &root] {
        start();
        root = gen_profile_bin_get_current_bin();
        GEN_PROFILER const guard("T", "A", IMMEDIATE);
        path = guard->get_path(nullptr);
    }).join();
    EXPECT_EQ(path, "Fitter/A");
    EXPECT_EQ(gen_profile_bin_get_current_bin(), root);
    EXPECT_EQ(use_without_effect(root), "");
}

TEST(GenProfileBins, ShowTheCurrentBinToEveryThread)
{
    constexpr int THREAD_COUNT = 3;
    constexpr int MIN_ROUNDS = 1000;
    constexpr int OWN_ROUNDS = 2000;
    auto const seen_elsewhere = [] {
        GEN_PROFILE_BIN const *bin = nullptr;
        std::thread([&bin] { bin = gen_profile_bin_get_current_bin(); }).join();
        return bin;
    };
    EXPECT_EQ(seen_elsewhere(), nullptr);
    start();
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(seen_elsewhere(), root);
    GEN_PROFILE_BIN const *const stage = GEN_PROFILE_BINS::open("T", "A", IMMEDIATE);
    EXPECT_EQ(seen_elsewhere(), stage);
    GEN_PROFILE_BINS::close(nullptr);

    // While the owner opens and closes, the others see one of its bins.
    std::atomic<bool> is_done{false};
    std::atomic<int> others{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREAD_COUNT; ++thread)
        threads.emplace_back([&is_done, &others, root, stage] {
            for (int i = 0; i < MIN_ROUNDS || !is_done; ++i) {
                GEN_PROFILE_BIN const *const bin = gen_profile_bin_get_current_bin();
                if (bin != root && bin != stage)
                    ++others;
            }
        });
    for (int i = 0; i < OWN_ROUNDS; ++i)
        GEN_PROFILER const guard("T", "A", i % 2 == 0 ? IMMEDIATE : PLAIN);
    is_done = true;
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(others, 0);

    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
    EXPECT_EQ(seen_elsewhere(), nullptr);
}

// Guards.

TEST(GenProfiler, OpensAndClosesItsBin)
{
    start();
    {
        GEN_PROFILER const a("T", "A", IMMEDIATE);
        EXPECT_EQ(a.bin(), gen_profile_bin_get_current_bin());
        EXPECT_EQ(a->get_path(nullptr), "Fitter/A");
        {
            GEN_PROFILER const b("T", "B::C", IMMEDIATE);
            EXPECT_EQ(b->get_path(nullptr), "Fitter/A/B->C");
        }
        EXPECT_EQ(a.bin(), gen_profile_bin_get_current_bin());
    }
    EXPECT_EQ(current_path(), "Fitter");
}

TEST(GenProfiler, HasNoBinWithoutTheImmediateFlag)
{
    start();
    {
        GEN_PROFILER const guard("T", "A", PLAIN);
        EXPECT_EQ(guard.bin(), nullptr);
        EXPECT_EQ(guard.operator->(), nullptr);
    }
    GEN_PROFILER const flush("T", "B", IMMEDIATE);
    EXPECT_EQ(flush->get_path(nullptr), "Fitter/B");
}

TEST(GenProfiler, HandsOnTagAndLabel)
{
    MessageRecorder messages;
    start();
    struct Case
    {
        char const *name;
        char const *tag;
        char const *user_tag;
        std::size_t message_count; // two of the bin, two of the step
    };
    constexpr Case CASES[] = {
        {"A", nullptr, nullptr, 2}, {"B", "tag", nullptr, 2}, {"C", nullptr, "Label", 4}, {"D", "tag", "Label", 4}};
    for (Case const &c : CASES) {
        messages.clear();
        {
            GEN_PROFILER const guard("MOD", c.name, ANNOUNCED, c.tag, c.user_tag);
        }
        EXPECT_EQ(messages.lines().size(), c.message_count) << c.name;
        for (RecordedMessage const &message : messages.messages())
            EXPECT_EQ(message.module, "MOD") << message;
    }
    EXPECT_THAT(messages.lines().front(), StartsWith("Starting Fitter Step 2 Label at "));
}

TEST(GenProfiler, ACopyTakesOver)
{
    start();
    {
        GEN_PROFILER const first("T", "A", IMMEDIATE);
        {
            GEN_PROFILER const second(first);
            EXPECT_EQ(second.bin(), first.bin());
            EXPECT_EQ(current_path(), "Fitter/A");
        }
        EXPECT_EQ(current_path(), "Fitter");
    }
    EXPECT_EQ(current_path(), "Fitter"); // the first one closes nothing any more
}

TEST(GenProfiler, ACopyOutlivesItsOriginal)
{
    start();
    {
        auto first = std::make_unique<GEN_PROFILER>("T", "A", IMMEDIATE);
        GEN_PROFILER const second(*first);
        GEN_PROFILER const third(second);
        first.reset();
        EXPECT_EQ(current_path(), "Fitter/A");
    }
    EXPECT_EQ(current_path(), "Fitter");
}

TEST(GenProfiler, ACopyClosesWhateverIsInnermost)
{
    start();
    GEN_PROFILER const first("T", "A", IMMEDIATE);
    {
        GEN_PROFILER const second(first);
        GEN_PROFILE_BINS::open("T", "B", IMMEDIATE);
    }
    EXPECT_EQ(current_path(), "Fitter/A");
}

TEST(GenProfilerDeathTest, ClosesByName)
{
    start();
    EXPECT_EXIT(
        {
            GEN_PROFILER const guard("T", "A", IMMEDIATE);
            GEN_PROFILE_BINS::open("T", "B", IMMEDIATE);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with("Can't close bin", "gen_profile_bins*"));
}

TEST(GenProfilerDeathTest, CanBeCopiedOnce)
{
    start();
    GEN_PROFILER const first("T", "A", IMMEDIATE);
    GEN_PROFILER const second(first);
    EXPECT_EXIT(GEN_PROFILER{first}, ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_source("other.m_is_orig", "h/gen_profile_bins_sys.h"));
}

// The whole of it.

TEST(GenProfileBins, WriteTheirReport)
{
    TempDir const dir;
    start();
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    {
        GEN_PROFILER const stage("T", "Stage", PLAIN);
        GEN_PROFILER const part("T", "Part", PLAIN);
    }
    GEN_PROFILE_BINS::close_recursively(root);
    writable(root).dump(dir.text("report.log").c_str(), /*collect_tags=*/false);
    std::string const end_of_line = ON_WINDOWS ? "\r\n" : "\n";
    EXPECT_THAT(dir.read("report.log"),
                AllOf(HasSubstr("\tFitter" + end_of_line), HasSubstr("\tFitter::Stage" + end_of_line),
                      HasSubstr("\tFitter::Stage::Part" + end_of_line)));
}

TEST(GenProfileBins, ReportMemoryOfTheProcess)
{
    start();
    GEN_PROFILE_BIN const *const bin = GEN_PROFILE_BINS::open("T", "A", IMMEDIATE);
    GEN_PROFILE_BINS::close("A");
    double const start_mib = bin->get_metric(GEN_PB_METRIC_START_MEM, /*cumulative=*/false);
    double const peak_mib = bin->get_metric(GEN_PB_METRIC_PEAK_MEM, /*cumulative=*/false);
    EXPECT_GT(start_mib, 0.0);
    EXPECT_GT(bin->get_metric(GEN_PB_METRIC_END_MEM, /*cumulative=*/false), 0.0);
    EXPECT_GE(peak_mib, start_mib);
}

TEST(GenProfileBins, TimesOfAnOpenBinGrow)
{
    start();
    GEN_PROFILER const guard("T", "A", IMMEDIATE);
    double const first = guard->get_last_wc_sec();
    double next = guard->get_last_wc_sec();
    for (int i = 0; i < 100000000 && next == first; ++i)
        next = guard->get_last_wc_sec();
    EXPECT_GT(next, first);
    EXPECT_GE(guard->get_last_cpu_sec(), 0.0);
}
