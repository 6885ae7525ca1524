// Where things are: the layout of the installation, and the paths of the open project.
//
// A text of a directory ends in "/", but for the _fullpath getters that are said not to; callers append accordingly.
// Results are fresh copies unless said. Building a text looks at no disk unless said.
//
// Threads: the first question for the layout is to come from the main thread, which gen_exe_init() sees to; after that
// any thread may ask. The project's paths have no lock: setters run on the thread that drives the flow. Once the exit
// handlers have released the project's paths, their getters answer with empty texts and their setters do nothing.
#ifndef GEN_PATH_SYS_H
#define GEN_PATH_SYS_H

#include "fio_sys.h"
#include "zel_export_sys.h"

#include <string>

// Names of directories.

extern GEN_API char const *const GEN_DB_DIR_NAME;               ///< "db"
extern GEN_API char const *const GEN_KDB_DIR_NAME;              ///< "kdb"
extern GEN_API char const *const GEN_PROJECT_IPBLOCKS_DIR_NAME; ///< "ipblocks"
extern GEN_API char const *const GEN_INCR_DB_DIR_NAME;          ///< "incremental_db"
extern GEN_API char const *const GEN_PERSONA_DIR_NAME;          ///< "persona"

/// The library directories of the installation, with their places under the root.
enum GEN_LIBRARY_TYPE : unsigned
{
    GEN_LIB_ROOT,              ///< the root itself
    GEN_LIB_LIBRARIES,         ///< "libraries/"
    GEN_LIB_VHDL,              ///< "libraries/vhdl/"
    GEN_LIB_PRIMITIVES,        ///< "libraries/primitives/"
    GEN_LIB_PRIM_PIN,          ///< "libraries/primitives/pin/"
    GEN_LIB_PRIM_BUFFER,       ///< "libraries/primitives/buffer/"
    GEN_LIB_PRIM_LOGIC,        ///< "libraries/primitives/logic/"
    GEN_LIB_PRIM_STORAGE,      ///< "libraries/primitives/storage/"
    GEN_LIB_PRIM_OTHER,        ///< "libraries/primitives/other/"
    GEN_LIB_IPBLOCKS,          ///< "libraries/ipblocks/"
    GEN_LIB_IP_ARITHMETIC,     ///< "libraries/ipblocks/arithmetic/"
    GEN_LIB_IP_GATES,          ///< "libraries/ipblocks/gates/"
    GEN_LIB_IP_IO,             ///< "libraries/ipblocks/io/"
    GEN_LIB_IP_STORAGE,        ///< "libraries/ipblocks/storage/"
    GEN_LIB_IP_EMBEDDED_LOGIC, ///< "libraries/ipblocks/embedded_logic/"
    GEN_LIB_CORELIB,           ///< "libraries/corelib/"
    GEN_LIB_OTHERS,            ///< "libraries/others/"
    GEN_LIB_LEGACY2,           ///< "libraries/others/legacy2/"
    GEN_LIB_PARTNERCORES,      ///< "libraries/others/partnercores/"
    GEN_LIB_VITAL,             ///< "libraries/others/vital/"
    GEN_LIB_EDA_MENTOR,        ///< "eda/mentor/"
    GEN_LIB_EDA_SYNOPSYS,      ///< "eda/synopsys/"
    GEN_LIB_EDA_VIEWLOGIC,     ///< "eda/viewlogic/"
    GEN_LIB_EDA_SIM_LIB,       ///< "eda/sim_lib/"
    GEN_LIB_EDA_IBIS,          ///< "eda/ibis/"
    GEN_LIB_EDA_IBIS2,         ///< "eda/ibis2/"
    GEN_LIB_SYNPLICITY,        ///< "libraries/others/synplicity/"
    GEN_LIB_SOFTWARE_BOOT,     ///< "libraries/software/boot/"
    GEN_LIB_EVALCORE_PLUS,     ///< "libraries/others/evalcore_plus/"
    GEN_LIB_EDA_HSPICE,        ///< "eda/hspice/"
    GEN_LIB_WYS_STUB,          ///< "libraries/wys_stub", alone without a slash at the end
    GEN_LIB_SIZE               ///< how many there are: 31
};

