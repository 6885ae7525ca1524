// Threads, environment variables and dynamic libraries. None of these functions throws or reports an
// error, and each accepts null arguments. Any thread may call them, except where one says otherwise.
#ifndef THR_SYS_H
#define THR_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>

/// Handle of a mutex, the result of thr_mutex_create().
using THR_MUTEX_OBJ = struct THR_MUTEX *;

/// Creates a mutex, which is not locked. Static constructors may call it.
///
/// @return the mutex, which the caller releases with thr_mutex_destroy(); null if there is no memory
THR_API THR_MUTEX_OBJ thr_mutex_create();

/// Releases a mutex. No thread may hold it or wait for it. Exit handlers may call this function.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_destroy(THR_MUTEX_OBJ mutex);

/// Locks the mutex, and waits as long as another thread holds it. A thread that holds it already must
/// not lock it again: it would wait forever.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_lock(THR_MUTEX_OBJ mutex);

/// Unlocks the mutex, which the calling thread holds.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_unlock(THR_MUTEX_OBJ mutex);

/// Keeps a mutex locked from its construction to its destruction.
class THR_API THR_SCOPED_MUTEX
{
public:
    /// @param mutex  from thr_mutex_create(); null does nothing. The mutex must outlive this object;
    ///               the variable that is passed need not
    explicit THR_SCOPED_MUTEX(THR_MUTEX_OBJ &mutex);

    ~THR_SCOPED_MUTEX();

    THR_SCOPED_MUTEX(THR_SCOPED_MUTEX const &) = delete;
    THR_SCOPED_MUTEX &operator=(THR_SCOPED_MUTEX const &) = delete;

private:
    THR_MUTEX_OBJ m_mutex;
};

/// A number that identifies the calling thread: always the same on one thread, and different for
/// threads that exist at the same time. Never 0 and never -1. A later thread may get the number of a
/// thread that has ended. Takes a few nanoseconds.
THR_API std::int64_t thr_thread_self();

/// Suspends the calling thread.
///
/// @param milliseconds  the minimum time; with 0 another thread that is ready may run, and the call
///                      returns as soon as the system allows
THR_API void thr_sleep(unsigned milliseconds);

/// Stops the process in the debugger that is attached to it; does nothing without a debugger.
THR_API void thr_debug_break();

/// Sets an environment variable of this process; later calls of getenv() and child processes started
/// later see it.
///
/// @param name   name of the variable; null, an empty name and a name with "=" do nothing
/// @param value  the text, copied. The empty text sets the variable to the empty text on both
///               platforms; null removes the variable
///
/// On Linux no other thread may read or write the environment meanwhile.
THR_API void thr_setenv(char const *name, char const *value);

/// Prepares the dynamic-library service for a module. On Linux and Windows there is nothing to prepare: the functions
/// below work before this call, too, and the path is not kept.
///
/// @param module_fullpath  full path of the module, file name included; may be null
THR_API void thr_drl_init(char const *module_fullpath);

/// Ends what thr_drl_init() began. The functions below go on working.
THR_API void thr_drl_fini();

/// Writes the platform's file name of a library.
///
///     zel_gen -> libzel_gen.so on Linux, zel_gen.dll on Windows
///
/// @param buffer  receives the name with a terminator; the empty text if that does not fit, or if the
///                stem is null or empty
/// @param size    size of the buffer in bytes; if 0, nothing is written
/// @param stem    the name without prefix and suffix; must not lie in the buffer
THR_API void thr_drl_construct_library_name(char *buffer, std::size_t size, char const *stem);

/// Whether a library is loaded in this process. Nothing is loaded and no reference is taken.
///
/// @param name  file name of the library; with a directory it means the library loaded from there
///
/// On Linux the name is compared with the name under which the loader found the library, before links
/// are resolved. A name that ends in ".so" also matches that name with a version after it. A name with
/// a full version also matches if the loader found the file through a link with a part of that version:
///
///     in the process: libx.so.1, a link to libx.so.1.0.2
///     libx.so, libx.so.1, libx.so.1.0.2 -> true    libx, libx.so.2, libx.so.1.0 -> false
///
/// On Windows case is ignored, "/" and "\" are equal, and ".dll" may be omitted.
THR_API bool thr_drl_is_loaded(char const *name);

#endif
