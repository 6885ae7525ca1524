#include "thr/os/thr_os.h"

#include "sys/os/sys_os_long_path_windows.h"

#include <windows.h>

#include <cstdlib>
#include <new>

char const *const THR_OS_LIBRARY_PREFIX = "";
char const *const THR_OS_LIBRARY_SUFFIX = ".dll";

struct THR_MUTEX
{
    // There is nothing to release, and the lock can be used while the system ends the process.
    SRWLOCK lock = SRWLOCK_INIT;
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
    AcquireSRWLockExclusive(&mutex->lock);
}

void thr_os_mutex_unlock(THR_MUTEX_OBJ mutex)
{
    ReleaseSRWLockExclusive(&mutex->lock);
}

void thr_os_yield()
{
    if (!SwitchToThread())
        Sleep(0);
}

void thr_os_break()
{
    DebugBreak();
}

void thr_os_setenv(char const *name, char const *value)
{
    if (*value != '\0') {
        _putenv_s(name, value);
        return;
    }
    // The runtime removes a variable whose value is empty. So its entries, in the narrow and in the wide table, are
    // made with another value, which is then cut off, and the table of the system, from which child processes inherit,
    // is set separately.
    if (_putenv_s(name, "x") != 0)
        return;
    if (char *entry = std::getenv(name))
        *entry = '\0';
    if (wchar_t *entry = _wgetenv(sys_os_widen(name).c_str()))
        *entry = L'\0';
    SetEnvironmentVariableA(name, "");
}

void thr_os_unsetenv(char const *name)
{
    _putenv_s(name, "");
}
