// Paths of the installation and of the open project, and the searches over them.
//
// ```cpp
// #include "gen_path_sys.h"
// #include <iostream>
//
// int main()
// {
//     gen_set_project_dir_path("/home/me/counter");
//     gen_set_db_dir_path("/home/me/counter/db/");
//     gen_set_project_library_paths("rtl;/opt/ip");     // relative directories count from the project directory
//     FIO_PATH const file = gen_find_file("counter.v"); // for instance /home/me/counter/rtl/counter.v
//     if (file.fullpath().empty())
//         std::cerr << "cannot find counter.v\n";
//     std::cout << gen_get_kalvern_path() << "\n"       // for instance /opt/suite/
//               << gen_generate_pdb_filename("counter", "map", nullptr) << "\n"; // /home/me/counter/db/counter.map
// }
// ```
//
// The text of a directory ends in "/", except where a function says otherwise, so that a file name can be appended.
// Results are copies that belong to the caller, except where a function says otherwise. A function that only builds a
// text doesn't access the disk.
//
// Threads: the first call of a function for the installation must come from the main thread, which gen_exe_init() does;
// after that any thread may call these functions. The paths of the project have no lock: their setters and the searches
// run on the thread that drives the flow. After the exit handlers have released the state of the project, its getters
// return empty texts, its setters do nothing, and the searches find nothing.
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

/// The library directories of the installation, each with its path relative to the root.
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
    GEN_LIB_WYS_STUB,          ///< "libraries/wys_stub", the only one without a slash at the end
    GEN_LIB_SIZE               ///< the number of directories: 31
};

// The module: the file from whose place the installation is derived. It is the executable if that lies in the same
// directory as this library, otherwise this library.

/// The full path of the running executable, in lower case; empty if the system doesn't report it.
GEN_API std::string gen_get_executable_fullpath();

/// The full path, in lower case, of a library that is loaded in this process; empty if it isn't loaded. The call loads
/// nothing.
///
/// @param stem  the library's name without the platform's prefix and suffix, such as "zel_gen"; not null
GEN_API std::string gen_get_library_fullpath(char const *stem);

/// The full path of the module. The first call finds it; the result stays the same until the process ends.
///
/// The path is in lower case if the platform ignores case in paths (Windows), otherwise its case is kept; so it is for
/// the root and all paths under it. A path longer than FILENAME_MAX (260 on Windows) is cut.
///
/// If neither path can be found, the process ends with "Error: Can not determine executable's full path!" on standard
/// error and exit(-1). If the environment variable `GEN_PATH_DEBUG` exists, with any value, the search is logged on
/// standard output; the variable is read once.
GEN_API std::string gen_get_module_fullpath();

/// The module's directory.
GEN_API std::string gen_get_module_path();

/// The module's file name with its extension.
GEN_API std::string gen_get_module_filename();

/// Whether the module is the suite's main executable. Its file name without extension, in lower case, then equals
/// ver_get_brisel_product_filename(), or "kgui" or "kpro" if gen_get_is_qt() is true.
GEN_API bool gen_get_is_kalvern_exe();

// The installation.

/// The root: the parent of the module's directory, whatever the name of that directory. No environment variable changes
/// it.
///
///     module c:/tools/suite/bin64/kgui.exe -> "c:/tools/suite/"
GEN_API std::string gen_get_kalvern_path();

/// The full path of a library directory.
///
/// @param type  less than GEN_LIB_SIZE, otherwise the internal error "type < (GEN_LIBRARY_TYPE)GEN_LIB_SIZE"
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

/// "ksys/bin/" in the parent directory of the root.
GEN_API std::string gen_get_ksys_bin_path();

/// "devinfo", the device database's name.
GEN_API std::string gen_get_device_db_name();

// Directories that an environment variable may override. The variable is read at each call.

/// "common/devinfo" under the root; no slash at the end. If the environment variable `KALVERN_COMMON_DEVINFO_PATH`
/// exists, even with an empty value, its value is returned instead and a debug message is emitted. The value is not
/// checked.
GEN_API std::string gen_get_device_db_fullpath();

/// "devdata" in the parent directory of the root; no slash at the end. If the environment variable `DEVDATA_ROOT`
/// exists, even with an empty value, its value is returned instead and a debug message is emitted. The value is not
/// checked.
GEN_API std::string gen_get_devdata_db_fullpath();

