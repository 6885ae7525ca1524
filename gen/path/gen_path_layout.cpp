// The layout of the installation. Everything follows from the path of one file, the module: the executable, or zel_gen
// if the two lie in different directories.
//
//     /opt/suite/bin64/kgui           the module
//     /opt/suite/bin64/               its directory
//     /opt/suite/                     the root: the parent of that directory, whatever its name is
//     /opt/suite/common/...           the files under the root
#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/base/gen_debug_message.h"
#include "gen/base/gen_process_flags.h"
#include "gen/os/gen_os.h"
#include "sys/sys_path_text.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

// The platform's longest path: 260 on Windows.
constexpr std::size_t PATH_LIMIT = FILENAME_MAX;

// The module's full path; set by the first function that needs it, on the main thread, and never changed afterwards.
char l_module_fullpath_cache[PATH_LIMIT + 1];

// The value of GEN_PATH_DEBUG, null if it is not set; read once, on the main thread.
char const *l_path_debug_value = nullptr;
bool l_path_debug_read = false;

// Directories under the root, by GEN_LIBRARY_TYPE.
constexpr char const *LIBRARY_DIRECTORIES[] = {
    "",
    "libraries/",
    "libraries/vhdl/",
    "libraries/primitives/",
    "libraries/primitives/pin/",
    "libraries/primitives/buffer/",
    "libraries/primitives/logic/",
    "libraries/primitives/storage/",
    "libraries/primitives/other/",
    "libraries/ipblocks/",
    "libraries/ipblocks/arithmetic/",
    "libraries/ipblocks/gates/",
    "libraries/ipblocks/io/",
    "libraries/ipblocks/storage/",
    "libraries/ipblocks/embedded_logic/",
    "libraries/corelib/",
    "libraries/others/",
    "libraries/others/legacy2/",
    "libraries/others/partnercores/",
    "libraries/others/vital/",
    "eda/mentor/",
    "eda/synopsys/",
    "eda/viewlogic/",
    "eda/sim_lib/",
    "eda/ibis/",
    "eda/ibis2/",
    "libraries/others/synplicity/",
    "libraries/software/boot/",
    "libraries/others/evalcore_plus/",
    "eda/hspice/",
    "libraries/wys_stub", // the only one without a slash
};
static_assert(sizeof LIBRARY_DIRECTORIES / sizeof *LIBRARY_DIRECTORIES == GEN_LIB_SIZE);

bool is_path_debug_on()
{
    if (!l_path_debug_read) {
        l_path_debug_value = std::getenv("GEN_PATH_DEBUG");
        l_path_debug_read = true;
    }
    return l_path_debug_value != nullptr;
}

// A path from the system, in lower case if the system ignores case in paths.
FIO_PATH path_from_system(std::string path)
{
    if (!gen_os_case_matters_in_paths())
        sys_lower_letters(path);
    return FIO_PATH(path);
}

// The running executable; empty if the system doesn't report it.
FIO_PATH find_executable()
{
    std::string path;
    return gen_os_read_executable_path(path) ? path_from_system(std::move(path)) : FIO_PATH();
}

// The file of a loaded library; empty if the library isn't loaded.
FIO_PATH find_library(char const *stem)
{
    char name[PATH_LIMIT + 1] = {};
    thr_drl_construct_library_name(name, PATH_LIMIT, stem);
    if (*name == '\0')
        std::strncpy(name, stem, PATH_LIMIT);
    if (is_path_debug_on())
        std::printf("Debug: GEN: library name = %s\n", name);
    std::string path;
    return gen_os_read_library_path(name, path) ? path_from_system(std::move(path)) : FIO_PATH();
}

FIO_PATH find_module()
{
    FIO_PATH const executable = find_executable();
    FIO_PATH const library = find_library("zel_gen");
    if (is_path_debug_on())
        std::printf("Debug: GEN: library path = %s\n", library.fullpath().c_str());
    bool const is_own_tool = library.fullpath().empty() || executable.full_directory() == library.full_directory();
    return is_own_tool ? executable : library;
}

void fill_module_fullpath_cache()
{
    std::strncpy(l_module_fullpath_cache, find_module().fullpath().c_str(), PATH_LIMIT);
    if (*l_module_fullpath_cache == '\0') {
        std::fputs("Error: Can not determine executable's full path!\n", stderr);
        std::exit(-1);
    }
    if (is_path_debug_on())
        std::printf("Debug: GEN: module fullpath = %s\n", l_module_fullpath_cache);
}

// The module's path, in the form of FIO_PATH.
std::string_view module_fullpath()
{
    if (*l_module_fullpath_cache == '\0')
        fill_module_fullpath_cache();
    return l_module_fullpath_cache;
}

// The part before the file name; empty if there is no slash.
std::string_view directory_of(std::string_view path)
{
    return path.substr(0, path.rfind('/') + 1);
}

std::string lower_case(std::string text)
{
    sys_lower_letters(text);
    return text;
}

// The directory that `steps` lead to from `start`, with a slash at the end.
std::string directory_from(std::string const &start, char const *steps)
{
    FIO_PATH path(start);
    path.cd(steps);
    return path.full_directory();
}

