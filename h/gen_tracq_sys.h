// Marks for the Tracq profiler, which this system accepts and ignores, and the stream of the GUI profile. One thread at
// a time uses them.
#ifndef GEN_TRACQ_SYS_H
#define GEN_TRACQ_SYS_H

#include "gen_fstream_sys.h"
#include "zel_export_sys.h"

/// The one manager of the profiler's state. Nothing here measures anything.
class GEN_API GEN_TRACQ_MANAGER
{
public:
    /// s_instance, made first if it is null. Two threads must not be the first at once.
    static GEN_TRACQ_MANAGER *get_or_create();
    /// Deletes the manager, if there is one, and sets s_instance to null.
    static void destroy();
    /// No effect.
    static void pause();
    /// No effect.
    static void resume();

    GEN_TRACQ_MANAGER(GEN_TRACQ_MANAGER const &) = delete;
    GEN_TRACQ_MANAGER &operator=(GEN_TRACQ_MANAGER const &) = delete;

    static GEN_TRACQ_MANAGER *s_instance; ///< null at start and after destroy()

private:
    GEN_TRACQ_MANAGER();
    ~GEN_TRACQ_MANAGER();

    struct STATE;
    STATE *m_state;
};

/// Marks a region as long as it lives; no effect.
class GEN_API GEN_TRACQ_SCOPED_PROFILE
{
public:
    GEN_TRACQ_SCOPED_PROFILE();
    ~GEN_TRACQ_SCOPED_PROFILE();
    GEN_TRACQ_SCOPED_PROFILE(GEN_TRACQ_SCOPED_PROFILE const &) = delete;
    GEN_TRACQ_SCOPED_PROFILE &operator=(GEN_TRACQ_SCOPED_PROFILE const &) = delete;

private:
    unsigned char *m_state;
};

/// Marks a task as long as it lives; no effect. The two texts are not looked at and may be null.
class GEN_API GEN_TRACQ_SCOPED_TASK
{
public:
    GEN_TRACQ_SCOPED_TASK(char const *domain, char const *name);
    ~GEN_TRACQ_SCOPED_TASK();
    GEN_TRACQ_SCOPED_TASK(GEN_TRACQ_SCOPED_TASK const &) = delete;
    GEN_TRACQ_SCOPED_TASK &operator=(GEN_TRACQ_SCOPED_TASK const &) = delete;

private:
    unsigned *m_state;
};

extern "C" {
/// No effect, in any order, any number of times.
GEN_API void gen_tracq_enable();
GEN_API void gen_tracq_disable();
}

/// Opens "kalvern_gui.profile" in the project's database directory anew, empty, for what the tools write to it. A
/// stream of a former call is deleted first. Without a database directory, and when the file can't be opened, there is
/// no stream; nothing is said.
GEN_API void gen_set_gui_profile_stream();

/// The stream, owned by the library; null if there is none. It lives until the next gen_set_gui_profile_stream() and is
/// not closed at the end of the process: flush what must reach the file.
GEN_API std::brisel_ofstream *gen_get_gui_profile_stream();

#endif
