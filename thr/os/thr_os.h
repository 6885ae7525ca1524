// What zel_thr asks of the operating system.
#ifndef THR_OS_H
#define THR_OS_H

#include "thr_sys.h"

/// A mutex that needs no further set-up; null if there is no memory for it.
THR_MUTEX_OBJ thr_os_mutex_create();
void thr_os_mutex_destroy(THR_MUTEX_OBJ mutex);
void thr_os_mutex_lock(THR_MUTEX_OBJ mutex);
void thr_os_mutex_unlock(THR_MUTEX_OBJ mutex);

/// Gives the processor up to another thread that is ready to run.
void thr_os_yield();

/// Stops the process in its debugger, which must be attached.
void thr_os_break();

/// Sets a variable for getenv() and for child processes; the empty text leaves it set.
void thr_os_setenv(char const *name, char const *value);
void thr_os_unsetenv(char const *name);

/// What the platform puts before and after a library's stem.
extern char const *const THR_OS_LIBRARY_PREFIX;
extern char const *const THR_OS_LIBRARY_SUFFIX;

#endif
