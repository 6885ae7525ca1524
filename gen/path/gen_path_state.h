// The paths of the project and the searches over them. The state is built before the library's ordinary static objects
// and released after them.
#ifndef GEN_PATH_STATE_H
#define GEN_PATH_STATE_H

#include "fio_sys.h"

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

struct GEN_PROJECT_TEXTS
{
    std::string project_dir;
    std::string project_library_paths; // separated by ";", like the next
    std::string user_library_paths;
    std::string project_output_directory; // empty if there is none
};

/// Written by the setters and the searches, on the thread that drives the flow. The members are released in the reverse
/// of their order here. Objects held by pointer are made when they are first needed, and a search keeps its address
/// once it exists. A search covers the text or path of the same name: db_dir_libs covers db_dir_path.
struct GEN_PATH_STATE
{
    explicit GEN_PATH_STATE(GEN_PROJECT_TEXTS &project_texts) : texts(project_texts) {}

    GEN_PROJECT_TEXTS &texts;
    std::string user_ip_search_paths;

    std::unique_ptr<FIO_PATH> db_dir_full_name;
    std::unique_ptr<FIO_PATH> db_dir_path;

    // The extensions of source files, in the order in which they are tried.
    std::unique_ptr<std::vector<std::string>> default_source_extensions;

    std::unique_ptr<FIO_FIND> db_dir_libs;
    std::unique_ptr<FIO_FIND> project_dir_libs; // null until a project directory is set
    std::unique_ptr<FIO_FIND> project_libs;
    bool env_libs_checked = false;
    std::unique_ptr<FIO_FIND> env_libs; // over KALVERN_LIBRARY_PATHS; null unless the variable had a value
    std::unique_ptr<FIO_FIND> user_libs;

    // The searches of the installation, kalvern_eda_libs and kalvern_libs, are made together by the first search that
    // needs one of them, and never changed.
    std::unique_ptr<FIO_FIND> kalvern_eda_libs;
    std::unique_ptr<FIO_PATH> project_ipblocks_dir_path;
    std::unique_ptr<FIO_FIND> project_ipblocks_libs;
    std::unique_ptr<FIO_FIND> kalvern_libs;
};

/// The state; null before it is built and after its release, when callbacks of zel_mem may still come.
GEN_PATH_STATE *gen_path_state();

/// The result of `call` with the state, or `otherwise` if there is no state.
template <typename Call, typename Result>
Result gen_with_path_state(Call call, Result otherwise)
{
    GEN_PATH_STATE *const state = gen_path_state();
    return state != nullptr ? call(*state) : otherwise;
}

/// The same, with an empty result or none if there is no state.
template <typename Call>
std::invoke_result_t<Call, GEN_PATH_STATE &> gen_with_path_state(Call call)
{
    GEN_PATH_STATE *const state = gen_path_state();
    return state != nullptr ? call(*state) : std::invoke_result_t<Call, GEN_PATH_STATE &>();
}

#endif
