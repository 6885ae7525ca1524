// The layout under a scripted system: the executable lies where a test puts it.
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/internal_error.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;

namespace {

// An exit status of -1, as each platform gives it back.
constexpr int STATUS_MINUS_ONE = ON_WINDOWS ? -1 : 255;

} // namespace

TEST(GenLayout, FollowsFromTheModule)
{
    struct LayoutCase
    {
        char const *name;
        std::string (*get)();
        char const *path;
    };
    constexpr LayoutCase CASES[] = {
        {"executable_fullpath", gen_get_executable_fullpath, "c:/tools/suite/bin64/tool.exe"},
        {"module_fullpath", gen_get_module_fullpath, "c:/tools/suite/bin64/tool.exe"},
        {"module_path", gen_get_module_path, "c:/tools/suite/bin64/"},
        {"module_filename", gen_get_module_filename, "tool.exe"},
        {"kalvern_path", gen_get_kalvern_path, "c:/tools/suite/"},
        {"common_data", gen_get_common_data_fullpath, "c:/tools/suite/common"},
        {"dynamic_atom_data", gen_get_dynamic_atom_data_fullpath, "c:/tools/suite/common/devxml/cag"},
        {"common_misc", gen_get_common_misc_fullpath, "c:/tools/suite/common/misc/"},
        {"tcl_apps", gen_get_tcl_apps_fullpath, "c:/tools/suite/common/tcl/apps/"},
        {"tcl_flow_templates", gen_get_tcl_flow_templates_fullpath, "c:/tools/suite/common/tcl/flow_templates/"},
        {"tcl_internal", gen_get_tcl_internal_fullpath, "c:/tools/suite/common/tcl/internal/"},
        {"unshipped_data", gen_get_unshipped_data_fullpath, "c:/tools/suite/common/not_shipped/"},
        {"unshipped_tcl", gen_get_unshipped_tcl_fullpath, "c:/tools/suite/common/not_shipped/tcl/"},
        {"unshipped_tcl_flow_templates", gen_get_unshipped_tcl_flow_templates_fullpath,
         "c:/tools/suite/common/not_shipped/tcl/flow_templates/"},
        {"ksys_bin", gen_get_ksys_bin_path, "c:/tools/ksys/bin/"},
        {"device_db_name", gen_get_device_db_name, "devinfo"},
        {"device_db", gen_get_device_db_fullpath, "c:/tools/suite/common/devinfo"},
        {"devdata_db", gen_get_devdata_db_fullpath, "c:/tools/devdata"},
        {"ip", gen_get_ip_path, "c:/tools/ip/"},
        {"platform", gen_get_platform_path, "c:/tools/suite/common/devplatforms/"},
        {"devkits", gen_get_devkits_path, "c:/tools/suite/common/devkits/"},
    };
    Environment const no_devinfo("KALVERN_COMMON_DEVINFO_PATH", nullptr);
    Environment const no_devdata("DEVDATA_ROOT", nullptr);
    Environment const no_ip("IP_ROOTDIR", nullptr);
    Environment const no_platform("KALVERN_PLATFORM_ROOTDIR", nullptr);
    Environment const no_devkits("KALVERN_DEVKITS_ROOTDIR", nullptr);
    Environment const ignored("KALVERN_ROOTDIR", "c:/elsewhere/");
    gen_os_fake_set_case_matters(false);
    gen_os_fake_set_executable_path("C:\\Tools\\Suite\\Bin64\\Tool.EXE");
    for (LayoutCase const &c : CASES)
        EXPECT_EQ(c.get(), c.path) << c.name;
}