/// "ip/" in the parent directory of the root, or the value of the environment variable `IP_ROOTDIR`.
///
/// | value of the variable | exists | default exists | result      |
/// |-----------------------|--------|----------------|-------------|
/// | not set, or empty     |        |                | the default |
/// | any other             | yes    |                | the value   |
/// | any other             | no     | yes            | the default |
/// | any other             | no     | no             | the value   |
///
/// A wrong value therefore never hides a directory that exists. A relative value is tested relative to the current
/// directory, but the result is the value relative to the default directory.
GEN_API std::string gen_get_ip_path();

/// "common/devplatforms/" under the root, or the value of the environment variable `KALVERN_PLATFORM_ROOTDIR`, by the
/// rules of gen_get_ip_path().
GEN_API std::string gen_get_platform_path();

/// "common/devkits/" under the root, or the value of the environment variable `KALVERN_DEVKITS_ROOTDIR`, by the rules
/// of gen_get_ip_path().
GEN_API std::string gen_get_devkits_path();

/// The value of the first of the environment variables `USERPROFILE`, `TMP` and `TEMP` that names an existing file or
/// directory. The value is returned as it is, without a slash appended. "C:/" if there is none.
GEN_API std::string gen_get_user_profile_directory();

// The database directory of the project.

/// Sets the database directory, which the searches then use. The text may be empty.
GEN_API void gen_set_db_dir_path(std::string path);

/// The database directory; empty if none was set.
GEN_API FIO_PATH gen_get_db_dir_path();

/// The text of gen_get_db_dir_path().
GEN_API std::string gen_get_db_dir_path_string();

/// Whether a database directory was set, even an empty one.
GEN_API bool gen_check_db_dir_path();

/// The full name of the database directory. It is stored separately: gen_set_db_dir_path() doesn't change it, and it
/// doesn't change the database directory. Empty if none was set.
GEN_API void gen_set_db_dir_full_name(FIO_PATH path);
GEN_API FIO_PATH gen_get_db_dir_full_name();

/// The directory of the incremental database: the text of the database directory with its last three characters
/// replaced by "incremental_db/". The three are expected to be "db/", but this is not checked. Empty if no database
/// directory was set or if its text is empty.
///
///     "c:/p/db/" -> "c:/p/incremental_db/"    "c:/p/kdb/" -> "c:/p/kincremental_db/"    "d" -> "incremental_db/"
GEN_API std::string gen_get_incr_db_dir_path_string();

// The project directory.

/// Sets the project directory and, under it, the directory of the project's IP blocks. The searches then use both.
///
/// @param path  a directory, with or without a slash at the end; a relative one stays relative
GEN_API void gen_set_project_dir_path(std::string path);

/// The project directory; empty if none was set. It ends in "/" unless it is empty.
///
/// If none was set, gen_find_file(), gen_get_source_files() and gen_get_project_output_directory() set it to the
/// current directory. The getters don't.
GEN_API std::string gen_get_project_dir_path();

/// "ipblocks/" under the project directory; empty if no project directory was set.
GEN_API FIO_PATH gen_get_project_ipblocks_dir_path();

/// "persona/" under the project directory; empty if the text of the project directory is empty.
GEN_API std::string gen_get_persona_dir_path_string();

// The output directory.

/// Sets the output directory. The disk is not accessed.
///
/// @param path  a directory; a relative one is made absolute now, from the current directory. Null and the empty text
///              remove the setting
GEN_API void gen_set_project_output_directory(char const *path);

/// The output directory. If it doesn't exist, it is created; its parent must exist.
///
/// The result is the project directory instead if no output directory was set, if it can't be created, or if it is not
/// a directory. If there is no project directory either, it is set to the current directory.
///
/// @return a pointer to a text of the library, never null, valid until the next call that sets the output directory or
///         the project directory
GEN_API char const *gen_get_project_output_directory();

// Lists of library directories, separated by ";" on every platform.

/// The project's library directories. At each search, relative directories count from the current project directory.
/// The getter returns the text as it was set; empty if none was set.
GEN_API void gen_set_project_library_paths(std::string paths);
GEN_API std::string gen_get_project_library_paths();

/// The user's library directories, with the same rules as the project's.
GEN_API void gen_set_user_library_paths(std::string paths);
GEN_API std::string gen_get_user_library_paths();

/// The user's IP directories. The text is stored for tools; no search of this library uses it.
GEN_API void gen_set_user_ip_search_paths(std::string paths);
GEN_API std::string gen_get_user_ip_search_paths();

