// Calls of zel_thr to the operating system.
#ifndef THR_OS_H
#define THR_OS_H

#include "thr_sys.h"

/// A new mutex, not locked; null if there is no memory for it.
THR_MUTEX_OBJ thr_os_mutex_create();
void thr_os_mutex_destroy(THR_MUTEX_OBJ mutex);
void thr_os_mutex_lock(THR_MUTEX_OBJ mutex);
void thr_os_mutex_unlock(THR_MUTEX_OBJ mutex);

/// Lets another thread that is ready to run have the processor.
void thr_os_yield();

/// Stops the process in its debugger, which must be attached.
void thr_os_break();

/// Sets a variable for getenv() and for child processes. A variable can have the empty text as its value.
void thr_os_setenv(char const *name, char const *value);
void thr_os_unsetenv(char const *name);

/// The texts before and after the stem in the file name of a library.
extern char const *const THR_OS_LIBRARY_PREFIX;
extern char const *const THR_OS_LIBRARY_SUFFIX;

#endif