TEST(GenLayout, HasAPlaceForEachLibrary)
{
    struct LibraryCase
    {
        GEN_LIBRARY_TYPE type;
        unsigned value;
        char const *path;
    };
    constexpr LibraryCase CASES[] = {
        {GEN_LIB_ROOT, 0, ""},
        {GEN_LIB_LIBRARIES, 1, "libraries/"},
        {GEN_LIB_VHDL, 2, "libraries/vhdl/"},
        {GEN_LIB_PRIMITIVES, 3, "libraries/primitives/"},
        {GEN_LIB_PRIM_PIN, 4, "libraries/primitives/pin/"},
        {GEN_LIB_PRIM_BUFFER, 5, "libraries/primitives/buffer/"},
        {GEN_LIB_PRIM_LOGIC, 6, "libraries/primitives/logic/"},
        {GEN_LIB_PRIM_STORAGE, 7, "libraries/primitives/storage/"},
        {GEN_LIB_PRIM_OTHER, 8, "libraries/primitives/other/"},
        {GEN_LIB_IPBLOCKS, 9, "libraries/ipblocks/"},
        {GEN_LIB_IP_ARITHMETIC, 10, "libraries/ipblocks/arithmetic/"},
        {GEN_LIB_IP_GATES, 11, "libraries/ipblocks/gates/"},
        {GEN_LIB_IP_IO, 12, "libraries/ipblocks/io/"},
        {GEN_LIB_IP_STORAGE, 13, "libraries/ipblocks/storage/"},
        {GEN_LIB_IP_EMBEDDED_LOGIC, 14, "libraries/ipblocks/embedded_logic/"},
        {GEN_LIB_CORELIB, 15, "libraries/corelib/"},
        {GEN_LIB_OTHERS, 16, "libraries/others/"},
        {GEN_LIB_LEGACY2, 17, "libraries/others/legacy2/"},
        {GEN_LIB_PARTNERCORES, 18, "libraries/others/partnercores/"},
        {GEN_LIB_VITAL, 19, "libraries/others/vital/"},
        {GEN_LIB_EDA_MENTOR, 20, "eda/mentor/"},
        {GEN_LIB_EDA_SYNOPSYS, 21, "eda/synopsys/"},
        {GEN_LIB_EDA_VIEWLOGIC, 22, "eda/viewlogic/"},
        {GEN_LIB_EDA_SIM_LIB, 23, "eda/sim_lib/"},
        {GEN_LIB_EDA_IBIS, 24, "eda/ibis/"},
        {GEN_LIB_EDA_IBIS2, 25, "eda/ibis2/"},
        {GEN_LIB_SYNPLICITY, 26, "libraries/others/synplicity/"},
        {GEN_LIB_SOFTWARE_BOOT, 27, "libraries/software/boot/"},
        {GEN_LIB_EVALCORE_PLUS, 28, "libraries/others/evalcore_plus/"},
        {GEN_LIB_EDA_HSPICE, 29, "eda/hspice/"},
        {GEN_LIB_WYS_STUB, 30, "libraries/wys_stub"},
    };
    static_assert(std::size(CASES) == GEN_LIB_SIZE && GEN_LIB_SIZE == 31);
    for (LibraryCase const &c : CASES) {
        EXPECT_EQ(static_cast<unsigned>(c.type), c.value) << c.path;
        EXPECT_EQ(gen_get_library_path(c.type), std::string("/fake/") + c.path) << c.value;
    }
    EXPECT_EQ(gen_get_library_path(GEN_LIB_ROOT), gen_get_kalvern_path());
}

TEST(GenLayoutDeathTest, ALibraryTypeOutOfRangeIsAnInternalError)
{
    for (unsigned const value : {31U, 32U, 0xffffffffU})
        EXPECT_EXIT(gen_get_library_path(static_cast<GEN_LIBRARY_TYPE>(value)), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("type < (GEN_LIBRARY_TYPE)GEN_LIB_SIZE", "gen_path_layout"))
            << value;
}

TEST(GenLayoutDeathTest, AProcessThatCannotFindItselfEnds)
{
    gen_os_fake_set_executable_path("");
    EXPECT_EXIT(gen_exe_init(0, nullptr), ExitedWithCode(STATUS_MINUS_ONE),
                HasSubstr("Error: Can not determine executable's full path!\n"));
    EXPECT_EXIT(gen_dyn_get_fullpath(), ExitedWithCode(STATUS_MINUS_ONE),
                HasSubstr("Error: Can not determine executable's full path!\n"));
}

TEST(GenModule, IsFoundOnce)
{
    gen_os_fake_set_executable_path("/first/bin/tool");
    EXPECT_EQ(gen_get_module_fullpath(), "/first/bin/tool");
    gen_os_fake_set_executable_path("/second/bin/tool");
    EXPECT_EQ(gen_get_module_fullpath(), "/first/bin/tool");
    EXPECT_EQ(gen_get_executable_fullpath(), "/second/bin/tool");
}

// Each path of an executable and a library, in a process of its own.
struct ModuleCase
{
    char const *name;
    bool case_matters;
    char const *executable;
    char const *library;
    char const *module;
    char const *root;
};
void PrintTo(ModuleCase const &c, std::ostream *out)
{
    *out << c.executable << " with " << c.library;
}

class GenModuleChoice : public testing::TestWithParam<ModuleCase>
{
};

