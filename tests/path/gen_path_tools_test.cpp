#include "gen_path_sys.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The name that the stem functions are given, and the number of the report window.
constexpr char const *STEM = "My view 2";
constexpr int NUMBER = 3;

struct NameCase
{
    char const *function;
    FIO_PATH (*get)();
    char const *path;
};
constexpr NameCase NAME_CASES[] = {
    // next to the module
    {"gen_get_acv_filename", gen_get_acv_filename, "/fake/bin/die_editor.acv"},
    {"gen_get_advanced_tan_tool_filename", gen_get_advanced_tan_tool_filename, "/fake/bin/Deep Timing Tool.atfw"},
    {"gen_get_ape_filename", gen_get_ape_filename, "/fake/bin/Cell Property Editor.kcp"},
    {"gen_get_ase_filename", gen_get_ase_filename, "/fake/bin/Constraint Sheet.kcs"},
    {"gen_get_awv_filename", gen_get_awv_filename, "/fake/bin/Analog Trace Viewer.kawv"},
    {"gen_get_cfw_filename", gen_get_cfw_filename, "/fake/bin/Build Flow Window.cfw"},
    {"gen_get_ecui_filename", gen_get_ecui_filename, "/fake/bin/Formal Matcher.ecui"},
    {"gen_get_fled_filename", [] { return gen_get_fled_filename("any", true); }, "/fake/bin/TimingFloorMap.fld"},
    {"gen_get_lfp_filename", gen_get_lfp_filename, "/fake/bin/logic_floormap.lfp"},
    {"gen_get_pgmw_cof_filename", gen_get_pgmw_cof_filename, "/fake/bin/Convert Image Files.pgmwcof"},
    {"gen_get_ppl_filename", gen_get_ppl_filename, "/fake/bin/pad_planner.ppl"},
    {"gen_get_ptw_filename", gen_get_ptw_filename, "/fake/bin/Energy Tool Window.ptw"},
    {"gen_get_kis_filename", gen_get_kis_filename, "/fake/bin/Kalvern Suite Built-in Synthesis Tool Window.kis"},
    {"gen_get_ram_editor_filename", gen_get_ram_editor_filename, "/fake/bin/Memory Array Editor.kred"},
    {"gen_get_reqc_filename", gen_get_reqc_filename, "/fake/bin/Formal_Matcher_Viewer.reqc"},
    {"gen_get_rpw_filename", [] { return gen_get_rpw_filename(NUMBER); }, "/fake/bin/Results_Window_03.krw"},
    {"gen_get_rsm_filename", gen_get_rsm_filename, "/fake/bin/FSM_Viewer.krsm"},
    {"gen_get_rui_filename", gen_get_rui_filename, "/fake/bin/Source_Netlist_Viewer.krui"},
    {"gen_get_rui_sim_viewer_ftm_filename", gen_get_rui_sim_viewer_ftm_filename,
     "/fake/bin/Fast_Corner_Sim_Netlist_Viewer.krui"},
    {"gen_get_rui_sim_viewer_fun_filename", gen_get_rui_sim_viewer_fun_filename,
     "/fake/bin/Logic_Sim_Netlist_Viewer.krui"},
    {"gen_get_rui_sim_viewer_tim_filename", gen_get_rui_sim_viewer_tim_filename,
     "/fake/bin/Delay_Sim_Netlist_Viewer.krui"},
    {"gen_get_sfw_filename", gen_get_sfw_filename, "/fake/bin/Sim Flow Window.sfw"},
    {"gen_get_snapshot_viewer_filename", [] { return gen_get_snapshot_viewer_filename(STEM); },
     "/fake/bin/My view 2.ksv"},
    {"gen_get_stp_filename", gen_get_stp_filename, "/fake/bin/Wave Probe.stp"},
    {"gen_get_stw_filename", gen_get_stw_filename, "/fake/bin/Noise Tool Window.stw"},
    {"gen_get_tech_post_fit_viewer_filename", gen_get_tech_post_fit_viewer_filename,
     "/fake/bin/Mapped_Viewer_Post_Fit.krui"},
    {"gen_get_tech_post_map_viewer_filename", gen_get_tech_post_map_viewer_filename,
     "/fake/bin/Mapped_Viewer_Post_Map.krui"},
    {"gen_get_tech_viewer_filename", gen_get_tech_viewer_filename, "/fake/bin/Mapped_Viewer.krui"},
    {"gen_get_tfw_filename", gen_get_tfw_filename, "/fake/bin/Timing Flow Window.tfw"},
    {"gen_get_timing_analyzer_snapshot_filename", [] { return gen_get_timing_analyzer_snapshot_filename(STEM); },
     "/fake/bin/My view 2.kta"},
    {"gen_get_tmv_snapshot_viewer_filename", [] { return gen_get_tmv_snapshot_viewer_filename(STEM); },
     "/fake/bin/My view 2.ktm"},
    // advisors
    {"gen_get_oaw_filename", [] { return gen_get_oaw_filename(STEM); }, "/fake/common/advisors/My view 2.oaw"},
    {"gen_get_oaw_hk2_filename", gen_get_oaw_hk2_filename, "/fake/common/advisors/oa_hk2_table.xml"},
    {"gen_get_oaw_incremental_filename", gen_get_oaw_incremental_filename,
     "/fake/common/advisors/oa_incremental_table.xml"},
    {"gen_get_oaw_power_filename", gen_get_oaw_power_filename, "/fake/common/advisors/oa_power_table.xml"},
    {"gen_get_oaw_productivity_filename", gen_get_oaw_productivity_filename,
     "/fake/common/advisors/oa_productivity_table.xml"},
    {"gen_get_oaw_resource_filename", gen_get_oaw_resource_filename, "/fake/common/advisors/oa_resource_table.xml"},
    {"gen_get_oaw_ssn_filename", gen_get_oaw_ssn_filename, "/fake/common/advisors/oa_ssn_table.xml"},
    {"gen_get_oaw_timing_filename", gen_get_oaw_timing_filename, "/fake/common/advisors/oa_timing_table.xml"},
};
static_assert(std::size(NAME_CASES) == 39);

