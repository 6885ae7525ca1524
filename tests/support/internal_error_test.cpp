#include "tests/support/internal_error.h"

#include "err_sys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::ExitedWithCode;
using testing::Not;

namespace {

// The report of an internal error in the source `source`.
std::string report_of(std::string const &text, std::string const &library, std::string const &source)
{
    return "Internal error: " + text + "\n  Library: " + library + "\n  Source:  " + source +
           "\n  Version: 1.0.0\n  Process: 4711, /opt/kalvern/bin/fitter\n";
}

std::string const TIME_REPORT = report_of("user != 0", "GEN", "gen/gen_time.cpp, line 96");

TEST(DiesWith, AcceptsAReport)
{
    EXPECT_THAT(TIME_REPORT, dies_with("user != 0", "gen_time"));
    EXPECT_THAT("before\n" + TIME_REPORT + "after\n", dies_with("user != 0", "gen_time"));
    EXPECT_THAT(report_of("", "GEN", "gen/a.cpp, line 1"), dies_with("", "a"));
    EXPECT_THAT(report_of("two\nlines", "GEN", "gen/a.cpp, line 12345"), dies_with("two\nlines", "a"));
}

TEST(DiesWith, RejectsAnotherText)
{
    for (char const *text : {"user != 00", "user != ", "ser != 0", "kernel != 0", "", "user != 0\n"})
        EXPECT_THAT(TIME_REPORT, Not(dies_with(text, "gen_time"))) << text;
}

TEST(DiesWith, RejectsATextThatDoesNotBeginALine)
{
    EXPECT_THAT("x" + TIME_REPORT, Not(dies_with("user != 0", "gen_time")));
}

TEST(DiesWith, RejectsAnotherLibrary)
{
    for (char const *library : {"MEM", "GENERAL", "", "gen"})
        EXPECT_THAT(report_of("a", library, "gen/a.cpp, line 1"), Not(dies_with("a", "a"))) << library;
}

TEST(DiesWith, RejectsAnotherSource)
{
    for (char const *source :
         {"gen/time/gen_time.cpp, line 9", "/gen/gen_time.cpp, line 9", "gen/gen_time_units.cpp, line 9",
          "/home/gen/gen_time.cpp, line 9", "./gen/gen_time.cpp, line 9", "gen\\gen_time.cpp, line 9",
          "h/gen_time.cpp, line 9", "gen_time.cpp, line 9", "gen/gen_time.h, line 9", "gen/gen_time, line 9", ""})
        EXPECT_THAT(report_of("a", "GEN", source), Not(dies_with("a", "gen_time"))) << source;
}

TEST(DiesWith, RejectsAnythingButALineNumber)
{
    for (char const *line :
         {"", ", line", ", line ", ", line -1", ", line 9 ", ", line x", ", line 9x", " line 9", ":9"})
        EXPECT_THAT(report_of("a", "GEN", std::string("gen/gen_time.cpp") + line), Not(dies_with("a", "gen_time")))
            << line;
}

TEST(DiesWith, RejectsAReportThatIsCut)
{
    std::string const whole = TIME_REPORT.substr(0, TIME_REPORT.find("  Version"));
    ASSERT_THAT(whole, dies_with("user != 0", "gen_time"));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_THAT(whole.substr(0, size), Not(dies_with("user != 0", "gen_time"))) << size << " characters";
}

TEST(DiesWith, AStarMatchesTheRestOfAName)
{
    for (char const *source :
         {"gen/gen_path_.cpp, line 1", "gen/gen_path_search.cpp, line 1", "gen/gen_path_search_cache2.cpp, line 1"})
        EXPECT_THAT(report_of("a", "GEN", source), dies_with("a", "gen_path_*")) << source;
    for (char const *source :
         {"gen/gen_path.cpp, line 1", "gen/gen_path_search.h, line 1", "gen/gen_path_a/b.cpp, line 1",
          "gen/path/gen_path_search.cpp, line 1", "gen/gen_path_a-b.cpp, line 1", "gen/gen_path_.cp, line 1"})
        EXPECT_THAT(report_of("a", "GEN", source), Not(dies_with("a", "gen_path_*"))) << source;
}

TEST(DiesWith, FindsOneOfSeveralReports)
{
    std::string const two = report_of("a", "GEN", "gen/other.cpp, line 1") +
                            report_of("b", "GEN", "gen/b.cpp, line 2") + report_of("a", "GEN", "gen/a.cpp, line 3");
    EXPECT_THAT(two, dies_with("a", "a"));
    EXPECT_THAT(two, dies_with("a", "other"));
    EXPECT_THAT(two, dies_with("b", "b"));
    EXPECT_THAT(two, Not(dies_with("b", "a")));
}

TEST(DiesWith, NamesTheSourceThatItFound)
{
    testing::StringMatchResultListener listener;
    EXPECT_FALSE(dies_with("user != 0", "gen_math").MatchAndExplain(TIME_REPORT, &listener));
    EXPECT_EQ(listener.str(), "which names its source as \"gen/gen_time.cpp, line 96\"");
    testing::StringMatchResultListener other;
    EXPECT_FALSE(dies_with("user", "gen_time").MatchAndExplain(TIME_REPORT, &other));
    EXPECT_EQ(other.str(), "which contains no such text and library");
}

TEST(DiesInSource, ComparesTheWholeName)
{
    std::string const report = report_of("a", "GEN", "h/gen_iterator_sys.h, line 42");
    EXPECT_THAT(report, dies_in_source("a", "h/gen_iterator_sys.h"));
    for (char const *header :
         {"gen_iterator_sys.h", "h/gen_iterator_sys", "gen/gen_iterator_sys.h", "/h/gen_iterator_sys.h"})
        EXPECT_THAT(report, Not(dies_in_source("a", header))) << header;
}

TEST(DiesInSource, AStarMatchesTheExtensionToo)
{
    for (char const *source : {"gen/gen_dep", "gen/gen_dep.cpp", "gen/gen_dep_registry.h"})
        EXPECT_THAT(report_of("a", "GEN", std::string(source) + ", line 7"), dies_in_source("a", "gen/gen_dep*"))
            << source;
    for (char const *source : {"gen/gen_de", "gen/object/gen_dep.cpp", "/gen/gen_dep.cpp", "gen/gen_dep/x.h"})
        EXPECT_THAT(report_of("a", "GEN", std::string(source) + ", line 7"), Not(dies_in_source("a", "gen/gen_dep*")))
            << source;
}

TEST(DiesWithDeathTest, AcceptsARealReport)
{
    EXPECT_EXIT(err_report_internal_error("user != 0", "GEN", "gen/gen_time.cpp", 17),
                ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with("user != 0", "gen_time"));
}

} // namespace