// The directory that the variable names, or the default directory. A value that doesn't exist is ignored if the default
// exists.
std::string overridable_directory(std::string const &start, char const *steps, char const *variable)
{
    std::string const default_directory = directory_from(start, steps);
    char const *const value = std::getenv(variable);
    if (value == nullptr || *value == '\0')
        return default_directory;
    if (!FIO_FILE_SYSTEM::exists(value) && FIO_FILE_SYSTEM::exists(default_directory))
        return default_directory;
    return directory_from(default_directory, value);
}

} // namespace

std::string gen_get_executable_fullpath()
{
    return lower_case(find_executable().fullpath());
}

std::string gen_get_library_fullpath(char const *stem)
{
    return lower_case(find_library(stem).fullpath());
}

std::string gen_get_module_fullpath()
{
    return std::string(module_fullpath());
}

std::string gen_get_module_path()
{
    return std::string(directory_of(module_fullpath()));
}

std::string gen_get_module_filename()
{
    std::string_view const path = module_fullpath();
    return std::string(path.substr(directory_of(path).size()));
}

bool gen_get_is_kalvern_exe()
{
    std::string const base = lower_case(FIO_PATH(gen_get_module_fullpath()).base());
    bool const is_qt = gen_process_flags.is_qt.load(std::memory_order_relaxed);
    if (is_qt && (base == "kgui" || base == "kpro"))
        return true;
    return base == ver_get_brisel_product_filename();
}

std::string gen_get_kalvern_path()
{
    std::string_view path = directory_of(module_fullpath());
    if (path.empty())
        return {};
    path.remove_suffix(1);
    std::string_view const parent = directory_of(path);
    return std::string(parent.empty() ? path : parent);
}

std::string gen_get_library_path(GEN_LIBRARY_TYPE type)
{
    GEN_ASSERT(type < GEN_LIB_SIZE, "type < (GEN_LIBRARY_TYPE)GEN_LIB_SIZE");
    return gen_get_kalvern_path() + LIBRARY_DIRECTORIES[type];
}

std::string gen_get_common_data_fullpath()
{
    return gen_get_kalvern_path() + "common";
}

std::string gen_get_dynamic_atom_data_fullpath()
{
    return gen_get_kalvern_path() + "common/devxml/cag";
}

std::string gen_get_common_misc_fullpath()
{
    return directory_from(gen_get_common_data_fullpath(), "misc");
}

std::string gen_get_tcl_apps_fullpath()
{
    return directory_from(gen_get_common_data_fullpath(), "tcl/apps");
}

std::string gen_get_tcl_flow_templates_fullpath()
{
    return directory_from(gen_get_common_data_fullpath(), "tcl/flow_templates");
}

std::string gen_get_tcl_internal_fullpath()
{
    return directory_from(gen_get_common_data_fullpath(), "tcl/internal");
}

std::string gen_get_unshipped_data_fullpath()
{
    return directory_from(gen_get_common_data_fullpath(), "not_shipped");
}

std::string gen_get_unshipped_tcl_fullpath()
{
    return directory_from(gen_get_unshipped_data_fullpath(), "tcl");
}

std::string gen_get_unshipped_tcl_flow_templates_fullpath()
{
    return directory_from(gen_get_unshipped_data_fullpath(), "tcl/flow_templates");
}

std::string gen_get_ksys_bin_path()
{
    return directory_from(gen_get_kalvern_path(), "../ksys/bin");
}

std::string gen_get_device_db_name()
{
    return "devinfo";
}

std::string gen_get_device_db_fullpath()
{
    FIO_PATH path(gen_get_common_data_fullpath() + '/');
    path.base(gen_get_device_db_name());
    if (char const *const value = std::getenv("KALVERN_COMMON_DEVINFO_PATH")) {
        gen_debug_message("Using device DB path from KALVERN_COMMON_DEVINFO_PATH env: %s", value);
        path = value;
    }
    return path.fullpath();
}

std::list<std::string> gen_get_all_device_files()
{
    std::string const directory = gen_get_module_path(); // ends in a slash unless it is empty
    if (directory.empty())
        return {};
    FIO_FIND find(directory + "*.ddb");
    std::list<std::string> names;
    for (std::string name = find.find_first(); !name.empty(); name = find.find_next())
        names.push_back(std::move(name));
    return names;
}

std::string gen_get_devdata_db_fullpath()
{
    if (char const *const value = std::getenv("DEVDATA_ROOT")) {
        gen_debug_message("Using devdata path from DEVDATA_ROOT env: %s", value);
        return FIO_PATH(value).fullpath();
    }
    return FIO_PATH(gen_get_kalvern_path()).cd("..").base("devdata").fullpath();
}

std::string gen_get_ip_path()
{
    return overridable_directory(gen_get_kalvern_path(), "../ip", "IP_ROOTDIR");
}

std::string gen_get_platform_path()
{
    return overridable_directory(gen_get_common_data_fullpath(), "devplatforms", "KALVERN_PLATFORM_ROOTDIR");
}

std::string gen_get_devkits_path()
{
    return overridable_directory(gen_get_common_data_fullpath(), "devkits", "KALVERN_DEVKITS_ROOTDIR");
}

std::string gen_get_user_profile_directory()
{
    for (char const *const variable : {"USERPROFILE", "TMP", "TEMP"}) {
        char const *const value = std::getenv(variable);
        if (value != nullptr && *value != '\0' && FIO_FILE_SYSTEM::exists(value))
            return value;
    }
    return "C:/";
}
