// Configuration files that are missing or can't be read. Each test is a process of its own, since files are read once.
#include "mem_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

namespace fs = std::filesystem;
using testing::StartsWith;

std::string l_root;

std::string get_root()
{
    return l_root;
}

// The current directory and the installation root, and no file named by the environment.
class MemCfgUnreadable : public testing::Test
{
protected:
    MemCfgUnreadable() : m_current_directory(make("current")) { l_root = make("root") + '/'; }

    std::string make(std::string const &name)
    {
        fs::create_directories(m_dir.path() / name);
        return m_dir.text(name);
    }

    // The output of three look-ups, of which the last one finds the installation's file.
    static std::string errors_of_look_ups(std::string const &value)
    {
        return output_to(StandardStream::ERROR_OUTPUT, [&] {
            mem_cfg_is_on("b", false);
            mem_cfg_get_value("a");
            mem_set_gen_get_kalvern_path_callback(get_root);
            EXPECT_EQ(mem_cfg_get_value("a"), value);
        });
    }

    // The one problem is that KALVERN_INI names a file that is missing.
    void expect_report_of_named(std::string const &name) const
    {
        m_dir.write("current/kalvern.ini", "a = current\n");
        Environment const variable("KALVERN_INI", name.c_str());
        std::string const errors = errors_of_look_ups("current");
        std::string const start = "Warning: " + name + ": the file can't be read: ";
        EXPECT_THAT(errors, StartsWith(start));
        EXPECT_EQ(count_of(errors, "\n"), 1U) << errors;
        EXPECT_GT(errors.size(), start.size() + 1) << "no reason";
    }

    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory;
};

TEST_F(MemCfgUnreadable, AMissingFileIsReportedIfItIsNamed)
{
    expect_report_of_named("missing.cfg");
}

TEST_F(MemCfgUnreadable, AMissingDirectoryIsReportedIfItIsNamed)
{
    expect_report_of_named("missing/file.cfg");
}

TEST_F(MemCfgUnreadable, AFileBelowAFileIsReportedIfItIsNamed)
{
    m_dir.write("current/file", "");
    expect_report_of_named("file/below.cfg");
}

TEST_F(MemCfgUnreadable, MissingFilesThatNobodyNamedAreSkippedSilently)
{
    EXPECT_EQ(errors_of_look_ups(""), "");
}

TEST_F(MemCfgUnreadable, DirectoriesOnTheWayThatAreFilesCountAsMissing)
{
    m_dir.write("file", "");
    l_root = m_dir.text("file");
    EXPECT_EQ(errors_of_look_ups(""), "");
}

TEST_F(MemCfgUnreadable, DirectoriesAreReportedAndSkipped)
{
    std::string const named = make("named.cfg");
    make("current/kalvern.ini");
    make("root/kalvern.ini");
    Environment const variable("KALVERN_INI", named.c_str());
    EXPECT_EQ(errors_of_look_ups(""), "Warning: " + named +
                                          ": the file can't be read: it is not a regular file\n"
                                          "Warning: kalvern.ini: the file can't be read: it is not a regular file\n"
                                          "Warning: " +
                                          l_root + "kalvern.ini: the file can't be read: it is not a regular file\n");
}

TEST_F(MemCfgUnreadable, AFileThatIsReachedThreeTimesIsReportedOnce)
{
    make("current/kalvern.ini");
    std::string const named = m_dir.text("current/kalvern.ini");
    Environment const variable("KALVERN_INI", named.c_str());
    l_root = m_dir.text("current");
    EXPECT_EQ(errors_of_look_ups(""), "Warning: " + named + ": the file can't be read: it is not a regular file\n");
}

TEST_F(MemCfgUnreadable, TheOtherFilesAreRead)
{
    make("current/kalvern.ini");
    m_dir.write("root/kalvern.ini", "a = root\n");
    EXPECT_EQ(count_of(errors_of_look_ups("root"), "\n"), 1U);
}

#ifdef _WIN32
TEST_F(MemCfgUnreadable, DevicesAreReportedAndSkipped)
{
    Environment const variable("KALVERN_INI", "nul");
    EXPECT_EQ(errors_of_look_ups(""), "Warning: nul: the file can't be read: it is not a regular file\n");
}
#endif

// Origins.

TEST_F(MemCfgUnreadable, OriginsNameFileAndLine)
{
    std::string const named = m_dir.write("named.cfg", "# comment\n\na = 1\na = 2\n");
    m_dir.write("current/kalvern.ini", "[section]\na = 3\nb = 3\n");
    m_dir.write("root/kalvern.ini", "c = 4\n");
    Environment const variable("KALVERN_INI", named.c_str());
    mem_set_gen_get_kalvern_path_callback(get_root);
    EXPECT_EQ(mem_cfg_get_origin("a"), named + ":4");
    EXPECT_EQ(mem_cfg_get_origin("b"), "kalvern.ini:3");
    EXPECT_EQ(mem_cfg_get_origin("c"), l_root + "kalvern.ini:1");
    EXPECT_EQ(mem_cfg_get_origin("d"), "");
    EXPECT_EQ(mem_cfg_get_origin(nullptr), "");
    mem_cfg_set("a", "5");
    EXPECT_EQ(mem_cfg_get_origin("a"), "mem_cfg_set");
    mem_cfg_set("a", nullptr);
    EXPECT_EQ(mem_cfg_get_origin("a"), named + ":4");
}

} // namespace