// The module: the file that stands for this process in the installation. It is the executable if that lies in the same
// directory as this library, otherwise this library.

/// The running executable's full path, in lower case; empty if the system doesn't tell.
GEN_API std::string gen_get_executable_fullpath();

/// The full path, in lower case, of a library that is loaded in this process; empty if it isn't. Loads nothing.
///
/// @param stem  the library's name without the platform's prefix and suffix, such as "zel_gen"; not null
GEN_API std::string gen_get_library_fullpath(char const *stem);

/// The module's full path. It is found once and kept for the life of the process.
///
/// In lower case where the file system doesn't tell cases apart, otherwise with its case as it is; this also holds for
/// the root and all paths under it. A path beyond the platform's limit (260 characters on Windows) is cut.
///
/// If neither path can be had, the process ends with "Error: Can not determine executable's full path!" on
/// standard error and the exit status -1. While the environment variable `GEN_PATH_DEBUG` exists, with any value, the
/// search is told on standard output; the variable is read once.
GEN_API std::string gen_get_module_fullpath();

/// The module's directory.
GEN_API std::string gen_get_module_path();

/// The module's file name with its extension.
GEN_API std::string gen_get_module_filename();

/// Whether the module is the suite's main executable: its base name, in lower case, is the product's file name, or, in
/// a process that has called gen_set_is_qt(true), "kgui" or "kpro".
GEN_API bool gen_get_is_kalvern_exe();

// The installation.

/// The root: the parent of the module's directory, whatever the name of that directory. The environment has no say.
///
///     module c:/tools/suite/bin64/kgui.exe -> "c:/tools/suite/"
GEN_API std::string gen_get_kalvern_path();

/// The root with a library directory's place appended.
///
/// @param type  below GEN_LIB_SIZE; anything else is an internal error
GEN_API std::string gen_get_library_path(GEN_LIBRARY_TYPE type);

/// "common" under the root; no slash at the end.
GEN_API std::string gen_get_common_data_fullpath();

/// "common/devxml/cag" under the root; no slash at the end.
GEN_API std::string gen_get_dynamic_atom_data_fullpath();

/// "common/misc/" under the root.
GEN_API std::string gen_get_common_misc_fullpath();

/// "common/tcl/apps/" under the root.
GEN_API std::string gen_get_tcl_apps_fullpath();

/// "common/tcl/flow_templates/" under the root.
GEN_API std::string gen_get_tcl_flow_templates_fullpath();

/// "common/tcl/internal/" under the root.
GEN_API std::string gen_get_tcl_internal_fullpath();

/// "common/not_shipped/" under the root.
GEN_API std::string gen_get_unshipped_data_fullpath();

/// "common/not_shipped/tcl/" under the root.
GEN_API std::string gen_get_unshipped_tcl_fullpath();

/// "common/not_shipped/tcl/flow_templates/" under the root.
GEN_API std::string gen_get_unshipped_tcl_flow_templates_fullpath();

/// "ksys/bin/" beside the root.
GEN_API std::string gen_get_ksys_bin_path();

/// "devinfo", the device database's name.
GEN_API std::string gen_get_device_db_name();

// Places that the environment may override. It is read at each call.

/// "common/devinfo" under the root; no slash at the end. If the environment variable `KALVERN_COMMON_DEVINFO_PATH`
/// exists, the path is its value instead, even an empty one, with a debug message and without a look at the disk.
GEN_API std::string gen_get_device_db_fullpath();

/// "devdata" beside the root; no slash at the end. If the environment variable `DEVDATA_ROOT` exists, the path is its
/// value instead, even an empty one, with a debug message and without a look at the disk.
GEN_API std::string gen_get_devdata_db_fullpath();

