// Where things are: the layout of the installation, and the paths of the open project.
//
// A text of a directory ends in "/", but for the _fullpath getters that are said not to; callers append accordingly.
// Results are fresh copies unless said. Building a text looks at no disk unless said.
//
// Threads: the first question for the layout is to come from the main thread, which gen_exe_init() sees to; after that
// any thread may ask. The project's paths have no lock: setters and searches run on the thread that drives the flow.
// Once the exit handlers have released the project's paths, their getters answer with empty texts, their setters do
// nothing, and no place is searched.
#ifndef GEN_PATH_SYS_H
#define GEN_PATH_SYS_H

#include "fio_sys.h"
#include "zel_export_sys.h"

#include <list>
#include <string>
#include <utility>
#include <vector>

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

/// Adds directories behind the project's library directories, each unless it is there already. Directories are compared
/// by their text, with A to Z folded.
///
/// @param paths  directories, separated by ";"; empty elements don't count. A text without ";" that has "*" or "?" in
///               its last component is a pattern and no list, as everywhere in FIO_FIND.
///
/// If one was added, the whole list is stored anew in the form of FIO_PATH: slashes forward, one for a run of them.
/// Otherwise the text stays as it was.
///
///     "c:\\a" + "d:/b;C:/A" -> "c:/a;d:/b"    "c:\\a" + "C:/A" -> "c:\\a"
GEN_API void gen_append_project_library_paths(std::string const &paths);

/// Takes directories out of the project's library directories, each as often as it is there; by the rules of
/// gen_append_project_library_paths(). One that isn't there is passed over.
GEN_API void gen_remove_project_library_paths(std::string const &paths);

/// The project's library directories as the searches read them.
///
/// @return the list itself, made anew by each setter, at one address until exit handlers release it; null from then on,
///         and until the directories are set or appended to for the first time
GEN_API std::list<FIO_PATH> *gen_project_lib_fio_paths();

// Searches. No search prints anything: what isn't found is an empty path or text.

/// Looks for a file or directory that a user has named. An absolute or network path stands for itself. A relative one
/// is looked for in these places, and the first hit is the answer:
///
///     1  the project directory
///     2  the database directory
///     3  the project's library directories
///     4  the user's library directories
///     5  the directories of the environment variable `KALVERN_LIBRARY_PATHS`, separated by ";", relative ones counting
///        from the project directory; the variable is read once, by the first search that comes this far
///     6  the project's IP blocks
///     7  the general libraries of the installation: its root, then all of GEN_LIBRARY_TYPE in order but those of
///        gen_find_eda_file()
///
/// Places that were never set are passed over. If no project directory was set, the current directory becomes it.
///
/// @param name  a path; one with a drive that no slash follows is not found ("c:a/b.v"), unless nothing but a name is
///              behind the drive ("c:b.v"): that is looked for like any other name
/// @return absolute, unless a list names a directory with a drive that no slash follows; empty if nothing was found
///
/// The cost of a miss is one system call for each directory.
GEN_API FIO_PATH gen_find_file(std::string const &name);

/// The same in the installation's libraries for outside design tools alone: GEN_LIB_VITAL to GEN_LIB_SYNPLICITY, in
/// order. No project directory is needed.
GEN_API FIO_PATH gen_find_eda_file(std::string const &name);

/// gen_find_file(), remembered: each name is looked for once, whether it is found or not, and names that differ in case
/// are two. After a change of a directory, a list or a file it goes on with the old answers until
/// gen_destroy_find_file_cache() is called, which is up to the caller.
GEN_API FIO_PATH gen_find_file_cache_assisted(std::string const &name);

/// Forgets all that gen_find_file_cache_assisted() has found; it starts anew at the next call.
GEN_API void gen_destroy_find_file_cache();

/// The first regular file of a name in the directories of the environment variable `PATH`, as "directory/name". The
/// elements are separated as the platform does it, empty ones are skipped.
///
/// @param name     looked for as it is: no extension is tried
/// @param ignored  has no effect
GEN_API std::string gen_find_in_path(std::string const &name, bool ignored);

