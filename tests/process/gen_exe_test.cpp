#include "gen_exe_sys.h"

#include "gen_path_sys.h"
#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/installed_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <optional>

using testing::EndsWith;
using testing::HasSubstr;

namespace {

constexpr char const *RESERVE = "reserve_4gb_of_virtual_memory";
constexpr char SEPARATOR = ON_WINDOWS ? ';' : ':';

std::string native(std::string path)
{
    if (ON_WINDOWS)
        std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// The two entries that are first, with the separator between them.
std::string path_head()
{
    return native(gen_get_module_path()) + SEPARATOR + native(gen_get_ksys_bin_path());
}

std::optional<std::string> variable(char const *name)
{
    char const *const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

class GenExe : public testing::Test
{
protected:
    Environment m_rootdir{"KALVERN_ROOTDIR", nullptr};
    Environment m_bindir{"KALVERN_BINDIR", nullptr};
    Environment m_path{"PATH", std::getenv("PATH")};
    Environment m_no_test{RESERVE, nullptr};
    Environment m_no_ini{"KALVERN_INI", nullptr};
};

} // namespace

TEST_F(GenExe, InitSetsTheRootAndTheDirectoryOfTheModule)
{
    gen_exe_init(0, nullptr);
    EXPECT_EQ(variable("KALVERN_ROOTDIR"), gen_get_kalvern_path());
    EXPECT_EQ(variable("KALVERN_BINDIR"), gen_get_module_path());
    EXPECT_THAT(*variable("KALVERN_ROOTDIR"), EndsWith("/"));
    EXPECT_THAT(*variable("KALVERN_BINDIR"), EndsWith("/"));
}

TEST_F(GenExe, InitPutsTwoEntriesBeforePath)
{
    struct PathCase
    {
        std::string before;
        std::string after_head;
    };
    std::string const separator(1, SEPARATOR);
    PathCase const cases[] = {
        {"/a" + separator + "/b", separator + "/a" + separator + "/b"},
        {separator + "/a", separator + "/a"},                         // brings its own separator
        {separator + separator + "/a", separator + separator + "/a"}, // and is not changed
        {separator, separator},
        {"", separator},
        {"/a" + separator, separator + "/a" + separator},
    };
    for (PathCase const &c : cases) {
        Environment const path("PATH", c.before.c_str());
        gen_exe_init(0, nullptr);
        EXPECT_EQ(variable("PATH"), path_head() + c.after_head) << "PATH " << c.before;
    }
}

TEST_F(GenExe, InitLeavesAnUnsetPathUnset)
{
    Environment const path("PATH", nullptr);
    gen_exe_init(0, nullptr);
    EXPECT_EQ(variable("PATH"), std::nullopt);
    EXPECT_EQ(variable("KALVERN_ROOTDIR"), gen_get_kalvern_path());
    EXPECT_EQ(variable("KALVERN_BINDIR"), gen_get_module_path());
}

TEST_F(GenExe, InitTwicePutsTheEntriesBeforeItTwice)
{
    Environment const path("PATH", "/a");
    gen_exe_init(0, nullptr);
    gen_exe_init(0, nullptr);
    EXPECT_EQ(variable("PATH"), path_head() + SEPARATOR + path_head() + SEPARATOR + "/a");
}

TEST_F(GenExe, InitDoesNotTouchItsArguments)
{
    Environment const path("PATH", "/a");
    char const *arguments[] = {"tool", "-x", nullptr};
    char const **const argument_vector = arguments;
    gen_exe_init(2, argument_vector);
    EXPECT_STREQ(arguments[0], "tool");
    EXPECT_STREQ(arguments[1], "-x");
    EXPECT_EQ(arguments[2], nullptr);
    EXPECT_EQ(variable("PATH"), path_head() + SEPARATOR + "/a");
    EXPECT_EQ(gen_get_command_line(), "");
}

TEST_F(GenExe, InitKeepsStreamAndStdioOutputInOrder)
{
    CapturedOutput output(StandardStream::OUTPUT);
    gen_exe_init(0, nullptr);
    std::cout << "1";
    std::printf("2");
    std::cout << "3";
    std::fflush(stdout);
    EXPECT_EQ(output.text(), "123");
}

TEST_F(GenExe, GettersStayAfterFini)
{
    gen_exe_init(0, nullptr);
    gen_set_project_dir_path("/p");
    gen_set_command_line("tool -x");
    std::string const root = gen_get_kalvern_path();
    gen_exe_fini();
    EXPECT_EQ(gen_get_kalvern_path(), root);
    EXPECT_EQ(gen_get_project_dir_path(), "/p/");
    EXPECT_EQ(gen_get_command_line(), "tool -x");
}

TEST_F(GenExe, CommandLineIsTheTextLastGiven)
{
    EXPECT_EQ(gen_get_command_line(), "");
    std::string text = "tool --project \"a b\"";
    gen_set_command_line(text.c_str());
    text.assign(text.size(), 'x');
    EXPECT_EQ(gen_get_command_line(), "tool --project \"a b\"") << "a copy is kept";
    gen_set_command_line("");
    EXPECT_EQ(gen_get_command_line(), "");
}

TEST_F(GenExe, FlagsFollowTheLastValue)
{
    EXPECT_FALSE(gen_get_is_ui_process());
    EXPECT_FALSE(gen_get_is_qt());
    gen_exe_init(0, nullptr);
    EXPECT_FALSE(gen_get_is_ui_process());
    EXPECT_FALSE(gen_get_is_qt());
    gen_set_is_ui_process(true);
    EXPECT_TRUE(gen_get_is_ui_process());
    EXPECT_FALSE(gen_get_is_qt());
    gen_set_is_qt(true);
    gen_set_is_ui_process(false);
    EXPECT_FALSE(gen_get_is_ui_process());
    EXPECT_TRUE(gen_get_is_qt());
    gen_set_is_qt(false);
    EXPECT_FALSE(gen_get_is_qt());
}

TEST_F(GenExe, ReservationTakesFourGigabytesOfAddressSpace)
{
    auto const start = [] { gen_exe_init(0, nullptr); };
    EXPECT_EQ(output_to(StandardStream::OUTPUT, start), "");

    mem_cfg_set(RESERVE, "on");
    EXPECT_EQ(output_to(StandardStream::OUTPUT, start), "Allocating 4GB of virtual memory in 8 MB chunks...SUCCESS!\n");

    mem_cfg_set(RESERVE, "off");
    Environment const present(RESERVE, "");
    EXPECT_THAT(output_to(StandardStream::OUTPUT, start), HasSubstr("Allocating 4GB")) << "the variable comes first";
}

// The key is the first one that a process asks for, and it is in a file that only the callbacks lead to.
TEST_F(GenExe, ConfigurationOfTheInstallationIsFoundWhileTheProcessStarts)
{
    for (char const *const switched : {"on", "off"}) {
        InstalledTree const tree("bin", "tool");
        TempDir const elsewhere;
        tree.dir().write("suite/kalvern.ini", std::string(RESERVE) + " = " + switched + "\n");
        CurrentDirectory const current(elsewhere.path());
        auto const report = probe(tree.tool(), "init");
        ASSERT_EQ(report.at("status"), "0") << report.at("output");
        EXPECT_EQ(report.at("output").find("Allocating 4GB") != std::string::npos, std::string(switched) == "on")
            << report.at("output");
    }
}
