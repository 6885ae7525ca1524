// The configuration over files that would make it wait, and over failing calls of the system. Linux. Each test is a
// process of its own, since files are read once.
#include "mem_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

constexpr char NOT_REGULAR[] = ": the file can't be read: it is not a regular file\n";
constexpr int ALL = 1'000'000;

class MemCfgFaults : public testing::Test
{
protected:
    MemCfgFaults() : m_current_directory(m_dir.path()) {}

    void make_fifo(std::string const &name) const { ASSERT_EQ(mkfifo(m_dir.text(name).c_str(), 0600), 0); }

    // The output of two look-ups, with faults during the first one.
    static std::string errors_of_look_up(std::string const &value, std::vector<SystemCallFault> const &faults = {})
    {
        return output_to(StandardStream::ERROR_OUTPUT, [&] {
            std::string text;
            {
                SystemCallFaults const scope(faults);
                text = mem_cfg_get_value("a");
                EXPECT_GE(scope.met(), static_cast<int>(faults.size()));
            }
            EXPECT_EQ(text, value);
            EXPECT_EQ(mem_cfg_get_value("a"), value);
        });
    }

    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory;
};

// Pipes and devices.

TEST_F(MemCfgFaults, APipeIsReportedAndNotWaitedFor)
{
    make_fifo("kalvern.ini");
    EXPECT_EQ(errors_of_look_up(""), std::string("Warning: kalvern.ini") + NOT_REGULAR);
}

TEST_F(MemCfgFaults, ANamedPipeIsReportedAndNotWaitedFor)
{
    make_fifo("pipe");
    m_dir.write("kalvern.ini", "a = 1\n");
    Environment const variable("KALVERN_INI", "pipe");
    EXPECT_EQ(errors_of_look_up("1"), std::string("Warning: pipe") + NOT_REGULAR);
}

TEST_F(MemCfgFaults, ALinkToAPipeIsReportedAndNotWaitedFor)
{
    make_fifo("pipe");
    fs::create_symlink("pipe", m_dir.path() / "kalvern.ini");
    EXPECT_EQ(errors_of_look_up(""), std::string("Warning: kalvern.ini") + NOT_REGULAR);
}

TEST_F(MemCfgFaults, ADeviceIsReportedAndNotRead)
{
    Environment const variable("KALVERN_INI", "/dev/zero");
    EXPECT_EQ(errors_of_look_up(""), std::string("Warning: /dev/zero") + NOT_REGULAR);
}

TEST_F(MemCfgFaults, ALinkToARegularFileIsRead)
{
    m_dir.write("real.ini", "a = 1\n");
    fs::create_symlink("real.ini", m_dir.path() / "kalvern.ini");
    EXPECT_EQ(errors_of_look_up("1"), "");
}

TEST_F(MemCfgFaults, ALinkToNothingCountsAsMissing)
{
    fs::create_symlink("missing.ini", m_dir.path() / "kalvern.ini");
    EXPECT_EQ(errors_of_look_up(""), "");
}

TEST_F(MemCfgFaults, ALinkToItselfIsReported)
{
    fs::create_symlink("kalvern.ini", m_dir.path() / "kalvern.ini");
    EXPECT_EQ(errors_of_look_up(""),
              "Warning: kalvern.ini: the file can't be read: Too many levels of symbolic links\n");
}

// Failing calls.

TEST_F(MemCfgFaults, AProcessWithoutDescriptorsReportsTheFilesThatAreThere)
{
    m_dir.write("kalvern.ini", "a = 1\n");
    EXPECT_EQ(errors_of_look_up("", {{"open", EMFILE}}),
              "Warning: kalvern.ini: the file can't be read: Too many open files\n");
}

TEST_F(MemCfgFaults, AProcessWithoutDescriptorsReportsNoMissingFile)
{
    EXPECT_EQ(errors_of_look_up("", {{"open", EMFILE}}), "");
}

TEST_F(MemCfgFaults, AFileWithoutPermissionIsReported)
{
    m_dir.write("kalvern.ini", "a = 1\n");
    EXPECT_EQ(errors_of_look_up("", {{"open", EACCES}}),
              "Warning: kalvern.ini: the file can't be read: Permission denied\n");
}

TEST_F(MemCfgFaults, AFileInADirectoryThatCantBeSearchedCountsAsMissing)
{
    m_dir.write("kalvern.ini", "a = 1\n");
    EXPECT_EQ(errors_of_look_up("", {{"open", EACCES}, {"stat", EACCES}}), "");
}

TEST_F(MemCfgFaults, ANamedFileInADirectoryThatCantBeSearchedIsReported)
{
    Environment const variable("KALVERN_INI", m_dir.write("named.cfg", "a = 1\n").c_str());
    EXPECT_EQ(errors_of_look_up("", {{"open", EACCES}, {"stat", EACCES}}),
              "Warning: " + m_dir.text("named.cfg") + ": the file can't be read: Permission denied\n");
}

TEST_F(MemCfgFaults, AFileThatCantBeReadToItsEndIsReportedAndNotUsed)
{
    m_dir.write("kalvern.ini", "a = 1\n" + std::string(20000, '#'));
    std::size_t const descriptors = open_descriptor_count();
    EXPECT_EQ(errors_of_look_up("", {{"read", EIO, 2}}),
              "Warning: kalvern.ini: the file can't be read: Input/output error\n");
    EXPECT_EQ(open_descriptor_count(), descriptors);
}

TEST_F(MemCfgFaults, AFileWithoutStatusIsReported)
{
    m_dir.write("kalvern.ini", "a = 1\n");
    EXPECT_EQ(errors_of_look_up("", {{"fstat", EIO}}),
              "Warning: kalvern.ini: the file can't be read: Input/output error\n");
}

TEST_F(MemCfgFaults, InterruptionsAndShortReadsLoseNothing)
{
    m_dir.write("kalvern.ini", "a = a value of some length\n");
    EXPECT_EQ(errors_of_look_up("a value of some length", {{"open", EINTR, 1, 2},
                                                           {"read", EINTR, 1, 2},
                                                           {"read", SystemCallFault::SHORT_TRANSFER, 3, 10},
                                                           {"read", EINTR, 13, 1},
                                                           {"read", SystemCallFault::SHORT_TRANSFER, 14, ALL}}),
              "");
}

} // namespace
