#include "thr/os/thr_os.h"

#include <csignal>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sched.h>

char const *const THR_OS_LIBRARY_PREFIX = "lib";
char const *const THR_OS_LIBRARY_SUFFIX = ".so";

struct THR_MUTEX
{
    std::mutex mutex;
};

THR_MUTEX_OBJ thr_os_mutex_create()
{
    return new (std::nothrow) THR_MUTEX;
}

void thr_os_mutex_destroy(THR_MUTEX_OBJ mutex)
{
    delete mutex;
}

void thr_os_mutex_lock(THR_MUTEX_OBJ mutex)
{
    mutex->mutex.lock();
}

void thr_os_mutex_unlock(THR_MUTEX_OBJ mutex)
{
    mutex->mutex.unlock();
}

void thr_os_yield()
{
    sched_yield();
}

void thr_os_break()
{
    std::raise(SIGTRAP);
}

void thr_os_setenv(char const *name, char const *value)
{
    setenv(name, value, /*overwrite=*/1);
}

void thr_os_unsetenv(char const *name)
{
    unsetenv(name);
}