/// Appends directories to the project's library directories. A directory that the list already contains is skipped;
/// texts are compared with A to Z folded to lower case.
///
/// @param paths  directories, separated by ";"; empty elements are ignored. A text without ";" that contains "*" or "?"
///               in its last component is a pattern and adds nothing; see FIO_FIND
///
/// If a directory was added, the text of the whole list is rewritten in the form of FIO_PATH, with forward slashes and
/// without repeated ones. Otherwise the text does not change.
///
///     "c:\\a" + "d:/b;C:/A" -> "c:/a;d:/b"    "c:\\a" + "C:/A" -> "c:\\a"
GEN_API void gen_append_project_library_paths(std::string const &paths);

/// Removes directories from the project's library directories, each with all its repetitions, by the rules of
/// gen_append_project_library_paths(). A directory that the list doesn't contain is ignored.
GEN_API void gen_remove_project_library_paths(std::string const &paths);

/// The list of the project's library directories that the searches use.
///
/// @return the library's own list. Its address stays the same until the exit handlers release it; each setter replaces
///         its elements. Null before the directories were set or appended to for the first time, and after the release
GEN_API std::list<FIO_PATH> *gen_project_lib_fio_paths();

// Searches. If nothing is found, the result is an empty path or text; no message is emitted.

/// Finds a file or directory by the name that a user gave. An absolute path or a network path is returned if it exists.
/// A relative path is looked for in these directories; the first one that contains it decides:
///
///     1  the project directory
///     2  the database directory
///     3  the project's library directories
///     4  the user's library directories
///     5  the directories of the environment variable `KALVERN_LIBRARY_PATHS`, separated by ";"; relative ones count
///        from the project directory. The variable is read once, by the first search that gets this far
///     6  the directory of the project's IP blocks
///     7  the general libraries of the installation: all of GEN_LIBRARY_TYPE in order, without those of
///        gen_find_eda_file()
///
/// Directories that were never set are skipped. If no project directory was set, it is set to the current directory.
///
/// @param name  a path. If a drive is not followed by a slash, a path with directories ("c:a/b.v") is never found, and
///              a bare name ("c:b.v") is looked for like a relative path
/// @return an absolute path; empty if nothing was found. The path is not absolute if a list contains a directory whose
///         drive is not followed by a slash
///
/// A search that finds nothing costs one system call for each directory.
GEN_API FIO_PATH gen_find_file(std::string const &name);

/// As gen_find_file(), but only in the installation's libraries for tools of other makers: GEN_LIB_VITAL to
/// GEN_LIB_SYNPLICITY, in order. The project directory is neither used nor set.
GEN_API FIO_PATH gen_find_eda_file(std::string const &name);

/// As gen_find_file(), with a cache: the result for each name is stored, even if nothing was found. Names are compared
/// with their case. A change of a directory, a list or a file doesn't update the cache; call
/// gen_destroy_find_file_cache() after it.
GEN_API FIO_PATH gen_find_file_cache_assisted(std::string const &name);

/// Empties the cache of gen_find_file_cache_assisted().
GEN_API void gen_destroy_find_file_cache();

/// Finds a regular file in the directories of the environment variable `PATH` and returns the first one as
/// "directory/name". The directories are separated by ";" on Windows and by ":" elsewhere; empty ones are skipped.
///
/// @param name     the file name with its extension; no extension is added
/// @param ignored  has no effect
GEN_API std::string gen_find_in_path(std::string const &name, bool ignored);

/// Finds the file of an include statement: first by gen_find_file(), then, if the name is relative, in the directory of
/// the including file.
///
/// @param name      the name in the statement; null finds nothing
/// @param includer  the including file; if null, its directory is not searched
/// @param parent    the file whose directory `relative` is based on; null counts as a file without a directory
/// @param full      receives the simplified path of the file; empty if nothing was found. Relative if the file was
///                  found in the directory of a relative includer. May be null
/// @param relative  if the file was found in the directory of the includer, receives the name in the directory of
///                  `parent`, simplified; otherwise the empty text. May be null
/// @return whether the file was found
///
///     name "d/b.vh", includer "/p/rtl/a.v", parent "rtl/a.v", found as /p/rtl/d/b.vh
///         -> full "/p/rtl/d/b.vh", relative "rtl/d/b.vh"
///
/// Both outputs are emptied before the search, so a name that points into one of them counts as empty. An empty name is
/// found if the includer has a directory: `full` is that directory.
GEN_API bool gen_find_include_file(char const *name, char const *includer, char const *parent, std::string *full,
                                   std::string *relative);

