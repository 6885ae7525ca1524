#include "tests/faults/fault_layer.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

// The allocator of the C library, which has these names for those who replace malloc().
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_calloc(std::size_t count, std::size_t size);
extern "C" void *__libc_realloc(void *block, std::size_t size);

namespace {

std::atomic<bool> l_counts{false};
std::atomic<int> l_calls{0};
pid_t l_process = 0; // that counts
int l_failing = -1;
int l_error = 0;
std::atomic<char const *> l_failed{""};
FaultKind const *l_kinds[FAULT_MOST_CALLS];

// The code of the C library and of the loader.
struct CodeRange
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};
CodeRange l_spared[2];

int add_spared(dl_phdr_info *info, std::size_t, void *count)
{
    int &spared = *static_cast<int *>(count);
    bool const is_spared =
        std::strstr(info->dlpi_name, "/libc.so") != nullptr || std::strstr(info->dlpi_name, "/ld-linux") != nullptr;
    for (int i = 0; is_spared && i < info->dlpi_phnum; ++i) {
        ElfW(Phdr) const &header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0 && spared < 2) {
            std::uintptr_t const begin = info->dlpi_addr + header.p_vaddr;
            l_spared[spared++] = {begin, begin + header.p_memsz};
        }
    }
    return 0;
}

bool is_spared(void const *address)
{
    auto const value = reinterpret_cast<std::uintptr_t>(address);
    return (l_spared[0].begin <= value && value < l_spared[0].end) ||
           (l_spared[1].begin <= value && value < l_spared[1].end);
}

// The error with which this call is to fail; 0 for none.
int next_fault(FaultKind const &kind)
{
    // Not in a child of the process, whose calls would have the numbers of later calls of the process itself.
    if (!l_counts.load(std::memory_order_relaxed) || getpid() != l_process)
        return 0;
    int const number = l_calls.fetch_add(1, std::memory_order_relaxed);
    if (number < FAULT_MOST_CALLS)
        l_kinds[number] = &kind;
    if (number != l_failing)
        return 0;
    l_failed.store(kind.function, std::memory_order_relaxed);
    return l_error;
}

// The function of that name in the libraries after this one.
template <typename Function>
Function next(Function /*same*/, char const *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <typename Result>
Result failed(int error, Result result)
{
    errno = error;
    return result;
}

} // namespace

void fault_layer_begin(int number, int error)
{
    int spared = 0;
    dl_iterate_phdr(add_spared, &spared);
    l_process = getpid();
    l_failing = number;
    l_error = error;
    l_failed = "";
    l_calls = 0;
    l_counts = true;
}

int fault_layer_end()
{
    l_counts = false;
    return l_calls;
}

FaultKind const *fault_layer_kind(int number)
{
    return l_kinds[number];
}

char const *fault_layer_failed()
{
    return l_failed;
}

