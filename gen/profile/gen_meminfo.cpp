// Reports the sizes of the installation's libraries and the memory of the process at a point of a flow.
#include "gen_profile_bins_sys.h"

#include "fio_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/os/gen_os.h"
#include "gen_path_sys.h"
#include "gen_time_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include <cstdint>

namespace {

// Bits of a find record.
constexpr unsigned ATTRIBUTE_DIRECTORY = 0x10;
constexpr unsigned ATTRIBUTE_LINK = 0x400;

// Sizes on disk in bytes, as wide as those of a find record.
struct LibrarySizes
{
    std::uint32_t m_loaded = 0;
    std::uint32_t m_not_loaded = 0;
};

bool is_library(struct _finddata64i32_t const &record)
{
    if ((record.attrib & ATTRIBUTE_DIRECTORY) != 0)
        return false;
    return (record.attrib & ATTRIBUTE_LINK) == 0 || gen_os_library_links_count();
}

void add_library(LibrarySizes &sizes, struct _finddata64i32_t const &record, bool list_details)
{
    auto const size = static_cast<std::uint32_t>(record.size);
    if (!thr_drl_is_loaded(record.name)) {
        sizes.m_not_loaded += size;
        return;
    }
    sizes.m_loaded += size;
    if (list_details)
        gen_debug_message("LOADED: %-12s  %9ld", static_cast<char const *>(record.name), size);
}

// Returns false if there is no library.
bool scan_libraries(LibrarySizes &sizes, bool list_details)
{
    struct _finddata64i32_t record;
    std::string const pattern = gen_get_module_path() + gen_os_library_pattern();
    std::intptr_t const search = FIO_FILE_SYSTEM::findfirst(pattern.c_str(), &record);
    if (search == -1)
        return false;
    do {
        if (is_library(record))
            add_library(sizes, record, list_details);
    } while (FIO_FILE_SYSTEM::findnext(search, &record) == 0);
    FIO_FILE_SYSTEM::findclose(search);
    return true;
}

} // namespace

void gen_meminfo_report_dll_usage(char const *tool, char const *point)
{
    bool const profile_dll_usage = mem_cfg_is_on("profile_dll_usage", false);
    bool const list_dll_details = mem_cfg_is_on("list_dll_details", false);
    bool const report_modules_flow = mem_cfg_is_on("report_modules_flow", false);
    if (point == nullptr)
        point = "start";
    if (profile_dll_usage) {
        LibrarySizes sizes;
        if (scan_libraries(sizes, list_dll_details))
            gen_debug_message("%-10.10s %s DLL usage(bytes): Loaded %d Not Loaded %d", tool, point, sizes.m_loaded,
                              sizes.m_not_loaded);
        else
            gen_debug_message("No *.dll files found!");
    }
    if (report_modules_flow)
        gen_debug_message("%-10.10s %s at %s memory usage(bytes): transient %llu WS %llu WS Peak %llu", tool, point,
                          gen_get_current_date_and_time(), MEM_MANAGER::current_total_memory(),
                          mem_info_get_process_current_working_set_size(),
                          mem_info_get_process_peak_working_set_size());
}
