// The state of the process: its flags, and the paths of the project with the command line, which stand from before the
// library's other statics are built until after they are released.
#ifndef GEN_STATICS_H
#define GEN_STATICS_H

#include <atomic>
#include <string>
#include <vector>

class FIO_FIND;
class FIO_PATH;

/// What the executable declares itself to be. Callbacks of zel_mem read it from any thread, also after the release of
/// everything else.
struct GEN_PROCESS_FLAGS
{
    std::atomic<bool> is_ui_process{false};
    std::atomic<bool> is_qt{false};
};
extern GEN_PROCESS_FLAGS gen_process_flags;

/// Written by the setters alone, on the thread that drives the flow. Objects held by pointer are owned, and made when
/// they are first needed.
struct GEN_PATH_STATE
{
    GEN_PATH_STATE();
    /// Deletes the objects held by pointer, in a fixed order; the texts go after them, the last one first.
    ~GEN_PATH_STATE();
    GEN_PATH_STATE(GEN_PATH_STATE const &) = delete;
    GEN_PATH_STATE &operator=(GEN_PATH_STATE const &) = delete;

    std::string project_dir;
    std::string project_library_paths; // separated by ";", like the next
    std::string user_library_paths;
    std::string project_output_directory; // empty for none
    std::string command_line;
    std::string user_ip_search_paths;

    FIO_PATH *db_dir_path = nullptr;
    FIO_PATH *db_dir_full_name = nullptr;
    FIO_PATH *project_ipblocks_dir_path = nullptr;

    // Searches, each over the text or path of its name; an object keeps its address once it exists.
    FIO_FIND *project_dir_libs = nullptr; // null until a project directory is told
    FIO_FIND *db_dir_libs = nullptr;
    FIO_FIND *project_libs = nullptr;
    FIO_FIND *user_libs = nullptr;
    FIO_FIND *project_ipblocks_libs = nullptr;
    FIO_FIND *env_libs = nullptr; // over KALVERN_LIBRARY_PATHS; null unless the variable had a value
    bool env_libs_checked = false;

    // The installation's, made together by the first search that needs one of them, and the same from then on.
    FIO_FIND *kalvern_libs = nullptr;
    FIO_FIND *kalvern_eda_libs = nullptr;

    // The extensions of source files, in the order in which they are tried.
    std::vector<std::string> *default_source_extensions = nullptr;
};

/// The state; null before it is built and after its release, which callbacks of zel_mem may outlive.
GEN_PATH_STATE *gen_path_state();

#endif
