// What zel_thr asks of the operating system.
#ifndef THR_OS_H
#define THR_OS_H

#include "thr_sys.h"

#include <cstdint>

/// A mutex that needs no further set-up; null if there is no memory for it.
THR_MUTEX_OBJ thr_os_mutex_create();
void thr_os_mutex_destroy(THR_MUTEX_OBJ mutex);
void thr_os_mutex_lock(THR_MUTEX_OBJ mutex);
void thr_os_mutex_unlock(THR_MUTEX_OBJ mutex);

/// The calling thread's identity; never 0 or -1.
std::int64_t thr_os_thread_self();

/// Gives the processor up to another thread that is ready to run.
void thr_os_yield();

/// Whether a debugger is attached now; false where the system does not say.
bool thr_os_is_debugged();

/// Stops the process in its debugger, which must be attached.
void thr_os_break();

/// Sets a variable for getenv() and for child processes; the empty text leaves it set.
void thr_os_setenv(char const *name, char const *value);
void thr_os_unsetenv(char const *name);

/// What the platform puts before and after a library's stem.
extern char const *const THR_OS_LIBRARY_PREFIX;
extern char const *const THR_OS_LIBRARY_SUFFIX;

/// Whether a library of that name, not empty, is in the process; loads nothing, takes no reference.
bool thr_os_library_is_loaded(char const *name);

#endif