/// Looks for the file that an include statement names: by gen_find_file(), and if that fails and the name is relative,
/// beside the including file.
///
/// @param name      what the statement names; null finds nothing
/// @param includer  the including file; null: nothing is looked for beside it
/// @param parent    the file from which `relative` is to lead
/// @param full      receives the simplified path of the hit, empty without one; beside a relative includer it is
///                  relative too
/// @param relative  receives the name put beside `parent`, simplified, if the file was found beside the includer;
///                  otherwise it is emptied. Either of the two may be null.
///
/// The two are emptied first: a name that is the text of one of them reads as empty.
///
///     name "d/b.vh", includer "/p/rtl/a.v", parent "rtl/a.v", found as /p/rtl/d/b.vh
///         -> full "/p/rtl/d/b.vh", relative "rtl/d/b.vh"
///
/// The empty name, for one, is found beside an includer with a directory: it is that directory.
///
/// @return whether there was a hit
GEN_API bool gen_find_include_file(char const *name, char const *includer, char const *parent, std::string *full,
                                   std::string *relative);

/// The general libraries of the installation as the searches read them.
///
/// @return the list itself, at one address until exit handlers release it; null from then on
GEN_API std::list<FIO_PATH> *gen_get_default_lib_fio_paths();

/// A path as it reads from the project directory.
///
/// @param path  not null, otherwise an internal error; a relative one is looked for by gen_find_file()
/// @return what stands behind the project directory, with forward slashes, if the path begins with it, A to Z folded;
///         otherwise the path as it was given, also one that was found elsewhere
///
///     project directory "c:/p/":  "C:\\P\\a\\b.v" -> "a/b.v"    "c:/q/b.v" -> "c:/q/b.v"
GEN_API std::string gen_get_relative_path_if_starts_with_project_dir(char const *path);

// Source files of a design unit.

/// The place that gave a source file. The numbers are not in the order of the search.
enum GEN_LIBRARY_PATHS_ENUM : unsigned
{
    GEN_LIBRARY_PATHS_PROJECT_DIR = 1,  ///< the project directory
    GEN_LIBRARY_PATHS_DB_DIR = 2,       ///< the database directory
    GEN_LIBRARY_PATHS_PROJECT_LIBS = 3, ///< the project's library directories
    GEN_LIBRARY_PATHS_KALVERN_LIBS = 4, ///< the project's IP blocks, and the general libraries of the installation
    GEN_LIBRARY_PATHS_USER_LIBS = 5,    ///< the user's library directories
    GEN_LIBRARY_PATHS_ENV_LIBS = 6      ///< the directories of `KALVERN_LIBRARY_PATHS`
};

/// Looks for the source files of a design unit in the places of gen_find_file(), in the same order: for each source
/// language the first file that the unit's name with one of the language's extensions leads to. The extensions are v,
/// sv, vhd, vhdl, edf, edif, blif, net, vh and svh. Case counts in them where the file system tells it apart; for the
/// name "*" it never does.
///
/// @param name   the unit's name without extension, which may have a relative directory in front; "*" is any name
/// @param files  not null; the files are appended, place by place, and in byte order within a directory
/// @return whether there is anything in `files`, be it from before
///
/// If no project directory was set, the current directory becomes it; its IP blocks are not searched by that first
/// call. The search has a profile bin of its own, "gen_get_source_files".
GEN_API bool gen_get_source_files(std::string const &name,
                                  std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> *files);

/// The same in the general libraries of the installation alone, without a profile bin. For the name "*" it gives every
/// file there is, whatever its extension.
GEN_API bool gen_get_source_files_from_kalvern_lib(std::string const &name,
                                                   std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> *files);

/// The names, without directory, of the device database's files: all of "*.ddb" in the module's directory, in byte
/// order.
GEN_API std::list<std::string> gen_get_all_device_files();

// Temporary files and names that nobody else uses. Failures show in the results alone, and what is made belongs to the
// caller: nothing here removes a file.