/// The list of the installation's general libraries that the searches use.
///
/// @return the library's own list, at the same address until the exit handlers release it; null after that
GEN_API std::list<FIO_PATH> *gen_get_default_lib_fio_paths();

/// Makes a path relative to the project directory if it lies there.
///
/// @param path  null is the internal error "path != NULL"; a relative path is first looked for by gen_find_file()
/// @return the rest of the path after the project directory, with forward slashes, if the path begins with the project
///         directory (compared with A to Z folded to lower case); otherwise `path` unchanged
///
///     project directory "c:/p/":  "C:\\P\\a\\b.v" -> "a/b.v"    "c:/q/b.v" -> "c:/q/b.v"
GEN_API std::string gen_get_relative_path_if_starts_with_project_dir(char const *path);

// Source files of a design unit.

/// The kind of directory in which a source file was found. The numbers are not in the order of the search.
enum GEN_LIBRARY_PATHS_ENUM : unsigned
{
    GEN_LIBRARY_PATHS_PROJECT_DIR = 1,  ///< the project directory
    GEN_LIBRARY_PATHS_DB_DIR = 2,       ///< the database directory
    GEN_LIBRARY_PATHS_PROJECT_LIBS = 3, ///< the project's library directories
    GEN_LIBRARY_PATHS_KALVERN_LIBS = 4, ///< the project's IP blocks, and the general libraries of the installation
    GEN_LIBRARY_PATHS_USER_LIBS = 5,    ///< the user's library directories
    GEN_LIBRARY_PATHS_ENV_LIBS = 6      ///< the directories of `KALVERN_LIBRARY_PATHS`
};

/// Finds the source files of a design unit in the directories of gen_find_file(), in the same order. For each of the
/// extensions v, sv, vhd, vhdl, edf, edif, blif, net, vh and svh it takes the first file with the name of the unit and
/// that extension.
///
/// @param name   the name of the unit without extension, which may begin with a relative directory; "*" means any name
/// @param files  the files are appended to it, in the order of the directories and, within a directory, in byte order
///               of their names; not null
/// @return whether `files` contains anything, including its former elements
///
/// Extensions are compared with their case where the platform's file systems do so; for the name "*" never.
///
/// If no project directory was set, it is set to the current directory, and this call doesn't search its IP blocks. The
/// search opens and closes the profile bin "gen_get_source_files".
GEN_API bool gen_get_source_files(std::string const &name,
                                  std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> *files);

/// As gen_get_source_files(), but only in the general libraries of the installation and without a profile bin. For the
/// name "*" all their files are appended, with any extension.
GEN_API bool gen_get_source_files_from_kalvern_lib(std::string const &name,
                                                   std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> *files);

/// The names, without directory, of the files of the device database: all files "*.ddb" in the module's directory, in
/// byte order.
GEN_API std::list<std::string> gen_get_all_device_files();

// Temporary files and unique names. Failures are reported by the results alone. Nothing here removes a file: the caller
// removes the files and directories that it creates.

/// Creates an empty file with a new name, which no other process gets.
///
/// @param dir     a directory; a missing one, the empty text and, on Windows, more than 246 characters are failures
/// @param prefix  its first three characters begin the file's name; on Linux a separator among them is a failure
/// @return the path of the file, relative if `dir` is relative; empty on failure
///
///     "/tmp/p/", "netlist" -> "/tmp/p/netk3Qp0s.tmp" on Linux, and "c:/p/netA17.tmp" for "c:/p" on Windows
GEN_API std::string gen_create_temp_file(std::string const &dir, std::string const &prefix);

/// Creates a temporary file as gen_create_temp_file() does, and then an empty file, the target, with the same name and
/// another extension. Up to five attempts are made.
///
/// @param dir        as for gen_create_temp_file()
/// @param prefix     as for gen_create_temp_file()
/// @param extension  the extension of the target, with or without a dot at its beginning
/// @return the path of the target of the last attempt, which may have failed; empty if that attempt could not create
///         its temporary file
///
/// - The temporary file of each attempt stays, so that an extension other than "tmp" leaves at least two files.
/// - If a file with the target's name exists already, it is emptied and another attempt follows. If `extension` occurs
///   anywhere in the path of the temporary file, even in the name of a directory, the target counts as the temporary
///   file itself and no other attempt follows.
/// - Two processes can get the same target.
GEN_API std::string gen_create_temp_file_with_extension(std::string const &dir, std::string const &prefix,
                                                        std::string const &extension);

