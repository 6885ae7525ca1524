#include "gen_cookie_sys.h"

#include "gen_profile_bins_sys.h"
#include "mem_sys.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <locale>
#include <thread>

using testing::Contains;
using testing::ElementsAre;

namespace {

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

constexpr char const *LINE_END = ON_WINDOWS ? "\r\n" : "\n"; // of a file that is read by its bytes

std::string row(std::string const &description, std::string const &hash, std::string const &path)
{
    return padded(description, 60) + '|' + padded(hash, 25) + '|' + path;
}

std::vector<std::string> heading(std::string const &name)
{
    return {"Cookie Database file for " + name, "",
            padded("Description", 60) + '|' + padded("Hash Val", 25) + '|' + padded("Path", 20), std::string(200, '-')};
}

// A file whose heading was written first.
std::vector<std::string> fresh_file(std::string const &name, std::vector<std::string> const &rows)
{
    std::vector<std::string> lines = heading(name);
    lines.insert(lines.end(), rows.begin(), rows.end());
    return lines;
}

void open_bin(char const *name)
{
    GEN_PROFILE_BINS::open("TST", name, GEN_PB_FLAG_IMMEDIATE);
}
void close_bin()
{
    GEN_PROFILE_BINS::close(nullptr);
}

// At least one row for each cookie of each thread.
void expect_rows_of_threads(std::vector<std::string> lines, int threads, std::uint64_t cookies)
{
    std::sort(lines.begin(), lines.end());
    for (int i = 0; i < threads; ++i)
        for (std::uint64_t k = 0; k < cookies; ++k) {
            std::string const wanted = row("thread " + std::to_string(i), std::to_string(k), "");
            ASSERT_TRUE(std::binary_search(lines.begin(), lines.end(), wanted)) << wanted;
        }
}

// A test in a fresh directory, with the log on.
class GenCookie : public testing::Test
{
protected:
    GenCookie() { mem_cfg_set("gen_print_cookie_log", "on"); }

    static void start(bool primary = true, bool debug_messages = false)
    {
        GEN_PROFILE_BINS::initialize("Root", primary, debug_messages);
    }

    static void finish(char const *name = "tool") { GEN_PROFILE_BINS::finalize(name, /*close_root=*/true); }

    bool has_file(std::string const &name = "tool") const
    {
        return std::filesystem::exists(m_directory.path() / ("cookie_db_" + name + ".log"));
    }

