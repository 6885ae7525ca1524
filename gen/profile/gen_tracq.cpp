#include "gen_tracq_sys.h"

#include "gen_path_sys.h"
#include "sys/sys_process.h"
#include "thr_sys.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace {

// In the project's database directory.
constexpr char GUI_PROFILE_NAME[] = "kalvern_gui.profile";

// Owned; null if there is none. It is closed at an unload, not at exit.
std::brisel_ofstream *l_gui_profile_stream = nullptr;

struct AtUnload
{
    ~AtUnload()
    {
        if (!sys_is_unloading())
            return;
        delete std::exchange(l_gui_profile_stream, nullptr);
        GEN_TRACQ_MANAGER::destroy();
    }
} const l_at_unload;

} // namespace

// The state that the profiler's own manager would use.
struct GEN_TRACQ_MANAGER::State
{
    THR_MUTEX_OBJ m_mutex = thr_mutex_create();
    std::uintptr_t m_word = 0;
};

GEN_TRACQ_MANAGER *GEN_TRACQ_MANAGER::s_instance = nullptr;

GEN_TRACQ_MANAGER::GEN_TRACQ_MANAGER() : m_state(new State) {}

GEN_TRACQ_MANAGER::~GEN_TRACQ_MANAGER()
{
    thr_mutex_destroy(m_state->m_mutex);
    delete m_state;
}

GEN_TRACQ_MANAGER *GEN_TRACQ_MANAGER::get_or_create()
{
    if (s_instance == nullptr)
        s_instance = new GEN_TRACQ_MANAGER;
    return s_instance;
}

void GEN_TRACQ_MANAGER::destroy()
{
    delete std::exchange(s_instance, nullptr);
}

void GEN_TRACQ_MANAGER::pause() {}

void GEN_TRACQ_MANAGER::resume() {}

GEN_TRACQ_SCOPED_PROFILE::GEN_TRACQ_SCOPED_PROFILE() : m_state(new unsigned char(0)) {}

GEN_TRACQ_SCOPED_PROFILE::~GEN_TRACQ_SCOPED_PROFILE()
{
    delete m_state;
}

GEN_TRACQ_SCOPED_TASK::GEN_TRACQ_SCOPED_TASK(char const * /*domain*/, char const * /*name*/) : m_state(new unsigned(0))
{
}

GEN_TRACQ_SCOPED_TASK::~GEN_TRACQ_SCOPED_TASK()
{
    delete m_state;
}

void gen_tracq_enable() {}

void gen_tracq_disable() {}

void gen_set_gui_profile_stream()
{
    delete std::exchange(l_gui_profile_stream, nullptr);
    if (!gen_check_db_dir_path())
        return;
    FIO_PATH file = gen_get_db_dir_path();
    file.filename(GUI_PROFILE_NAME);
    auto stream = std::make_unique<std::brisel_ofstream>(file.fullpath().c_str(), std::ios::out, GEN_SHARE_ALL);
    if (stream->good())
        l_gui_profile_stream = stream.release();
}

std::brisel_ofstream *gen_get_gui_profile_stream()
{
    return l_gui_profile_stream;
}
