// Construction of the library's first statics, in an order that no link order changes: this file's come before all
// others of the library, in the order in which they stand here. Release is in exact reverse.
#include "gen/base/gen_statics.h"

#include "fio_sys.h"
#include "gen/machine/gen_machine_state.h"
#include "mem_sys.h"

namespace {

// The state while it is there. A callback may look from any thread.
std::atomic<GEN_PATH_STATE *> l_path_state{nullptr};

template <typename OBJECT>
void release(OBJECT *&object)
{
    delete object;
    object = nullptr;
}

// The first priority that the compiler leaves to programs.
#define GEN_FIRST_STATIC __attribute__((init_priority(101)))

GEN_FIRST_STATIC MEM_INITIALIZER l_mem_initializer("GEN");
GEN_FIRST_STATIC GEN_PATH_STATE l_state;
GEN_FIRST_STATIC GEN_MACHINE_STATE l_machine_state;

#undef GEN_FIRST_STATIC

} // namespace

GEN_PROCESS_FLAGS gen_process_flags;

GEN_PATH_STATE::GEN_PATH_STATE()
{
    l_path_state.store(this, std::memory_order_relaxed);
}

GEN_PATH_STATE::~GEN_PATH_STATE()
{
    l_path_state.store(nullptr, std::memory_order_relaxed);
    release(kalvern_libs);
    release(project_ipblocks_libs);
    release(project_ipblocks_dir_path);
    release(kalvern_eda_libs);
    release(user_libs);
    release(env_libs);
    release(project_libs);
    release(project_dir_libs);
    release(db_dir_libs);
    release(default_source_extensions);
    release(db_dir_path);
    release(db_dir_full_name);
}

GEN_PATH_STATE *gen_path_state()
{
    return l_path_state.load(std::memory_order_relaxed);
}