/// A file name without directory: the current time in seconds and a number of std::rand(), both in hexadecimal, and
/// ".tmp".
///
/// std::rand() is not seeded here. On Windows, where it has a state for each thread, the number comes from one sequence
/// of the process, which srand() doesn't change: that of a thread that never called srand(). Nothing checks whether
/// such a file exists; two processes that start in the same second can get the same name.
///
/// @param ignored  has no effect; may be null
GEN_API std::string gen_unique_path(char const *ignored);

/// Makes the path of a directory whose name comes from gen_unique_path(), and creates it on request.
///
/// @param base    the parent directory; the empty text means the root directory of the file system
/// @param out     receives the path, without a slash at its end; empty on failure. May be the same object as `base`
/// @param create  whether to create the directory; if not, the call never fails
/// @return false if the directory could not be created. There is one attempt; a missing `base` is not created
GEN_API bool gen_create_unique_dir(std::string const &base, std::string &out, bool create);

/// The platform's directory for temporary files, with a "/" appended unless it ends in one. On Windows it therefore
/// ends in both separators. "/" if the platform has no such directory.
///
///     TMPDIR unset on Linux -> "/tmp/"    Windows -> "C:\\Users\\me\\AppData\\Local\\Temp\\/"
GEN_API std::string gen_get_temp_path();

/// The name of an output file of the project.
///
/// @param name       appended to the directory, without a separator
/// @param extension  appended after a dot; if empty, there is no dot either
/// @param directory  if not null, it is stored and used by this call and later ones in place of the database directory;
///                   the empty text removes it. Each call that uses it emits a debug message
///
/// Without a stored directory the database directory is used, or none if that was not set. One thread at a time may
/// call it. After the exit handlers have released the stored directory, it is neither used nor stored again.
///
///     "a", "b", null with the database directory "c:/p/db/" -> "c:/p/db/a.b"
GEN_API std::string gen_generate_pdb_filename(std::string const &name, std::string const &extension,
                                              std::string const *directory);

/// A copy with "/" for each back slash, and no other change.
GEN_API std::string gen_sync_path_separators(std::string const &text);

// Tool windows. The user interface identifies each by a path in the module's directory. The file need not exist.

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

/// "TimingFloorMap.fld"; the arguments have no effect.
GEN_API FIO_PATH gen_get_fled_filename(std::string const &ignored, bool also_ignored);

/// The window of one report: "Results_Window_03.krw" for 3. The number is padded with zeros to two characters.
GEN_API FIO_PATH gen_get_rpw_filename(int number);

/// Windows named by the caller, with the extensions "ksv", "kta" and "ktm". The stem is the argument of
/// FIO_PATH::base(); the text after its last dot is replaced by the extension: "a.b" gives "a.ksv". For null and for
/// the empty text the result is the directory alone.
GEN_API FIO_PATH gen_get_snapshot_viewer_filename(char const *stem);
GEN_API FIO_PATH gen_get_timing_analyzer_snapshot_filename(char const *stem);
GEN_API FIO_PATH gen_get_tmv_snapshot_viewer_filename(char const *stem);

// Advisors, each identified by a path in "advisors/" under gen_get_common_data_fullpath(). The file need not exist.

/// The stem with the extension "oaw", by the rules of gen_get_snapshot_viewer_filename().
GEN_API FIO_PATH gen_get_oaw_filename(char const *stem);

GEN_API FIO_PATH gen_get_oaw_hk2_filename();          ///< "oa_hk2_table.xml"
GEN_API FIO_PATH gen_get_oaw_incremental_filename();  ///< "oa_incremental_table.xml"
GEN_API FIO_PATH gen_get_oaw_power_filename();        ///< "oa_power_table.xml"
GEN_API FIO_PATH gen_get_oaw_productivity_filename(); ///< "oa_productivity_table.xml"
GEN_API FIO_PATH gen_get_oaw_resource_filename();     ///< "oa_resource_table.xml"
GEN_API FIO_PATH gen_get_oaw_ssn_filename();          ///< "oa_ssn_table.xml"
GEN_API FIO_PATH gen_get_oaw_timing_filename();       ///< "oa_timing_table.xml"

#endif