std::string report_window(int number)
{
    return gen_get_rpw_filename(number).fullpath();
}

} // namespace

TEST(GenToolFilenames, NeedNoProject)
{
    for (NameCase const &c : NAME_CASES)
        EXPECT_EQ(c.get().fullpath(), c.path) << c.function;
    EXPECT_EQ(gen_get_project_dir_path(), "");

    gen_set_project_dir_path("/p/");
    gen_set_db_dir_path("/p/db/");
    for (NameCase const &c : NAME_CASES)
        EXPECT_EQ(c.get().fullpath(), c.path) << c.function;
}

TEST(GenToolFilenames, AreTheCallers)
{
    FIO_PATH path = gen_get_rui_filename();
    path.filename("other");
    EXPECT_EQ(gen_get_rui_filename().fullpath(), "/fake/bin/Source_Netlist_Viewer.krui");
}

TEST(GenReportWindow, HasTwoDigitsAtLeast)
{
    struct NumberCase
    {
        int number;
        char const *path;
    };
    constexpr NumberCase CASES[] = {
        {0, "/fake/bin/Results_Window_00.krw"},
        {9, "/fake/bin/Results_Window_09.krw"},
        {10, "/fake/bin/Results_Window_10.krw"},
        {99, "/fake/bin/Results_Window_99.krw"},
        {100, "/fake/bin/Results_Window_100.krw"},
        {-1, "/fake/bin/Results_Window_-1.krw"},
        {2147483647, "/fake/bin/Results_Window_2147483647.krw"},
        {-2147483647 - 1, "/fake/bin/Results_Window_-2147483648.krw"},
    };
    for (NumberCase const &c : CASES)
        EXPECT_EQ(report_window(c.number), c.path);
}

TEST(GenTimingFloorMap, IsTheSameForAnyArguments)
{
    for (char const *const text : {"", "stem", "/p/a.v"})
        for (bool const flag : {false, true})
            EXPECT_EQ(gen_get_fled_filename(text, flag).fullpath(), "/fake/bin/TimingFloorMap.fld");
}

TEST(GenStemFilenames, TreatAStemAsABase)
{
    struct StemCase
    {
        char const *stem;
        char const *name;
    };
    constexpr StemCase CASES[] = {
        {"a", "a.E"},
        {"a b", "a b.E"},
        {"\xe4\xff", "\xe4\xff.E"},
        {"%s", "%s.E"},
        // the text after the last dot is the extension that is replaced
        {"a.b", "a.E"},
        {"a.b.c", "a.b.E"},
        {"a.", "a.E"},
        {".a", ".a.E"},
        // further down
        {"d/a", "d/a.E"},
        {"d\\a", "d/a.E"},
        {"/a", "a.E"},
        // without a name there is no extension
        {"", ""},
        {nullptr, ""},
        {"/", ""},
        {"\\//", ""},
        {"d/", "d/"},
        {".", "."},
        {"..", ".."},
    };
    struct StemFunction
    {
        FIO_PATH (*get)(char const *);
        char const *directory;
        char const *extension;
    };
    constexpr StemFunction FUNCTIONS[] = {
        {gen_get_snapshot_viewer_filename, "/fake/bin/", "ksv"},
        {gen_get_timing_analyzer_snapshot_filename, "/fake/bin/", "kta"},
        {gen_get_tmv_snapshot_viewer_filename, "/fake/bin/", "ktm"},
        {gen_get_oaw_filename, "/fake/common/advisors/", "oaw"},
    };
    for (StemFunction const &f : FUNCTIONS)
        for (StemCase const &c : CASES) {
            std::string name = c.name;
            if (!name.empty() && name.back() == 'E')
                name.replace(name.size() - 1, 1, f.extension);
            EXPECT_EQ(f.get(c.stem).fullpath(), f.directory + name) << (c.stem == nullptr ? "null" : c.stem);
        }
}

TEST(GenStemFilenames, TakeNamesOfAnyLength)
{
    std::string const longest(255, 'n');
    EXPECT_EQ(gen_get_snapshot_viewer_filename(longest.c_str()).fullpath(), "/fake/bin/" + longest + ".ksv");
    std::string const beyond(100000, 'n');
    EXPECT_EQ(gen_get_oaw_filename(beyond.c_str()).fullpath(), "/fake/common/advisors/" + beyond + ".oaw");
}
