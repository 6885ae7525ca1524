#include "tests/support/system_call_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

namespace {

struct Script
{
    std::vector<SystemCallFault> faults;
    std::map<std::string, int> calls;
    int met = 0;
};

// Null without a scope, and during an action.
thread_local Script *l_script = nullptr;

template <typename Function>
Function next_function(char const *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// The error of this call of the function.
int error_of_call(char const *function)
{
    if (l_script == nullptr)
        return SystemCallFault::NO_ERROR;
    Script *const script = std::exchange(l_script, nullptr); // what is called here has no faults
    int const call = ++script->calls[function];
    int error = SystemCallFault::NO_ERROR;
    for (SystemCallFault const &fault : script->faults) {
        if (fault.function != function || call < fault.first || call >= fault.first + fault.count)
            continue;
        ++script->met;
        error = fault.error;
        if (fault.action)
            fault.action();
    }
    l_script = script;
    return error;
}

// Makes a call, or lets it fail with -1.
template <typename Result, typename... Parameters, typename... Arguments>
Result call_or_fail(Result (* /*type*/)(Parameters...), char const *name, Arguments... arguments)
{
    int const error = error_of_call(name);
    if (error > 0) {
        errno = error;
        return -1;
    }
    return next_function<Result (*)(Parameters...)>(name)(arguments...);
}

// The same for a function that transfers bytes.
template <typename Buffer>
ssize_t transfer_or_fail(char const *name, int descriptor, Buffer buffer, std::size_t size)
{
    int const error = error_of_call(name);
    if (error > 0) {
        errno = error;
        return -1;
    }
    if (error == SystemCallFault::SHORT_TRANSFER)
        size = std::min<std::size_t>(size, 1);
    return next_function<ssize_t (*)(int, Buffer, std::size_t)>(name)(descriptor, buffer, size);
}

} // namespace

SystemCallFaults::SystemCallFaults(std::vector<SystemCallFault> faults)
{
    auto *const script = new Script;
    script->faults = std::move(faults);
    l_script = script;
}

SystemCallFaults::~SystemCallFaults()
{
    delete std::exchange(l_script, nullptr);
}

int SystemCallFaults::met() const // NOLINT(readability-convert-member-functions-to-static)
{
    return l_script->met;
}

// In place of the functions of the C library.
extern "C" {

[[gnu::visibility("default")]] int open(char const *path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    int const error = error_of_call("open");
    if (error > 0) {
        errno = error;
        return -1;
    }
    return next_function<int (*)(char const *, int, ...)>("open")(path, flags, mode);
}

[[gnu::visibility("default")]] ssize_t read(int descriptor, void *buffer, std::size_t size)
{
    return transfer_or_fail("read", descriptor, buffer, size);
}

[[gnu::visibility("default")]] ssize_t write(int descriptor, void const *buffer, std::size_t size)
{
    return transfer_or_fail("write", descriptor, buffer, size);
}

[[gnu::visibility("default")]] int fsync(int descriptor)
{
    return call_or_fail(&fsync, "fsync", descriptor);
}

[[gnu::visibility("default")]] int flock(int descriptor, int operation) noexcept
{
    return call_or_fail(&flock, "flock", descriptor, operation);
}

[[gnu::visibility("default")]] int stat(char const *path, struct stat *status) noexcept
{
    return call_or_fail(static_cast<int (*)(char const *, struct stat *)>(&stat), "stat", path, status);
}

[[gnu::visibility("default")]] int fstat(int descriptor, struct stat *status) noexcept
{
    return call_or_fail(&fstat, "fstat", descriptor, status);
}

[[gnu::visibility("default")]] int nanosleep(timespec const *time, timespec *rest)
{
    return call_or_fail(&nanosleep, "nanosleep", time, rest);
}

[[gnu::visibility("default")]] int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    return call_or_fail(&fchown, "fchown", descriptor, owner, group);
}

[[gnu::visibility("default")]] int fchmod(int descriptor, mode_t mode) noexcept
{
    return call_or_fail(&fchmod, "fchmod", descriptor, mode);
}

[[gnu::visibility("default")]] int rename(char const *from, char const *to) noexcept
{
    return call_or_fail(&rename, "rename", from, to);
}

[[gnu::visibility("default")]] ssize_t fgetxattr(int descriptor, char const *name, void *value,
                                                 std::size_t size) noexcept
{
    return call_or_fail(&fgetxattr, "fgetxattr", descriptor, name, value, size);
}

[[gnu::visibility("default")]] int fsetxattr(int descriptor, char const *name, void const *value, std::size_t size,
                                             int flags) noexcept
{
    return call_or_fail(&fsetxattr, "fsetxattr", descriptor, name, value, size, flags);
}

} // extern "C"