/// "ip/" beside the root, or what the environment variable `IP_ROOTDIR` names.
///
/// A value that isn't empty wins if a file or directory of that name exists, and also if the default doesn't exist
/// either; so a wrong value never hides a working installation. A relative value is looked for from the current
/// directory, and then taken from the default.
GEN_API std::string gen_get_ip_path();

/// "common/devplatforms/" under the root, or what `KALVERN_PLATFORM_ROOTDIR` names; by the rule of gen_get_ip_path().
GEN_API std::string gen_get_platform_path();

/// "common/devkits/" under the root, or what `KALVERN_DEVKITS_ROOTDIR` names; by the rule of gen_get_ip_path().
GEN_API std::string gen_get_devkits_path();

/// The first of the environment variables `USERPROFILE`, `TMP` and `TEMP` that names something that exists, unchanged:
/// separators stay, and no slash is appended. "C:/" if there is none.
GEN_API std::string gen_get_user_profile_directory();

// The database directory of the project.

/// Sets the database directory, and the search over it. The text may be empty.
GEN_API void gen_set_db_dir_path(std::string path);

/// The database directory; empty if none was set.
GEN_API FIO_PATH gen_get_db_dir_path();

/// The text of gen_get_db_dir_path().
GEN_API std::string gen_get_db_dir_path_string();

/// Whether a database directory was set, be it the empty one.
GEN_API bool gen_check_db_dir_path();

/// The database directory's full name; a value on its own, which the database directory doesn't touch. Empty if none
/// was set.
GEN_API void gen_set_db_dir_full_name(FIO_PATH path);
GEN_API FIO_PATH gen_get_db_dir_full_name();

/// The directory of the incremental database: the text of the database directory with its last three characters, taken
/// to be "db/", replaced by "incremental_db/". Other characters there go all the same, as do those of a shorter text.
/// Empty if no database directory was set or if its text is empty.
///
///     "c:/p/db/" -> "c:/p/incremental_db/"    "c:/p/kdb/" -> "c:/p/kincremental_db/"
GEN_API std::string gen_get_incr_db_dir_path_string();

// The project directory.

/// Sets the project directory, its directory of IP blocks, and the searches over both.
///
/// @param path  a directory, with or without a slash at the end; a relative one stays relative
GEN_API void gen_set_project_dir_path(std::string path);

/// The project directory; empty if none is known. It ends in "/" unless it is empty.
///
/// A search for a file and gen_get_project_output_directory() make the current directory of that moment the project
/// directory if none was set. This getter and the others don't.
GEN_API std::string gen_get_project_dir_path();

/// "ipblocks/" under the project directory; empty if no project directory is known.
GEN_API FIO_PATH gen_get_project_ipblocks_dir_path();

/// "persona/" under the project directory; empty if the project directory's text is.
GEN_API std::string gen_get_persona_dir_path_string();

// The directory for output.

/// Sets the directory for output.
///
/// @param path  a relative one counts from the current directory of now; null and the empty text take the setting back
GEN_API void gen_set_project_output_directory(char const *path);

/// The directory for output, made if it doesn't exist; the project directory if none was set, if it can't be made or if
/// something else has its name. If there is no project directory either, the current directory becomes it.
///
/// @return a pointer into the library's state, never null, valid until the next call that sets this directory or the
///         project directory
GEN_API char const *gen_get_project_output_directory();

// Lists of library directories, separated by ";" on every platform.

/// The project's library directories. Relative ones count from the project directory of the time of a search.
GEN_API void gen_set_project_library_paths(std::string paths);
GEN_API std::string gen_get_project_library_paths();

/// The user's library directories. Relative ones count from the project directory of the time of a search.
GEN_API void gen_set_user_library_paths(std::string paths);
GEN_API std::string gen_get_user_library_paths();

/// The user's directories of IP. The text is kept for its readers; no search of this library uses it.
GEN_API void gen_set_user_ip_search_paths(std::string paths);
GEN_API std::string gen_get_user_ip_search_paths();

#endif
