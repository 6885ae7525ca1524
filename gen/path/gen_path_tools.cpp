#include "gen_path_sys.h"

#include "mem_sys.h"

namespace {

FIO_PATH tool_window(std::string const &stem, char const *extension)
{
    FIO_PATH path(gen_get_module_path());
    path.base(stem).extension(extension, "");
    return path;
}

FIO_PATH tool_window(std::string const &stem, FIO_EXTENSION_TYPE extension)
{
    FIO_PATH path(gen_get_module_path());
    path.base(stem).extension(extension, FIO_EXTENSION_NONE);
    return path;
}

FIO_PATH advisor(std::string const &stem, char const *extension)
{
    FIO_PATH path(gen_get_common_data_fullpath() + "/advisors/");
    path.base(stem).extension(extension, "");
    return path;
}

std::string text_or_empty(char const *text)
{
    return text == nullptr ? "" : text;
}

} // namespace

FIO_PATH gen_get_acv_filename()
{
    return tool_window("die_editor", "acv");
}

FIO_PATH gen_get_advanced_tan_tool_filename()
{
    return tool_window("Deep Timing Tool", "atfw");
}

FIO_PATH gen_get_ape_filename()
{
    return tool_window("Cell Property Editor", FIO_EXTENSION_KCP);
}

FIO_PATH gen_get_ase_filename()
{
    return tool_window("Constraint Sheet", FIO_EXTENSION_KCS);
}

FIO_PATH gen_get_awv_filename()
{
    return tool_window("Analog Trace Viewer", "kawv");
}

FIO_PATH gen_get_cfw_filename()
{
    return tool_window("Build Flow Window", "cfw");
}

FIO_PATH gen_get_ecui_filename()
{
    return tool_window("Formal Matcher", "ecui");
}

FIO_PATH gen_get_lfp_filename()
{
    return tool_window("logic_floormap", "lfp");
}

FIO_PATH gen_get_pgmw_cof_filename()
{
    return tool_window("Convert Image Files", "pgmwcof");
}

FIO_PATH gen_get_ppl_filename()
{
    return tool_window("pad_planner", "ppl");
}

FIO_PATH gen_get_ptw_filename()
{
    return tool_window("Energy Tool Window", "ptw");
}

FIO_PATH gen_get_kis_filename()
{
    return tool_window("Kalvern Suite Built-in Synthesis Tool Window", "kis");
}

FIO_PATH gen_get_ram_editor_filename()
{
    return tool_window("Memory Array Editor", "kred");
}

FIO_PATH gen_get_reqc_filename()
{
    return tool_window("Formal_Matcher_Viewer", "reqc");
}

FIO_PATH gen_get_rsm_filename()
{
    return tool_window("FSM_Viewer", "krsm");
}

FIO_PATH gen_get_rui_filename()
{
    return tool_window("Source_Netlist_Viewer", "krui");
}

FIO_PATH gen_get_rui_sim_viewer_ftm_filename()
{
    return tool_window("Fast_Corner_Sim_Netlist_Viewer", "krui");
}

FIO_PATH gen_get_rui_sim_viewer_fun_filename()
{
    return tool_window("Logic_Sim_Netlist_Viewer", "krui");
}

FIO_PATH gen_get_rui_sim_viewer_tim_filename()
{
    return tool_window("Delay_Sim_Netlist_Viewer", "krui");
}

FIO_PATH gen_get_sfw_filename()
{
    return tool_window("Sim Flow Window", "sfw");
}

FIO_PATH gen_get_stp_filename()
{
    return tool_window("Wave Probe", "stp");
}

FIO_PATH gen_get_stw_filename()
{
    return tool_window("Noise Tool Window", "stw");
}

FIO_PATH gen_get_tech_post_fit_viewer_filename()
{
    return tool_window("Mapped_Viewer_Post_Fit", "krui");
}

FIO_PATH gen_get_tech_post_map_viewer_filename()
{
    return tool_window("Mapped_Viewer_Post_Map", "krui");
}

FIO_PATH gen_get_tech_viewer_filename()
{
    return tool_window("Mapped_Viewer", "krui");
}

FIO_PATH gen_get_tfw_filename()
{
    return tool_window("Timing Flow Window", "tfw");
}

FIO_PATH gen_get_fled_filename(std::string const & /*unused*/, bool /*unused*/)
{
    return tool_window("TimingFloorMap", "fld");
}

FIO_PATH gen_get_rpw_filename(int number)
{
    std::string stem;
    stl_sprintf(&stem, "Results_Window_%02d", number);
    return tool_window(stem, FIO_EXTENSION_KRW);
}

FIO_PATH gen_get_snapshot_viewer_filename(char const *stem)
{
    return tool_window(text_or_empty(stem), FIO_EXTENSION_KSV);
}

FIO_PATH gen_get_timing_analyzer_snapshot_filename(char const *stem)
{
    return tool_window(text_or_empty(stem), FIO_EXTENSION_KTA);
}

FIO_PATH gen_get_tmv_snapshot_viewer_filename(char const *stem)
{
    return tool_window(text_or_empty(stem), FIO_EXTENSION_KTM);
}

FIO_PATH gen_get_oaw_filename(char const *stem)
{
    return advisor(text_or_empty(stem), "oaw");
}

FIO_PATH gen_get_oaw_hk2_filename()
{
    return advisor("oa_hk2_table", "xml");
}

FIO_PATH gen_get_oaw_incremental_filename()
{
    return advisor("oa_incremental_table", "xml");
}

FIO_PATH gen_get_oaw_power_filename()
{
    return advisor("oa_power_table", "xml");
}

FIO_PATH gen_get_oaw_productivity_filename()
{
    return advisor("oa_productivity_table", "xml");
}

FIO_PATH gen_get_oaw_resource_filename()
{
    return advisor("oa_resource_table", "xml");
}

FIO_PATH gen_get_oaw_ssn_filename()
{
    return advisor("oa_ssn_table", "xml");
}

FIO_PATH gen_get_oaw_timing_filename()
{
    return advisor("oa_timing_table", "xml");
}