/// Creates an empty file of a new name, which no other process gets.
///
/// @param dir     a directory; a missing one, the empty text and, on Windows, more than 246 characters are failures
/// @param prefix  its first three characters begin the file's name; on Linux a separator among them is a failure
/// @return the file's path under `dir`, relative if that is; empty on failure
///
///     "/tmp/p/", "netlist" -> "/tmp/p/netk3Qp0s.tmp" on Linux, and "c:/p/netA17.tmp" for "c:/p" on Windows
GEN_API std::string gen_create_temp_file(std::string const &dir, std::string const &prefix);

/// Creates a file as gen_create_temp_file() does, and then an empty one of the same name with another extension. Up to
/// five attempts are made.
///
/// @param dir        as for gen_create_temp_file()
/// @param prefix     likewise
/// @param extension  with or without a dot in front
/// @return the path of the last attempt, which may have failed; empty if not even the temporary file could be made
///
/// - The temporary file of each attempt stays: with an extension other than "tmp" there are two files at least.
/// - A file that has the target's name already is emptied, and another attempt follows. None follows if `extension`
///   occurs anywhere in the temporary file's path, be it in the name of a directory: the target then counts as the
///   temporary file itself.
/// - Two processes can come to the same target.
GEN_API std::string gen_create_temp_file_with_extension(std::string const &dir, std::string const &prefix,
                                                        std::string const &extension);

/// A file name without directory: the time in seconds and a number of std::rand(), in hexadecimal, and ".tmp".
///
/// The generator is that of the process and is not seeded here. Nothing looks whether there is such a file; two
/// processes that start in the same second can get the same name.
///
/// @param ignored  has no effect; may be null
GEN_API std::string gen_unique_path(char const *ignored);

/// A directory of a gen_unique_path() name.
///
/// @param base    the directory above it; not empty, or the root is meant
/// @param out     receives the path, without a slash at its end; emptied on failure. May be `base` itself
/// @param create  whether to make the directory; otherwise the path is a name only, and nothing fails
/// @return false if it could not be made. There is one attempt; a missing `base` is not made
GEN_API bool gen_create_unique_dir(std::string const &base, std::string &out, bool create);

/// The directory for temporary files as the platform gives it, with "/" behind it unless it ends in one. On Windows it
/// ends in both separators; "/" alone if the platform gives none.
///
///     TMPDIR unset on Linux -> "/tmp/"    Windows -> "C:\\Users\\me\\AppData\\Local\\Temp\\/"
GEN_API std::string gen_get_temp_path();

/// The name of an output file of the project.
///
/// @param name       put behind the directory, with nothing between
/// @param extension  put behind that with a dot between; empty: neither
/// @param directory  not null: kept for this call and those after it, with a debug message at each; an empty one takes
///                   that back. Without one it is the database directory, or nothing if that isn't set.
///
/// One thread at a time may call it. Once exit has released the directory that is kept, there is none.
///
///     "a", "b", null with the database directory "c:/p/db/" -> "c:/p/db/a.b"
GEN_API std::string gen_generate_pdb_filename(std::string const &name, std::string const &extension,
                                              std::string const *directory);

/// A copy with "/" for each back slash, and no other change.
GEN_API std::string gen_sync_path_separators(std::string const &text);

// Tool windows. Each is known to the user interface by a path in the module's directory, which need not exist.