constexpr ModuleCase MODULE_CASES[] = {
    {"NoLibrary", true, "/a/bin/tool", "", "/a/bin/tool", "/a/"},
    {"NextTo", true, "/a/bin/tool", "/a/bin/libzel_gen.so", "/a/bin/tool", "/a/"},
    {"Elsewhere", true, "/a/bin/tool", "/b/lib/libzel_gen.so.1", "/b/lib/libzel_gen.so.1", "/b/"},
    {"Below", true, "/a/bin/tool", "/a/bin/x/libzel_gen.so", "/a/bin/x/libzel_gen.so", "/a/bin/"},
    {"CaseApart", true, "/a/bin/tool", "/a/BIN/libzel_gen.so", "/a/BIN/libzel_gen.so", "/a/"},
    {"CaseKept", true, "/A/Bin/Tool", "", "/A/Bin/Tool", "/A/"},
    {"CaseAlike", false, "C:\\A\\Bin\\Tool.exe", "c:\\a\\BIN\\zel_gen.dll", "c:/a/bin/tool.exe", "c:/a/"},
    {"CaseDropped", false, "C:\\A\\Tool.exe", "D:\\B\\C\\ZEL_GEN.DLL", "d:/b/c/zel_gen.dll", "d:/b/"},
    {"LibraryAlone", true, "", "/b/lib/libzel_gen.so", "/b/lib/libzel_gen.so", "/b/"},
    {"OneLevel", true, "/bin/tool", "", "/bin/tool", "/"},
    {"NoLevel", true, "/tool", "", "/tool", ""}, // there is no parent
    {"NoLevelOfADrive", false, "C:\\Tool.exe", "", "c:/tool.exe", "c:"},
};

TEST_P(GenModuleChoice, FixesModuleAndRoot)
{
    ModuleCase const &c = GetParam();
    gen_os_fake_set_case_matters(c.case_matters);
    gen_os_fake_set_executable_path(c.executable);
    gen_os_fake_set_library_path(c.library);
    EXPECT_EQ(gen_get_module_fullpath(), c.module);
    EXPECT_EQ(gen_get_kalvern_path(), c.root);
}

INSTANTIATE_TEST_SUITE_P(, GenModuleChoice, testing::ValuesIn(MODULE_CASES),
                         [](testing::TestParamInfo<ModuleCase> const &param) { return std::string(param.param.name); });

// A stem for which the platform has no file name is looked for unchanged.
TEST(GenLibraryFullpath, TakesAStemThatIsTooLongForANameCutAtTheLimitOfThePlatform)
{
    Environment const debug("GEN_PATH_DEBUG", "");
    std::string const stem(6000, 'x');
    EXPECT_EQ(output_to(StandardStream::OUTPUT, [&] { gen_get_library_fullpath(stem.c_str()); }),
              "Debug: GEN: library name = " + stem.substr(0, ON_WINDOWS ? 260 : 4096) + '\n');
}

TEST(GenModule, IsCutAtTheLimitOfThePlatform)
{
    std::string const path = "/" + std::string(6000, 'x');
    gen_os_fake_set_executable_path(path.c_str());
    EXPECT_EQ(gen_get_module_fullpath(), path.substr(0, ON_WINDOWS ? 260 : 4096));
}

// The three directories that a variable may override alike, each with the place of its default in the tree.
struct OverrideCase
{
    char const *variable;
    std::string (*get)();
    char const *default_directory;
};
constexpr OverrideCase OVERRIDE_CASES[] = {
    {"IP_ROOTDIR", gen_get_ip_path, "ip"},
    {"KALVERN_PLATFORM_ROOTDIR", gen_get_platform_path, "suite/common/devplatforms"},
    {"KALVERN_DEVKITS_ROOTDIR", gen_get_devkits_path, "suite/common/devkits"},
};

// A tree whose defaults exist or don't.
class GenOverride : public testing::Test
{
protected:
    GenOverride() { gen_os_fake_set_executable_path(m_dir.text("suite/bin/tool").c_str()); }

    std::string default_of(OverrideCase const &c) const { return m_dir.text(c.default_directory) + '/'; }
    void make_default(OverrideCase const &c) const
    {
        std::filesystem::create_directories(m_dir.path() / c.default_directory);
    }

    TempDir m_dir;
};

TEST_F(GenOverride, UnsetOrEmptyLeavesTheDefault)
{
    for (OverrideCase const &c : OVERRIDE_CASES)
        for (char const *const value : {static_cast<char const *>(nullptr), ""}) {
            Environment const variable(c.variable, value);
            EXPECT_EQ(c.get(), default_of(c)) << c.variable;
        }
}

TEST_F(GenOverride, ThatExistsWins)
{
    std::string const other = m_dir.text("other");
    std::filesystem::create_directory(other);
    std::string const file = m_dir.write("file", "");
    for (OverrideCase const &c : OVERRIDE_CASES) {
        make_default(c);
        for (std::string const &value : {other, other + '/', file}) {
            Environment const variable(c.variable, value.c_str());
            EXPECT_EQ(c.get(), value.back() == '/' ? value : value + '/') << c.variable;
        }
    }
}

