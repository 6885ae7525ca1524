#include "thr/os/thr_os.h"

#include "thr/thr_drl_name.h"

#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string_view>

char const *const THR_OS_LIBRARY_PREFIX = "lib";
char const *const THR_OS_LIBRARY_SUFFIX = ".so";

struct THR_MUTEX
{
    std::mutex mutex;
};

namespace {

// Length of the status file's part that is read; the tracer stands in its first lines.
constexpr std::size_t STATUS_SIZE = 1024;

// Whether the loader's object is the file of that name behind a version link: "libx.so.1.0" is asked
// for and the loader found it by way of "libx.so.1".
bool is_target_of_version_link(std::string_view asked, char const *loaded)
{
    if (!thr_drl_is_version_of(thr_drl_file_name(loaded), thr_drl_file_name(asked)))
        return false;
    char target[PATH_MAX];
    return realpath(loaded, target) != nullptr && thr_drl_names(asked, target);
}

int compare_loaded_object(dl_phdr_info *info, std::size_t, void *data)
{
    std::string_view const asked = *static_cast<std::string_view const *>(data);
    return thr_drl_names(asked, info->dlpi_name) || is_target_of_version_link(asked, info->dlpi_name) ? 1 : 0;
}

} // namespace

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

std::int64_t thr_os_thread_self()
{
    // The address of the thread's descriptor: unique among live threads, without a system call.
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(__builtin_thread_pointer()));
}

void thr_os_yield()
{
    sched_yield();
}

bool thr_os_is_debugged()
{
    int const file = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    char status[STATUS_SIZE + 1];
    ssize_t const length = read(file, status, STATUS_SIZE);
    close(file);
    if (length <= 0)
        return false;
    status[length] = '\0';
    constexpr char TRACER[] = "\nTracerPid:";
    char const *tracer = std::strstr(status, TRACER);
    return tracer != nullptr && std::strtol(tracer + sizeof(TRACER) - 1, nullptr, 10) != 0;
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

bool thr_os_library_is_loaded(char const *name)
{
    std::string_view asked = name;
    return dl_iterate_phdr(compare_loaded_object, &asked) != 0;
}
