// Marks for the Tracq profiler, which are accepted but have no effect in this system, and the stream of the GUI
// profile. Only one thread at a time may use them.
#ifndef GEN_TRACQ_SYS_H
#define GEN_TRACQ_SYS_H

#include "gen_fstream_sys.h"
#include "zel_export_sys.h"

/// The single manager of the profiler's state. It measures nothing.
class GEN_API GEN_TRACQ_MANAGER
{
public:
    /// Returns s_instance and creates the manager if there is none. destroy() deletes it.
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

    struct State;
    State *m_state;
};

/// Marks the region of the program from its construction to its destruction; no effect.
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

/// Marks a task from its construction to its destruction; no effect. The two texts are not read and may be null.
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
/// No effect.
GEN_API void gen_tracq_enable();
GEN_API void gen_tracq_disable();
}

/// Opens "kalvern_gui.profile" in the project's database directory for writing and empties it. The stream of an earlier
/// call is deleted first. If there is no database directory, or if the file can't be opened, there is no stream and no
/// error is reported.
GEN_API void gen_set_gui_profile_stream();

/// The stream, owned by the library; null if there is none. It is valid until the next gen_set_gui_profile_stream(). It
/// is not closed at the end of the process, so that the caller has to flush it.
GEN_API std::brisel_ofstream *gen_get_gui_profile_stream();

#endif