    std::vector<std::string> file(std::string const &name = "tool") const
    {
        return lines_of(m_directory.read("cookie_db_" + name + ".log"), LINE_END);
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

} // namespace

TEST_F(GenCookie, WritesGroupsInTheOrderOfTheFlow)
{
    start();
    open_bin("X");
    gen_log_cookie("b", 2);
    gen_log_cookie("a", 18446744073709551615U);
    gen_log_cookie("c", 0);
    close_bin();
    open_bin("Y");
    open_bin("Y1");
    gen_log_cookie("a", 4);
    close_bin();
    close_bin();
    open_bin("X"); // the same path again is a group of its own
    gen_log_cookie("0", 5);
    close_bin();
    finish();
    std::vector<std::string> const rows = {
        row("a", "18446744073709551615", "Root::X"),
        row("b", "2", "Root::X"),
        row("c", "0", "Root::X"),
        row("a", "4", "Root::Y::Y1"),
        row("0", "5", "Root::X"),
    };
    EXPECT_EQ(file(), fresh_file("tool", rows));
    EXPECT_THAT(m_messages.messages(),
                Contains(RecordedMessage{MEM_MSG_DEBUG, "GEN", "Cookie logged a: 18446744073709551615"}));
}

TEST_F(GenCookie, SortsByDescriptionThenByPath)
{
    // Without a bin the path is empty, and the first cookies join the group of the first path.
    gen_log_cookie("m", 1);
    gen_log_cookie("B", 2);
    start();
    open_bin("X");
    gen_log_cookie("m", 3);
    gen_log_cookie("a", 4);
    gen_log_cookie("", 5);
    close_bin();
    EXPECT_FALSE(has_file()) << "finalize writes it";
    finish();
    std::vector<std::string> const rows = {
        row("", "5", "Root::X"), row("B", "2", ""),        row("a", "4", "Root::X"),
        row("m", "1", ""),       row("m", "3", "Root::X"),
    };
    EXPECT_EQ(file(), fresh_file("tool", rows));
}

// Too many for any sort to leave them in the order in which they came.
TEST_F(GenCookie, SortsManyOfOneNameByPath)
{
    constexpr std::size_t COOKIES = 100;
    for (std::size_t k = 0; k < COOKIES; ++k)
        gen_log_cookie("m", 1);
    start();
    for (std::size_t k = 0; k < COOKIES; ++k)
        gen_log_cookie("m", 1);
    finish();
    std::vector<std::string> rows(COOKIES, row("m", "1", ""));
    rows.resize(2 * COOKIES, row("m", "1", "Root"));
    EXPECT_EQ(file(), fresh_file("tool", rows));
}

TEST_F(GenCookie, TakesTwoCookiesOfOneNameAndLongNames)
{
    std::string const long_name(70, 'd');
    start();
    gen_log_cookie("twice", 1);
    gen_log_cookie("twice", 2);
    gen_log_cookie(long_name.c_str(), 3);
    gen_log_cookie(nullptr, 4);
    finish();
    std::vector<std::string> const lines = file();
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines[4], row("", "4", "Root"));
    EXPECT_EQ(lines[5], long_name + '|' + padded("3", 25) + "|Root");
    EXPECT_EQ(lines[6], row("twice", "1", "Root"));
    EXPECT_EQ(lines[7], row("twice", "2", "Root"));
}

TEST_F(GenCookie, SortsManyOfOneNameAndPathByValue)
{
    constexpr std::size_t COOKIES = 100;
    start();
    for (std::size_t k = COOKIES; k != 0; --k)
        gen_log_cookie("m", k);
    finish();
    std::vector<std::string> rows;
    for (std::size_t k = 1; k <= COOKIES; ++k)
        rows.push_back(row("m", std::to_string(k), "Root"));
    EXPECT_EQ(file(), fresh_file("tool", rows));
}

TEST_F(GenCookie, IsWrittenOnlyWhenAskedFor)
{
    struct Case
    {
        char const *key;
        bool primary;
        bool debug_messages;
        bool is_written;
    };
    constexpr Case CASES[] = {
        {"off", true, true, false}, {nullptr, true, true, false}, {"on", false, false, false},
        {"on", true, false, true},  {"on", false, true, true},    {"on", true, true, true},
    };
    for (Case const &c : CASES) {
        mem_cfg_set("gen_print_cookie_log", c.key);
        start(c.primary, c.debug_messages);
        gen_log_cookie("cookie", 1);
        finish("asked");
        EXPECT_EQ(has_file("asked"), c.is_written) << c.key << c.primary << c.debug_messages;
        std::filesystem::remove(m_directory.path() / "cookie_db_asked.log");
    }
}

TEST_F(GenCookie, AppendsWithoutASecondHeading)
{
    std::string const former = "anything\n";
    m_directory.write("cookie_db_tool.log", former);
    start();
    gen_log_cookie("cookie", 1);
    finish();
    std::string const text = m_directory.read("cookie_db_tool.log");
    EXPECT_EQ(text.substr(0, former.size()), former);
    EXPECT_THAT(lines_of(text.substr(former.size()), LINE_END), ElementsAre(row("cookie", "1", "Root")));
}

TEST_F(GenCookie, WritesNoHeadingIntoAnEmptyFile)
{
    m_directory.write("cookie_db_tool.log", "");
    start();
    gen_log_cookie("cookie", 1);
    finish();
    EXPECT_THAT(file(), ElementsAre(row("cookie", "1", "Root")));
}

// As a process leaves it that was ended within a write.
TEST_F(GenCookie, EndsAnUnfinishedLineFirst)
{
    struct Case
    {
        std::string former;
        std::string end;
    };
    for (Case const &c : {Case{"half a row", LINE_END}, Case{"\n", ""}, Case{std::string("a\n\0", 3), LINE_END}}) {
        m_directory.write("cookie_db_tool.log", c.former);
        start();
        finish();
        EXPECT_EQ(m_directory.read("cookie_db_tool.log"), c.former + c.end) << c.former;
    }
}

// The logged cookies stay, and so does the last group, which is then written once more.
TEST_F(GenCookie, WritesEverythingAgainAtASecondFinalize)
{
    start();
    gen_log_cookie("first", 1);
    finish();
    start();
    open_bin("X");
    gen_log_cookie("second", 2);
    close_bin();
    finish("again");
    EXPECT_EQ(file().size(), 5u);
    std::vector<std::string> const rows = {
        row("first", "1", "Root"),
        row("first", "1", "Root"),
        row("second", "2", "Root::X"),
    };
    EXPECT_EQ(file("again"), fresh_file("again", rows));
}

// Cookies that are logged with the log off, or after the end of the bins, wait for a finalize that writes.
TEST_F(GenCookie, CollectsAtAnyTime)
{
    mem_cfg_set("gen_print_cookie_log", "off");
    start();
    gen_log_cookie("off", 1);
    finish();
    EXPECT_FALSE(has_file());
    gen_log_cookie("between", 2);
    mem_cfg_set("gen_print_cookie_log", "on");
    start();
    finish();
    gen_log_cookie("after", 3);
    start();
    finish();
    std::vector<std::string> const first = {
        row("off", "1", "Root"), // of the first finalize
        row("off", "1", "Root"), // as the path changed
        row("between", "2", ""),
    };
    std::vector<std::string> second = first;
    second.insert(second.end(), {row("after", "3", ""), row("between", "2", "")}); // one group without a path
    std::vector<std::string> rows = first;
    rows.insert(rows.end(), second.begin(), second.end());
    EXPECT_EQ(file(), fresh_file("tool", rows));
}

// Such a bin has no root above it.
TEST_F(GenCookie, TakesThePathOfABinAfterTheClosedRoot)
{
    start();
    close_bin();
    open_bin("A");
    open_bin("B");
    gen_log_cookie("cookie", 1);
    close_bin();
    close_bin();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
    EXPECT_EQ(file(), fresh_file("tool", {row("cookie", "1", "A::B")}));
}

TEST_F(GenCookie, WritesAHeadingAlone)
{
    start();
    finish();
    EXPECT_EQ(file(), heading("tool"));
}

TEST_F(GenCookie, SaysNothingOfAFileThatCannotBeOpened)
{
    std::filesystem::create_directory(m_directory.path() / "cookie_db_tool.log");
    start();
    gen_log_cookie("cookie", 1);
    m_messages.clear();
    finish();
    for (std::string const &line : m_messages.lines())
        EXPECT_EQ(line.find("cookie"), std::string::npos) << line;
    EXPECT_TRUE(std::filesystem::is_directory(m_directory.path() / "cookie_db_tool.log"));
}

TEST_F(GenCookie, KeepsItsNumbersUnderAnyLocale)
{
    struct Grouped : std::numpunct<char>
    {
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale const former = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    start();
    gen_log_cookie("cookie", 1234567);
    finish();
    std::locale::global(former);
    EXPECT_THAT(file(), Contains(row("cookie", "1234567", "Root")));
}

TEST_F(GenCookie, HasNoPathOnAnotherThread)
{
    start();
    open_bin("X");
    std::thread([] { gen_log_cookie("other", 1); }).join();
    close_bin();
    finish();
    EXPECT_THAT(file(), Contains(row("other", "1", "")));
}

TEST_F(GenCookie, TakesCookiesOfManyThreads)
{
    constexpr int THREADS = 16;
    constexpr std::uint64_t COOKIES = 200;
    start();
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([] {
            for (std::uint64_t k = 0; k < COOKIES; ++k)
                gen_log_cookie("thread", k);
        });
    for (std::uint64_t k = 0; k < COOKIES; ++k) {
        open_bin("X");
        gen_log_cookie("flow", k);
        close_bin();
    }
    for (std::thread &thread : threads)
        thread.join();
    finish();
    std::vector<std::string> const lines = file();
    EXPECT_EQ(lines.size(), 4 + (THREADS + 1) * COOKIES);
    for (std::uint64_t k = 0; k < COOKIES; ++k) {
        std::string const number = std::to_string(k);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), row("thread", number, "")), THREADS) << k;
        EXPECT_EQ(std::count(lines.begin(), lines.end(), row("flow", number, "Root::X")), 1) << k;
    }
}

