// The layout as processes of several places find it: this test, which lies next to the libraries; the probe where it
// was built, in another directory; and the probe in installations of its own.
#include "gen_path_sys.h"

#include "gen_exe_sys.h"
#include "gen_string_sys.h"
#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/installed_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {

std::string lower(std::string text)
{
    gen_tolower(text);
    return text;
}

// The form of paths that come from the module: on Windows all of it is in lower case.
std::string module_case(std::string const &path)
{
    return ON_WINDOWS ? lower(path) : path;
}

std::string const TOOL_NAME = ON_WINDOWS ? "gen_path_layout_test.exe" : "gen_path_layout_test";
std::string const LIBRARY_PREFIX = ON_WINDOWS ? "zel_gen.dll" : "libzel_gen.so";

} // namespace

TEST(GenModule, IsTheExecutableNextToTheLibrary)
{
    std::string const path = gen_get_module_path();
    EXPECT_EQ(gen_get_module_filename(), TOOL_NAME);
    EXPECT_EQ(gen_get_module_fullpath(), path + TOOL_NAME);
    EXPECT_EQ(path.back(), '/');
    EXPECT_TRUE(std::filesystem::exists(path + TOOL_NAME)) << path;
    EXPECT_EQ(gen_get_executable_fullpath(), lower(path + TOOL_NAME));
    EXPECT_EQ(gen_get_kalvern_path(), std::filesystem::path(path).parent_path().parent_path().generic_string() + '/');
    EXPECT_FALSE(gen_get_is_kalvern_exe());
}

TEST(GenModule, IsTheLibraryForAForeignExecutable)
{
    auto const report = probe_foreign();
    ASSERT_EQ(report.at("status"), "0") << report.at("output");
    EXPECT_EQ(report.at("module_filename").substr(0, LIBRARY_PREFIX.size()), LIBRARY_PREFIX);
    EXPECT_EQ(report.at("module_path"), gen_get_module_path());
    EXPECT_EQ(report.at("root"), gen_get_kalvern_path());
    EXPECT_EQ(report.at("executable"), lower(foreign_probe().generic_string()));
    EXPECT_EQ(report.at("is_kalvern"), "no");
}

TEST(GenModule, FixesTheRootWhateverItsDirectoryIsCalled)
{
    for (char const *const bin : {"bin64", "x"}) {
        InstalledTree const tree(bin, "tool");
        auto const report = probe(tree.tool());
        ASSERT_EQ(report.at("status"), "0") << report.at("output");
        std::string const root = module_case(tree.root());
        EXPECT_EQ(report.at("root"), root);
        EXPECT_EQ(report.at("root_after_fini"), root);
        EXPECT_EQ(report.at("module_path"), root + bin + '/');
        EXPECT_EQ(report.at("module_filename"), tree.tool().filename().string());
        EXPECT_EQ(report.at("module"), root + bin + '/' + tree.tool().filename().string());
        EXPECT_EQ(report.at("KALVERN_ROOTDIR"), "");
    }
}

TEST(GenModule, OfAMixedCaseInstallationFindsItself)
{
    InstalledTree const tree("Bin64", "MyTool");
    auto const report = probe(tree.tool(), "init");
    ASSERT_EQ(report.at("status"), "0") << report.at("output");
    EXPECT_EQ(report.at("executable"), lower(tree.tool().generic_string()));
    EXPECT_EQ(report.at("library").substr(0, tree.root().size()), lower(tree.root()));
    EXPECT_EQ(report.at("module"), module_case(tree.tool().generic_string()));
    EXPECT_EQ(report.at("root"), module_case(tree.root()));
    EXPECT_EQ(report.at("KALVERN_ROOTDIR"), module_case(tree.root()));
    EXPECT_EQ(report.at("KALVERN_BINDIR"), module_case(tree.root() + "Bin64/"));
}

TEST(GenModule, KeepsItsNameWhenItsFileIsReplaced)
{
    for (char const *const tool : {"tool", "tool (deleted)"})
        for (char const *const arguments : {"", "replace"}) {
            InstalledTree const tree("bin", tool);
            auto const report = probe(tree.tool(), arguments);
            ASSERT_EQ(report.at("status"), "0") << report.at("output");
            EXPECT_EQ(report.at("executable"), lower(tree.tool().generic_string())) << arguments;
            EXPECT_EQ(report.at("module"), module_case(tree.tool().generic_string())) << arguments;
        }
}

