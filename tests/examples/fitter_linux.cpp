// Failures of the file system that only Linux can be made to show: a limit on the size of files, a path that is too
// long for a call while its name in the current directory is not, a device that is always full.
#include "output.h"
#include "tests/examples/fitter_runs.h"
#include "tests/support/file_size_limit.h"
#include "undo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(FitterPlace, KeepsTheOldUndoFileIfTheNewOneIsCutOff)
{
    fitter::Fit const fit = make_fit(make_design(200));
    TempDir const dir;
    fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement);
    std::size_t const size = dir.read("undo_redo.txt").size();
    dir.write("undo_redo.txt", "old");
    for (std::size_t const limit : {std::size_t{0}, std::size_t{1}, size / 2, size - 4, size - 1}) {
        FileSizeLimit const file_size_limit(limit);
        ASSERT_TRUE(file_size_limit.is_set());
        EXPECT_EQ(error_in([&] { fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement); }),
                  "cannot write \"" + dir.text("undo_redo.txt") + "\"")
            << limit << " of " << size;
        EXPECT_EQ(dir.read("undo_redo.txt"), "old") << limit;
        EXPECT_THAT(error_in([&] { fitter::write_result(dir.text("r.txt"), std::string(size, 'x')); }),
                    StartsWith("cannot write \"" + dir.text("r.txt") + "\": "))
            << limit;
        EXPECT_EQ(entry_names(dir.path()), std::set<std::string>{"undo_redo.txt"}) << limit;
    }
    FileSizeLimit const file_size_limit(size);
    fitter::write_undo_file(dir.text(), fit.packing, fit.device, fit.placement);
    EXPECT_EQ(dir.read("undo_redo.txt").size(), size);
}

// The path of the output directory is too long for a system call, but its name in the current directory is not: the
// library can't see the directory, and takes the project instead.
TEST(FitterTool, WritesNothingIntoTheProjectIfTheOutputDirectoryCannotBeSeen)
{
    constexpr std::size_t LONGEST_PATH = 4095;
    constexpr std::size_t LONGEST_RESULT = 65; // with the directory that it is written in
    TempDir const dir;
    CurrentDirectory const there(dir.path());
    std::string const step(100, 'd');
    while (std::filesystem::current_path().native().size() + 1 + step.size() < LONGEST_PATH - LONGEST_RESULT) {
        std::filesystem::create_directory(step);
        std::filesystem::current_path(step);
    }
    std::string const output(step.size() + LONGEST_RESULT + 1, 'o');
    std::ofstream("small.blif") << make_design(20);
    std::filesystem::create_directory(output);
    ToolRun const run = run_fitter_here("--out " + output + " small.blif");
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_EQ(run.err, "fitter: cannot make the output directory \"" + output + "\"\n");
    EXPECT_FALSE(std::filesystem::exists("small.fit.txt"));
    EXPECT_FALSE(std::filesystem::exists("undo_redo.txt"));
}

TEST(FitterTool, EndsWithStatusOneIfItsOutputCannotBeWritten)
{
    TempDir const dir;
    dir.write("small.blif", make_design(20));
    CurrentDirectory const there(dir.path());
    for (char const *arguments : {"small.blif", "--help", "--version"}) {
        ToolRun const run = run_fitter_here(arguments, "/dev/full");
        EXPECT_EQ(run.status, 1) << arguments;
        EXPECT_EQ(run.err, "fitter: cannot write to the standard output\n") << arguments;
    }
    EXPECT_THAT(dir.read("small.fit.txt"), HasSubstr("legal         yes"));
}

} // namespace