// Without files, so that nearly all of the time is that of the log. The owner's cookies keep the pending groups short.
// The last file contains every cookie.
TEST_F(GenCookie, TakesCookiesWhileRunsEnd)
{
    constexpr int THREADS = 4;
    constexpr std::uint64_t COOKIES = 20000;
    mem_cfg_set("gen_print_cookie_log", "off");
    std::atomic<int> working{THREADS};
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([i, &working] {
            for (std::uint64_t k = 0; k < COOKIES; ++k)
                gen_log_cookie(("thread " + std::to_string(i)).c_str(), k);
            --working;
        });
    while (working != 0) {
        start();
        gen_log_cookie("owner", 0);
        finish();
    }
    for (std::thread &thread : threads)
        thread.join();
    mem_cfg_set("gen_print_cookie_log", "on");
    start();
    finish();
    expect_rows_of_threads(file(), THREADS, COOKIES);
}

// The next file contains what was too late for the first one.
TEST_F(GenCookie, TakesCookiesWhileTheLogIsWritten)
{
    constexpr int THREADS = 4;
    constexpr std::uint64_t COOKIES = 5000;
    start();
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([i] {
            for (std::uint64_t k = 0; k < COOKIES; ++k)
                gen_log_cookie(("thread " + std::to_string(i)).c_str(), k);
        });
    finish();
    for (std::thread &thread : threads)
        thread.join();
    start();
    finish("again");
    expect_rows_of_threads(file("again"), THREADS, COOKIES);
}

TEST(GenCookieDeathTest, TakesCookiesWhileTheProcessEnds)
{
    EXPECT_EXIT(
        {
            std::atexit([] { gen_log_cookie("late", 1); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}