TEST(GenIsKalvernExe, CountsTheGuiNamesInQtProcessesAndTheProductAlways)
{
    struct NameCase
    {
        char const *tool;
        char const *arguments;
        char const *is_kalvern;
    };
    constexpr NameCase CASES[] = {
        {"kgui", "", "no"},     {"kgui", "qt", "yes"},    {"kpro", "", "no"},       {"kpro", "qt", "yes"},
        {"kalvern", "", "yes"}, {"kalvern", "qt", "yes"}, {"KaLVern", "", "yes"},   {"KGui", "qt", "yes"},
        {"fitter", "qt", "no"}, {"kguix", "qt", "no"},    {"xkalvern", "qt", "no"},
    };
    for (NameCase const &c : CASES) {
        InstalledTree const tree("bin", c.tool);
        auto const report = probe(tree.tool(), c.arguments);
        EXPECT_EQ(report.at("is_kalvern"), c.is_kalvern) << c.tool << ' ' << c.arguments;
    }
}

TEST(GenLibraryFullpath, IsEmptyForALibraryThatIsNotLoaded)
{
    // One that could be loaded lies next to the test.
    std::string const neighbour = ON_WINDOWS ? "zel_gen_fake.dll" : "libzel_gen_fake.so";
    ASSERT_TRUE(std::filesystem::exists(gen_get_module_path() + neighbour));
    for (char const *const stem : {"zel_gen_fake", "zel_none", ""}) {
        EXPECT_EQ(gen_get_library_fullpath(stem), "") << stem;
        EXPECT_EQ(gen_get_library_fullpath(stem), "") << stem << ": asking loads nothing";
    }
}

TEST(GenLibraryFullpath, FindsLoadedLibrariesInLowerCase)
{
    for (std::string const stem : {"zel_gen", "zel_fio", "zel_mem"}) {
        std::string const path = gen_get_library_fullpath(stem.c_str());
        EXPECT_EQ(path, lower(path));
        EXPECT_EQ(path.substr(0, gen_get_module_path().size()), lower(gen_get_module_path())) << stem;
        EXPECT_THAT(path, HasSubstr("/" + std::string(ON_WINDOWS ? "" : "lib") + stem + '.'));
    }
}

TEST(GenPathDebug, PrintsTheSearchOnceItIsSet)
{
    for (char const *const value : {"1", ""}) {
        Environment const debug("GEN_PATH_DEBUG", value);
        auto const report = probe_foreign();
        std::string const library_path = report.at("module");
        std::string const search = "Debug: GEN: library name = " + std::string(ON_WINDOWS ? "" : "lib") + "zel_gen" +
                                   (ON_WINDOWS ? ".dll" : ".so") + "\nDebug: GEN: library path = " + library_path +
                                   "\n";
        std::string const found = "Debug: GEN: module fullpath = " + library_path + "\n";
        EXPECT_THAT(report.at("output"), HasSubstr(search + found)) << "value " << value;
        std::size_t const first = report.at("output").find(found);
        EXPECT_EQ(report.at("output").find(found, first + 1), std::string::npos) << "value " << value;
    }
    Environment const debug("GEN_PATH_DEBUG", nullptr);
    EXPECT_EQ(probe_foreign().at("output").find("Debug:"), std::string::npos);
}

TEST(GenPathDebug, IsReadOnce)
{
    {
        Environment const debug("GEN_PATH_DEBUG", nullptr);
        gen_get_module_fullpath();
    }
    Environment const debug("GEN_PATH_DEBUG", "1");
    EXPECT_EQ(output_to(StandardStream::OUTPUT, [] { gen_get_library_fullpath("zel_gen"); }), "");
}

TEST(GenDynGetFullpath, FillsTheModulePath)
{
    Environment const debug("GEN_PATH_DEBUG", "1");
    std::string const output = output_to(StandardStream::OUTPUT, [] {
        gen_dyn_get_fullpath();
        gen_dyn_get_fullpath();
    });
    std::string const found = "Debug: GEN: module fullpath = " + gen_get_module_fullpath();
    EXPECT_THAT(output, HasSubstr(found));
    EXPECT_EQ(output.find(found), output.rfind(found)) << output;
}
