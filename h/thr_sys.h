// Threads, environment and dynamic libraries. None of these functions throws or reports an error;
// a null argument is safe everywhere.
#ifndef THR_SYS_H
#define THR_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>

/// Holds what thr_mutex_create() returned.
using THR_MUTEX_OBJ = struct THR_MUTEX *;

/// Makes a mutex that is ready for use and not locked; static constructors may call it.
///
/// @return the mutex, to be released with thr_mutex_destroy(); null if there is no memory for it
THR_API THR_MUTEX_OBJ thr_mutex_create();

/// Releases a mutex, which no thread may hold or wait for; exit handlers may call it.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_destroy(THR_MUTEX_OBJ mutex);

/// Locks the mutex, and waits as long as another thread holds it. A thread that holds it already must
/// not lock it again: it would wait for itself.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_lock(THR_MUTEX_OBJ mutex);

/// Unlocks the mutex, which the calling thread holds.
///
/// @param mutex  from thr_mutex_create(); null does nothing
THR_API void thr_mutex_unlock(THR_MUTEX_OBJ mutex);

/// Holds a mutex locked for its lifetime.
class THR_API THR_SCOPED_MUTEX
{
public:
    /// Locks.
    ///
    /// @param mutex  holds what thr_mutex_create() returned; the mutex must outlive this object, the
    ///               variable that holds it need not
    explicit THR_SCOPED_MUTEX(THR_MUTEX_OBJ &mutex);

    /// Unlocks.
    ~THR_SCOPED_MUTEX();

    THR_SCOPED_MUTEX(THR_SCOPED_MUTEX const &) = delete;
    THR_SCOPED_MUTEX &operator=(THR_SCOPED_MUTEX const &) = delete;

private:
    THR_MUTEX_OBJ m_mutex;
};

/// Identity of the calling thread: always the same on one thread, different between live threads.
/// Never 0 and never -1. A thread that has ended leaves its identity to later ones. Takes a few
/// nanoseconds.
THR_API std::int64_t thr_thread_self();

/// Rests the calling thread.
///
/// @param milliseconds  the least time of rest; 0 gives the processor up at once to another thread
///                      that is ready to run, and returns as soon as the system allows
THR_API void thr_sleep(unsigned milliseconds);

/// Breaks into the debugger that is attached to the process; does nothing without one.
THR_API void thr_debug_break();

/// Sets an environment variable of this process; later calls of getenv() and child processes started
/// later see it.
///
/// @param name   name of the variable; null, an empty name and one with "=" in it do nothing
/// @param value  the text, copied; the empty one leaves the variable set, to the empty text, and null
///               removes the variable
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

/// Writes the platform's file name of the library with a stem.
///
///     zel_gen -> libzel_gen.so on Linux, zel_gen.dll on Windows
///
/// @param buffer  receives the name with its terminating zero; the empty text if that does not fit, or
///                if there is no stem
/// @param size    size of the buffer in bytes; 0 leaves the buffer alone
/// @param stem    the stem, which must not lie in the buffer
THR_API void thr_drl_construct_library_name(char *buffer, std::size_t size, char const *stem);

/// Whether a library of that name is in this process. Nothing is loaded and no reference is taken.
///
/// @param name  file name of the library; a name with a directory means the library as loaded from there
///
/// On Linux the name is compared with the one by which the loader found the library, before links are
/// resolved. A name that ends in ".so" also means that name with a version behind it, and a name with
/// a version means the file that the loader found by way of a link with a part of that version:
///
///     in the process: libx.so.1, a link to libx.so.1.0.2
///     libx.so, libx.so.1, libx.so.1.0.2 -> true    libx, libx.so.2, libx.so.1.0 -> false
///
/// On Windows names are compared without regard to case, slashes of either kind separate, and ".dll" may be left
/// out.
THR_API bool thr_drl_is_loaded(char const *name);

#endif