GEN_API FIO_PATH gen_get_acv_filename();                  ///< "die_editor.acv"
GEN_API FIO_PATH gen_get_advanced_tan_tool_filename();    ///< "Deep Timing Tool.atfw"
GEN_API FIO_PATH gen_get_ape_filename();                  ///< "Cell Property Editor.kcp"
GEN_API FIO_PATH gen_get_ase_filename();                  ///< "Constraint Sheet.kcs"
GEN_API FIO_PATH gen_get_awv_filename();                  ///< "Analog Trace Viewer.kawv"
GEN_API FIO_PATH gen_get_cfw_filename();                  ///< "Build Flow Window.cfw"
GEN_API FIO_PATH gen_get_ecui_filename();                 ///< "Formal Matcher.ecui"
GEN_API FIO_PATH gen_get_lfp_filename();                  ///< "logic_floormap.lfp"
GEN_API FIO_PATH gen_get_pgmw_cof_filename();             ///< "Convert Image Files.pgmwcof"
GEN_API FIO_PATH gen_get_ppl_filename();                  ///< "pad_planner.ppl"
GEN_API FIO_PATH gen_get_ptw_filename();                  ///< "Energy Tool Window.ptw"
GEN_API FIO_PATH gen_get_kis_filename();                  ///< "Kalvern Suite Built-in Synthesis Tool Window.kis"
GEN_API FIO_PATH gen_get_ram_editor_filename();           ///< "Memory Array Editor.kred"
GEN_API FIO_PATH gen_get_reqc_filename();                 ///< "Formal_Matcher_Viewer.reqc"
GEN_API FIO_PATH gen_get_rsm_filename();                  ///< "FSM_Viewer.krsm"
GEN_API FIO_PATH gen_get_rui_filename();                  ///< "Source_Netlist_Viewer.krui"
GEN_API FIO_PATH gen_get_rui_sim_viewer_ftm_filename();   ///< "Fast_Corner_Sim_Netlist_Viewer.krui"
GEN_API FIO_PATH gen_get_rui_sim_viewer_fun_filename();   ///< "Logic_Sim_Netlist_Viewer.krui"
GEN_API FIO_PATH gen_get_rui_sim_viewer_tim_filename();   ///< "Delay_Sim_Netlist_Viewer.krui"
GEN_API FIO_PATH gen_get_sfw_filename();                  ///< "Sim Flow Window.sfw"
GEN_API FIO_PATH gen_get_stp_filename();                  ///< "Wave Probe.stp"
GEN_API FIO_PATH gen_get_stw_filename();                  ///< "Noise Tool Window.stw"
GEN_API FIO_PATH gen_get_tech_post_fit_viewer_filename(); ///< "Mapped_Viewer_Post_Fit.krui"
GEN_API FIO_PATH gen_get_tech_post_map_viewer_filename(); ///< "Mapped_Viewer_Post_Map.krui"
GEN_API FIO_PATH gen_get_tech_viewer_filename();          ///< "Mapped_Viewer.krui"
GEN_API FIO_PATH gen_get_tfw_filename();                  ///< "Timing Flow Window.tfw"

/// "TimingFloorMap.fld", whatever the arguments.
GEN_API FIO_PATH gen_get_fled_filename(std::string const &ignored, bool also_ignored);

/// The window of one report: "Results_Window_03.krw" for 3. The number has two digits at least.
GEN_API FIO_PATH gen_get_rpw_filename(int number);

/// Windows of a stem that the caller gives, with the extensions "ksv", "kta" and "ktm". The stem is put to
/// FIO_PATH::base() and loses what stands behind its last dot to the extension: "a.b" gives "a.ksv". Without a stem, or
/// for null, only the directory is left.
GEN_API FIO_PATH gen_get_snapshot_viewer_filename(char const *stem);
GEN_API FIO_PATH gen_get_timing_analyzer_snapshot_filename(char const *stem);
GEN_API FIO_PATH gen_get_tmv_snapshot_viewer_filename(char const *stem);

// Advisors, by a path in "advisors/" under gen_get_common_data_fullpath(), which need not exist.

/// The stem with the extension "oaw"; stems as for gen_get_snapshot_viewer_filename().
GEN_API FIO_PATH gen_get_oaw_filename(char const *stem);

GEN_API FIO_PATH gen_get_oaw_hk2_filename();          ///< "oa_hk2_table.xml"
GEN_API FIO_PATH gen_get_oaw_incremental_filename();  ///< "oa_incremental_table.xml"
GEN_API FIO_PATH gen_get_oaw_power_filename();        ///< "oa_power_table.xml"
GEN_API FIO_PATH gen_get_oaw_productivity_filename(); ///< "oa_productivity_table.xml"
GEN_API FIO_PATH gen_get_oaw_resource_filename();     ///< "oa_resource_table.xml"
GEN_API FIO_PATH gen_get_oaw_ssn_filename();          ///< "oa_ssn_table.xml"
GEN_API FIO_PATH gen_get_oaw_timing_filename();       ///< "oa_timing_table.xml"

#endif
