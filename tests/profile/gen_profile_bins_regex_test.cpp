// The line that precedes the internal error of a key that is not a regular expression. The configuration reads its
// files once, so that each test is a process of its own.
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include "tests/support/environment.h"
#include "tests/support/internal_error.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::StartsWith;

// Information messages go to the stream that a death test reads.
void show(MEM_MSG_KIND kind, char const *module, char const *text, void *)
{
    if (kind == MEM_MSG_INFO)
        std::fprintf(stderr, "%s: %s\n", module, text);
}

void start()
{
    mem_msg_redirect(show, nullptr);
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/false, /*debug_messages=*/false);
}

auto dies_after(std::string const &origin, std::string const &key, std::string const &value)
{
    return AllOf(StartsWith("GEN: " + origin + ": the value of \"" + key + "\" is not a regular expression\n"),
                 dies_with("Error compiling regular expression \"" + value + "\"", "gen_profile_bins*"));
}

class GenProfileBinsRegexDeathTest : public testing::Test
{
protected:
    GenProfileBinsRegexDeathTest() : m_current_directory(m_dir.path()) {}

    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory;
};

TEST_F(GenProfileBinsRegexDeathTest, NamesFileAndLineOfTheKey)
{
    m_dir.write("kalvern.ini", "# the bins\n\ngen_mem_fileline_profile_bin = fit(\n");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_after("kalvern.ini:3", "gen_mem_fileline_profile_bin", "fit("));
}

TEST_F(GenProfileBinsRegexDeathTest, NamesTheFileOfTheVariable)
{
    m_dir.write("named.cfg", "gen_tracq_profile_tag = [%s\n");
    m_dir.write("kalvern.ini", "gen_tracq_profile_tag = (\n");
    Environment const variable("KALVERN_INI", "named.cfg");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_after("named.cfg:1", "gen_tracq_profile_tag", "[%s"));
}

TEST_F(GenProfileBinsRegexDeathTest, NamesTheCallThatSetTheKey)
{
    m_dir.write("kalvern.ini", "gen_tracq_profile_bin = (\n");
    mem_cfg_set("gen_tracq_profile_bin", "*");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_after("mem_cfg_set", "gen_tracq_profile_bin", "*"));
}

} // namespace