TEST_F(GenOverride, ThatIsMissingWinsOnlyOverAMissingDefault)
{
    std::string const missing = m_dir.text("missing");
    for (OverrideCase const &c : OVERRIDE_CASES) {
        Environment const variable(c.variable, missing.c_str());
        EXPECT_EQ(c.get(), missing + '/') << c.variable;
        make_default(c);
        EXPECT_EQ(c.get(), default_of(c)) << c.variable;
        std::filesystem::create_directory(missing);
        EXPECT_EQ(c.get(), missing + '/') << c.variable << ": the disk is looked at anew";
        std::filesystem::remove(missing);
    }
}

TEST_F(GenOverride, ThatIsRelativeIsTestedUnchangedAndAppliedToTheDefault)
{
    for (OverrideCase const &c : OVERRIDE_CASES) {
        Environment const variable(c.variable, "rel");
        EXPECT_EQ(c.get(), default_of(c) + "rel/") << c.variable << ": neither exists";
        make_default(c);
        std::filesystem::create_directory(m_dir.path() / c.default_directory / "rel");
        EXPECT_EQ(c.get(), default_of(c)) << c.variable << ": it exists under the default only";

        std::filesystem::create_directory(m_dir.path() / "rel");
        CurrentDirectory const current(m_dir.path());
        EXPECT_EQ(c.get(), default_of(c) + "rel/") << c.variable << ": it exists under the current directory";
        std::filesystem::remove(m_dir.path() / "rel");
    }
}

TEST(GenUncheckedOverride, ReplacesTheWholePathWithAMessage)
{
    struct UncheckedCase
    {
        char const *variable;
        std::string (*get)();
        char const *default_path;
        char const *message;
    };
    constexpr UncheckedCase CASES[] = {
        {"KALVERN_COMMON_DEVINFO_PATH", gen_get_device_db_fullpath, "/fake/common/devinfo",
         "Using device DB path from KALVERN_COMMON_DEVINFO_PATH env: "},
        {"DEVDATA_ROOT", gen_get_devdata_db_fullpath, "/devdata", "Using devdata path from DEVDATA_ROOT env: "},
    };
    for (UncheckedCase const &c : CASES) {
        for (char const *const value : {"/no/such/place", "c:\\x\\100%s\\", "rel/x", ""}) {
            MessageRecorder const recorder;
            Environment const variable(c.variable, value);
            EXPECT_EQ(c.get(), FIO_PATH(value).fullpath()) << c.variable << ' ' << value;
            EXPECT_THAT(recorder.messages(),
                        ElementsAre(RecordedMessage{MEM_MSG_DEBUG, "GEN", std::string(c.message) + value}))
                << c.variable;
        }
        MessageRecorder const recorder;
        Environment const variable(c.variable, nullptr);
        EXPECT_EQ(c.get(), c.default_path) << c.variable;
        EXPECT_THAT(recorder.messages(), ElementsAre()) << c.variable;
    }
}

TEST(GenUserProfileDirectory, IsTheFirstThatExistsUnchanged)
{
    TempDir const dir;
    std::string const there = dir.text();
    std::string const slashed = there + "//"; // stays as it is
    std::string const file = dir.write("file", "");
    std::string const missing = dir.text("missing");
    char const *const unset = nullptr;
    struct ProfileCase
    {
        char const *userprofile;
        char const *tmp;
        char const *temp;
        std::string directory;
    };
    ProfileCase const cases[] = {
        {there.c_str(), slashed.c_str(), file.c_str(), there},
        {slashed.c_str(), there.c_str(), there.c_str(), slashed},
        {missing.c_str(), there.c_str(), slashed.c_str(), there},
        {"", there.c_str(), unset, there},
        {unset, missing.c_str(), slashed.c_str(), slashed},
        {file.c_str(), there.c_str(), there.c_str(), file}, // whatever exists
        {unset, unset, unset, "C:/"},
        {"", "", "", "C:/"},
        {missing.c_str(), missing.c_str(), missing.c_str(), "C:/"},
    };
    int row = 0;
    for (ProfileCase const &c : cases) {
        Environment const userprofile("USERPROFILE", c.userprofile);
        Environment const tmp("TMP", c.tmp);
        Environment const temp("TEMP", c.temp);
        EXPECT_EQ(gen_get_user_profile_directory(), c.directory) << "row " << row++;
    }
}

TEST(GenDeviceFilesOfAModuleWithoutADirectory, AreNone)
{
    TempDir const dir;
    dir.write("here.ddb", "");
    CurrentDirectory const current(dir.path());
    gen_os_fake_set_executable_path("tool");
    ASSERT_EQ(gen_get_module_path(), "");
    EXPECT_THAT(gen_get_all_device_files(), ElementsAre());
}