// FORWARD(<result>, <name>, <parameters>, <arguments>, <result of a failure>, <error>...): a function that either fails
// or calls the next one of its name.
#define FORWARD(RESULT, NAME, PARAMETERS, ARGUMENTS, FAILURE, ...)                                                     \
    extern "C" RESULT NAME PARAMETERS                                                                                  \
    {                                                                                                                  \
        static FaultKind const s_kind{#NAME, {__VA_ARGS__}};                                                           \
        static auto *const s_next = next(&NAME, #NAME);                                                                \
        if (int const error = next_fault(s_kind))                                                                      \
            return failed<RESULT>(error, FAILURE);                                                                     \
        return s_next ARGUMENTS;                                                                                       \
    }

// The same for reads and writes of a number of bytes.
#define FORWARD_BYTES(NAME, PARAMETERS, ARGUMENTS, ONE_BYTE_ARGUMENTS, ...)                                            \
    extern "C" ssize_t NAME PARAMETERS                                                                                 \
    {                                                                                                                  \
        static FaultKind const s_kind{#NAME, {__VA_ARGS__}};                                                           \
        static auto *const s_next = next(&NAME, #NAME);                                                                \
        int const error = next_fault(s_kind);                                                                          \
        if (error == FAULT_SHORT && size > 1)                                                                          \
            return s_next ONE_BYTE_ARGUMENTS;                                                                          \
        if (error > 0)                                                                                                 \
            return failed<ssize_t>(error, -1);                                                                         \
        return s_next ARGUMENTS;                                                                                       \
    }

FORWARD_BYTES(read, (int file, void *buffer, std::size_t size), (file, buffer, size), (file, buffer, 1), EIO, EINTR,
              EISDIR, FAULT_SHORT)
FORWARD_BYTES(pread, (int file, void *buffer, std::size_t size, off_t at), (file, buffer, size, at),
              (file, buffer, 1, at), EIO, EINTR, FAULT_SHORT)
FORWARD_BYTES(write, (int file, void const *buffer, std::size_t size), (file, buffer, size), (file, buffer, 1), EIO,
              EINTR, EAGAIN, ENOSPC, EPIPE, FAULT_SHORT)

// A part of several buffers is a byte of the first that has any.
extern "C" ssize_t writev(int file, iovec const *buffers, int count)
{
    static FaultKind const s_kind{"writev", {EIO, EINTR, ENOSPC, FAULT_SHORT}};
    static auto *const s_next = next(&writev, "writev");
    int const error = next_fault(s_kind);
    if (error > 0)
        return failed<ssize_t>(error, -1);
    for (int i = 0; error == FAULT_SHORT && i < count; ++i)
        if (buffers[i].iov_len > 0) {
            iovec const one{buffers[i].iov_base, 1};
            return s_next(file, &one, 1);
        }
    return s_next(file, buffers, count);
}

extern "C" int open(char const *path, int flags, ...)
{
    static FaultKind const s_kind{"open", {EACCES, EMFILE, EINTR, EIO, ENOSPC}};
    static auto *const s_next = next(&open, "open");
    std::va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (int const error = next_fault(s_kind))
        return failed(error, -1);
    return s_next(path, flags, mode);
}

extern "C" int fcntl(int file, int command, ...)
{
    static FaultKind const s_kind{"fcntl", {EINTR, ENOLCK, EAGAIN}};
    static auto *const s_next = next(&fcntl, "fcntl");
    std::va_list arguments;
    va_start(arguments, command);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (int const error = next_fault(s_kind))
        return failed(error, -1);
    return s_next(file, command, argument);
}

// The kernel closes the descriptor even if it reports an error.
extern "C" int close(int file)
{
    static FaultKind const s_kind{"close", {EIO, EINTR}};
    static auto *const s_next = next(&close, "close");
    int const error = next_fault(s_kind);
    int const result = s_next(file);
    return error != 0 ? failed(error, -1) : result;
}

extern "C" int fclose(FILE *stream)
{
    static FaultKind const s_kind{"fclose", {EIO, ENOSPC}};
    static auto *const s_next = next(&fclose, "fclose");
    int const error = next_fault(s_kind);
    int const result = s_next(stream);
    return error != 0 ? failed(error, EOF) : result;
}

FORWARD(FILE *, fopen, (char const *path, char const *mode), (path, mode), nullptr, EACCES, EMFILE, EINTR)
FORWARD(FILE *, fopen64, (char const *path, char const *mode), (path, mode), nullptr, EACCES, EMFILE, EINTR)
FORWARD(int, fflush, (FILE * stream), (stream), EOF, EIO, ENOSPC, EAGAIN)
FORWARD(int, fsync, (int file), (file), -1, EIO, EINTR, EINVAL)
FORWARD(int, fchmod, (int file, mode_t mode), (file, mode), -1, EPERM, EIO)
FORWARD(int, fchown, (int file, uid_t user, gid_t group), (file, user, group), -1, EPERM, EIO)
FORWARD(int, flock, (int file, int operation), (file, operation), -1, EINTR, ENOLCK, EWOULDBLOCK)
FORWARD(int, rename, (char const *from, char const *to), (from, to), -1, EACCES, ENOSPC, EXDEV)
FORWARD(int, unlink, (char const *path), (path), -1, EACCES, ENOENT)
FORWARD(int, stat, (char const *path, struct stat *record), (path, record), -1, EACCES, ENOENT, EIO)
FORWARD(int, lstat, (char const *path, struct stat *record), (path, record), -1, EACCES, ENOENT, EIO)
FORWARD(int, fstat, (int file, struct stat *record), (file, record), -1, EIO)
FORWARD(int, fstatat, (int directory, char const *path, struct stat *record, int flags),
        (directory, path, record, flags), -1, EACCES, ENOENT, EIO)
FORWARD(int, access, (char const *path, int mode), (path, mode), -1, EACCES, ENOENT, EIO)
FORWARD(int, mkdir, (char const *path, mode_t mode), (path, mode), -1, EACCES, EEXIST, ENOSPC)
FORWARD(int, mkostemps, (char *path, int length, int flags), (path, length, flags), -1, EACCES, EMFILE, ENOSPC)
FORWARD(DIR *, opendir, (char const *path), (path), nullptr, EACCES, EMFILE, ENOENT)
FORWARD(dirent *, readdir, (DIR * directory), (directory), nullptr, EIO)
FORWARD(char *, getcwd, (char *buffer, std::size_t size), (buffer, size), nullptr, ENOENT, ERANGE)
FORWARD(char *, realpath, (char const *path, char *resolved), (path, resolved), nullptr, EACCES, ENOENT)
FORWARD(ssize_t, readlink, (char const *path, char *buffer, std::size_t size), (path, buffer, size), -1, EACCES, ENOENT)
FORWARD(void *, mmap, (void *address, std::size_t size, int protection, int flags, int file, off_t at),
        (address, size, protection, flags, file, at), MAP_FAILED, ENOMEM)
FORWARD(int, getrusage, (__rusage_who_t who, struct rusage *usage), (who, usage), -1, EFAULT)
FORWARD(int, sysinfo, (struct sysinfo * information), (information), -1, EFAULT)
FORWARD(long, sysconf, (int name), (name), -1, EINVAL)
FORWARD(int, sched_getaffinity, (pid_t process, std::size_t size, cpu_set_t *mask), (process, size, mask), -1, EINVAL)
FORWARD(int, sched_setaffinity, (pid_t process, std::size_t size, cpu_set_t const *mask), (process, size, mask), -1,
        EINVAL, EPERM)
FORWARD(int, gethostname, (char *name, std::size_t size), (name, size), -1, ENAMETOOLONG)
FORWARD(int, getpwuid_r, (uid_t user, struct passwd *record, char *buffer, std::size_t size, struct passwd **result),
        (user, record, buffer, size, result), EIO, EIO)
FORWARD(int, dup2, (int from, int to), (from, to), -1, EBUSY, EINTR)
FORWARD(int, pipe2, (int *ends, int flags), (ends, flags), -1, EMFILE, ENFILE)
FORWARD(int, poll, (pollfd * queries, nfds_t count, int milliseconds), (queries, count, milliseconds), -1, EINTR,
        ENOMEM)
FORWARD(int, nanosleep, (timespec const *time, timespec *rest), (time, rest), -1, EINTR)
FORWARD(pid_t, _Fork, (), (), -1, EAGAIN, ENOMEM)
FORWARD(pid_t, waitpid, (pid_t process, int *status, int options), (process, status, options), -1, EINTR, ECHILD)
FORWARD(ssize_t, fgetxattr, (int file, char const *name, void *value, std::size_t size), (file, name, value, size), -1,
        EIO, ENODATA, ENOTSUP, ERANGE)
FORWARD(int, fsetxattr, (int file, char const *name, void const *value, std::size_t size, int flags),
        (file, name, value, size, flags), -1, EPERM, ENOTSUP, ENOSPC)
FORWARD(int, fremovexattr, (int file, char const *name), (file, name), -1, EPERM, ENODATA, ENOTSUP)
FORWARD(void *, dlopen, (char const *name, int mode), (name, mode), nullptr, ENOMEM)
FORWARD(tm *, localtime_r, (time_t const *time, tm *result), (time, result), nullptr, EOVERFLOW)
FORWARD(int, sigaltstack, (stack_t const *stack, stack_t *former), (stack, former), -1, ENOMEM)
FORWARD(int, sigaction, (int number, struct sigaction const *action, struct sigaction *former),
        (number, action, former), -1, EINVAL)
FORWARD(int, pthread_getattr_np, (pthread_t thread, pthread_attr_t *attributes), (thread, attributes), ENOMEM, ENOMEM)
FORWARD(int, pthread_key_create, (pthread_key_t * key, void (*release)(void *)), (key, release), EAGAIN, EAGAIN)
FORWARD(int, setenv, (char const *name, char const *value, int replace), (name, value, replace), -1, ENOMEM)

// Allocations fail for all but the C library and the loader, whose own faults are theirs. A constant kind, since a
// look-up of the next function would allocate.
#define FORWARD_ALLOCATION(NAME, PARAMETERS, ARGUMENTS)                                                                \
    extern "C" void *NAME PARAMETERS                                                                                   \
    {                                                                                                                  \
        static constexpr FaultKind KIND{#NAME, {ENOMEM}};                                                              \
        if (is_spared(__builtin_return_address(0)) || next_fault(KIND) == 0)                                           \
            return __libc_##NAME ARGUMENTS;                                                                            \
        return failed<void *>(ENOMEM, nullptr);                                                                        \
    }

FORWARD_ALLOCATION(malloc, (std::size_t size), (size))
FORWARD_ALLOCATION(calloc, (std::size_t count, std::size_t size), (count, size))
FORWARD_ALLOCATION(realloc, (void *block, std::size_t size), (block, size))

extern "C" int gethostbyname_r(char const *name, hostent *record, char *buffer, std::size_t size, hostent **result,
                               int *error)
{
    static FaultKind const s_kind{"gethostbyname_r", {TRY_AGAIN}};
    static auto *const s_next = next(&gethostbyname_r, "gethostbyname_r");
    if (next_fault(s_kind) == 0)
        return s_next(name, record, buffer, size, result, error);
    *result = nullptr;
    *error = TRY_AGAIN;
    return EAGAIN;
}

extern "C" std::size_t fwrite(void const *bytes, std::size_t size, std::size_t count, FILE *stream)
{
    static FaultKind const s_kind{"fwrite", {ENOSPC, EINTR, FAULT_SHORT}};
    static auto *const s_next = next(&fwrite, "fwrite");
    int const error = next_fault(s_kind);
    if (error > 0)
        return failed<std::size_t>(error, 0);
    return s_next(bytes, size, error == FAULT_SHORT ? count / 2 : count, stream);
}

extern "C" std::size_t fread(void *bytes, std::size_t size, std::size_t count, FILE *stream)
{
    static FaultKind const s_kind{"fread", {EIO}};
    static auto *const s_next = next(&fread, "fread");
    if (int const error = next_fault(s_kind))
        return failed<std::size_t>(error, 0);
    return s_next(bytes, size, count, stream);
}
