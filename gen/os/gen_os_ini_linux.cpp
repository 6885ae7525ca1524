// A change locks the file itself:
//
//     open and lock "tool.ini"; start again if the name means another file by now
//     read the text, compute the new one
//     create and lock "tool.ini.gen_ini_tmp", give it the rights of the old file, write it
//     rename it to "tool.ini"; unlock both
//
// The new file is locked before it gets the name, so that the next caller waits for the end of this change, whichever
// of the two files it has opened. A process that is killed leaves the file with the second name; its lock is free then,
// by which the next change sees that nobody writes it, and removes it.
//
// The locks are those of flock(). Each belongs to one opening of a file, so that they also hold among the threads of a
// process, and the system releases them when the process ends. Locks of fcntl() would be those of the whole process,
// and its open-file-description locks would see no other program that uses flock().
//
// flock() gives the lock to whoever comes first, and a caller that changes the file again and again comes first nearly
// always. So a caller that finds the file locked marks it, by a read lock of a byte that no file has, and the one that
// has changed a marked file sleeps before it returns.
#include "gen/os/gen_os_ini.h"

#include "sys/sys_write.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

namespace {

// Added to the name of a file for its next text, which is not complete as long as it has that name.
constexpr char NEXT_SUFFIX[] = ".gen_ini_tmp";

constexpr char ACL_NAME[] = "system.posix_acl_access";

// Of the first and the longest sleep between two looks for the lock, and of the sleep that lets another caller find it.
constexpr std::int64_t FIRST_PAUSE_NSEC = 50'000;
constexpr std::int64_t LONGEST_PAUSE_NSEC = 1'000'000;
constexpr std::int64_t PASSING_PAUSE_NSEC = 2'000'000;

// The byte whose read lock says that a caller waits for the file.
constexpr off_t WAITING_MARK = off_t{1} << 62;

// Calls a function again as long as a signal interrupts it.
template <typename Function>
auto uninterrupted(Function const &function)
{
    for (;;) {
        auto const result = function();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

void sleep_for(std::int64_t nsec)
{
    timespec const time{0, static_cast<long>(nsec)};
    nanosleep(&time, nullptr);
}

// The time that a change may wait, from its construction on.
class Patience
{
public:
    explicit Patience(int msec) : m_end_nsec(now_nsec() + static_cast<std::int64_t>(msec) * 1'000'000) {}

    // Sleeps for a moment, longer from call to call. False, without a sleep, if the time is over.
    bool pause()
    {
        std::int64_t const rest_nsec = m_end_nsec - now_nsec();
        if (rest_nsec <= 0)
            return false;
        sleep_for(std::min(rest_nsec, m_pause_nsec));
        m_pause_nsec = std::min(2 * m_pause_nsec, LONGEST_PAUSE_NSEC);
        return true;
    }

    // The next sleep is a short one again.
    void restart() { m_pause_nsec = FIRST_PAUSE_NSEC; }

private:
    static std::int64_t now_nsec()
    {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
    }

    std::int64_t m_end_nsec;
    std::int64_t m_pause_nsec = FIRST_PAUSE_NSEC;
};

enum class LockResult
{
    LOCKED,
    HELD_BY_ANOTHER,
    FAILED
};

// An open file for a scope, with its lock.
class OpenFile
{
public:
    // Never waits for the other end of a pipe.
    OpenFile(char const *path, int flags, mode_t mode = 0)
        : m_descriptor(uninterrupted([&] { return open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode); }))
    {
    }
    // Unlocks by name: a child of a fork that another thread made meanwhile has the same opening of the file.
    ~OpenFile()
    {
        if (m_is_locked)
            uninterrupted([this] { return flock(m_descriptor, LOCK_UN); });
        if (is_open())
            close(m_descriptor);
    }
    OpenFile(OpenFile const &) = delete;
    OpenFile &operator=(OpenFile const &) = delete;

    bool is_open() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

    bool get_status(struct stat &status) const { return fstat(m_descriptor, &status) == 0; }

    bool is_regular() const
    {
        struct stat status;
        return get_status(status) && S_ISREG(status.st_mode);
    }

    // Whether the path means this file, itself and not by a link.
    bool has_name(std::string const &path) const
    {
        struct stat own, named;
        return get_status(own) && lstat(path.c_str(), &named) == 0 && own.st_dev == named.st_dev &&
               own.st_ino == named.st_ino;
    }

    LockResult try_lock()
    {
        m_is_locked = uninterrupted([this] { return flock(m_descriptor, LOCK_EX | LOCK_NB); }) == 0;
        if (m_is_locked)
            return LockResult::LOCKED;
        return errno == EWOULDBLOCK ? LockResult::HELD_BY_ANOTHER : LockResult::FAILED;
    }

    bool lock(Patience &patience)
    {
        for (;;) {
            LockResult const result = try_lock();
            if (result != LockResult::HELD_BY_ANOTHER)
                return result == LockResult::LOCKED;
            mark();
            if (!patience.pause())
                return false;
        }
    }

    // Whether another caller waits for the lock. False on systems without such marks.
    bool is_waited_for() const
    {
        struct flock mark = waiting_mark(F_WRLCK);
        return fcntl(m_descriptor, F_OFD_GETLK, &mark) == 0 && mark.l_type != F_UNLCK;
    }

    bool read_all(std::string &text) const
    {
        char buffer[4096];
        for (;;) {
            ssize_t const count = uninterrupted([&] { return read(m_descriptor, buffer, sizeof buffer); });
            if (count <= 0)
                return count == 0;
            text.append(buffer, static_cast<std::size_t>(count));
        }
    }

    // Also waits until the bytes have reached the disk.
    bool write_all(std::string const &text) const
    {
        return sys_write(m_descriptor, text.data(), text.size(), 0).error == 0 &&
               uninterrupted([this] { return fsync(m_descriptor); }) == 0;
    }

private:
    static struct flock waiting_mark(short type)
    {
        struct flock mark = {};
        mark.l_type = type;
        mark.l_whence = SEEK_SET;
        mark.l_start = WAITING_MARK;
        mark.l_len = 1;
        return mark;
    }

    // The mark ends with the opening of the file.
    void mark() const
    {
        struct flock mark = waiting_mark(F_RDLCK);
        fcntl(m_descriptor, F_OFD_SETLK, &mark);
    }

    int m_descriptor;
    bool m_is_locked = false;
};

// The path of an existing file without links; empty, with errno, if there is none.
std::string real_path(char const *path)
{
    std::unique_ptr<char, decltype(&std::free)> const resolved(realpath(path, nullptr), &std::free);
    return resolved == nullptr ? std::string() : std::string(resolved.get());
}

// Whether errno says that a file has no such attribute, or that its file system keeps none.
bool is_without_attribute()
{
    return errno == ENODATA || errno == ENOTSUP;
}

// Gives a file the ACL of another one, or none if that has none.
bool copy_acl(OpenFile const &from, OpenFile const &to)
{
    ssize_t const size = fgetxattr(from.descriptor(), ACL_NAME, nullptr, 0);
    if (size < 0)
        return is_without_attribute() && (fremovexattr(to.descriptor(), ACL_NAME) == 0 || is_without_attribute());
    std::vector<char> acl(static_cast<std::size_t>(size));
    return fgetxattr(from.descriptor(), ACL_NAME, acl.data(), acl.size()) == size &&
           fsetxattr(to.descriptor(), ACL_NAME, acl.data(), acl.size(), 0) == 0;
}

// Gives a new, empty file the rights of another one. False if not even the permissions of its owner can be set.
bool copy_rights(OpenFile const &from, OpenFile const &to)
{
    struct stat status;
    if (!from.get_status(status))
        return false;
    bool const has_owner = fchown(to.descriptor(), status.st_uid, status.st_gid) == 0;
    bool const has_group = has_owner || fchown(to.descriptor(), static_cast<uid_t>(-1), status.st_gid) == 0;
    bool const has_acl = copy_acl(from, to);
    mode_t mode = status.st_mode & 07777;
    if (!has_owner)
        mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    // The permissions of the group would hold for another group, or for all that an ACL leaves to its entries.
    if (!has_group || !has_acl)
        mode &= ~static_cast<mode_t>(S_IRWXG) | (mode & S_IRWXO) << 3;
    return fchmod(to.descriptor(), mode) == 0;
}

// The file that gets the new text, under the name that it has until it is complete.
class NextFile
{
public:
    explicit NextFile(std::string path)
        : m_path(std::move(path)), m_file(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600),
          m_is_own(m_file.is_open())
    {
    }
    ~NextFile()
    {
        if (m_is_own)
            unlink(m_path.c_str());
    }
    NextFile(NextFile const &) = delete;
    NextFile &operator=(NextFile const &) = delete;

    bool is_created() const { return m_file.is_open(); }

    // HELD_BY_ANOTHER: another caller took the file for one that was left, and removes it.
    LockResult lock()
    {
        LockResult result = m_file.try_lock();
        if (result == LockResult::LOCKED && !m_file.has_name(m_path))
            result = LockResult::HELD_BY_ANOTHER;
        m_is_own = result != LockResult::HELD_BY_ANOTHER;
        return result;
    }

    bool replace(OpenFile const &former, std::string const &target, std::string const &text)
    {
        if (!copy_rights(former, m_file) || !m_file.write_all(text) || std::rename(m_path.c_str(), target.c_str()) != 0)
            return false;
        m_is_own = false;
        return true;
    }

private:
    std::string m_path;
    OpenFile m_file;
    bool m_is_own;
};

// Removes the file that a killed process has left. False if it can't be removed; true also if it is gone, or if its
// owner lives.
bool remove_left_file(std::string const &path)
{
    OpenFile file(path.c_str(), O_RDWR | O_NOFOLLOW); // some network file systems lock no other openings
    if (!file.is_open())
        return errno == ENOENT;
    if (!file.is_regular())
        return false;
    LockResult const result = file.try_lock();
    if (result != LockResult::LOCKED)
        return result == LockResult::HELD_BY_ANOTHER;
    return !file.has_name(path) || unlink(path.c_str()) == 0;
}

bool replace_text(OpenFile const &former, std::string const &target, std::string const &text, Patience &patience)
{
    std::string const path = target + NEXT_SUFFIX;
    do {
        NextFile next(path);
        if (next.is_created()) {
            LockResult const result = next.lock();
            if (result != LockResult::HELD_BY_ANOTHER)
                return result == LockResult::LOCKED && next.replace(former, target, text);
        } else if (errno != EEXIST || !remove_left_file(path)) {
            return false;
        }
    } while (patience.pause());
    return false;
}

// One change of a file.
class Change
{
public:
    Change(char const *path, int lock_msec, std::function<bool(std::string &)> const &change)
        : m_path(path), m_patience(lock_msec), m_change(change)
    {
    }

    bool make()
    {
        do {
            Result const result = try_once();
            if (result != Result::FILE_CHANGED_ITS_NAME) {
                if (m_is_waited_for)
                    sleep_for(PASSING_PAUSE_NSEC);
                return result == Result::DONE;
            }
            m_patience.restart();
        } while (m_patience.pause());
        return false;
    }

private:
    enum class Result
    {
        DONE,
        FAILED,
        FILE_CHANGED_ITS_NAME
    };

    static Result result_of(bool is_done) { return is_done ? Result::DONE : Result::FAILED; }

    Result try_once()
    {
        OpenFile file(m_path, O_RDWR);
        if (file.is_open())
            return change_file(file, /*is_new=*/false);
        if (errno != ENOENT)
            return Result::FAILED;
        std::string text;
        if (!m_change(text))
            return Result::FAILED;
        if (text.empty())
            return Result::DONE;
        OpenFile fresh(m_path, O_RDWR | O_CREAT, 0666); // follows a link to a missing file
        return fresh.is_open() ? change_file(fresh, /*is_new=*/true) : Result::FAILED;
    }

    Result change_file(OpenFile &file, bool is_new)
    {
        if (!file.is_regular() || !file.lock(m_patience))
            return Result::FAILED;
        std::string const target = real_path(m_path);
        if (target.empty() && errno != ENOENT)
            return Result::FAILED;
        if (target.empty() || !file.has_name(target))
            return Result::FILE_CHANGED_ITS_NAME;
        bool const is_done = change_text(file, target);
        if (!is_done && is_new)
            remove_if_empty(file, target);
        m_is_waited_for = file.is_waited_for();
        return result_of(is_done);
    }

    bool change_text(OpenFile const &file, std::string const &target)
    {
        struct stat status;
        constexpr mode_t WRITE_PERMISSIONS = S_IWUSR | S_IWGRP | S_IWOTH;
        if (!file.get_status(status) || (status.st_mode & WRITE_PERMISSIONS) == 0)
            return false;
        std::string former;
        if (!file.read_all(former))
            return false;
        std::string text = former;
        if (!m_change(text))
            return false;
        return text == former || replace_text(file, target, text, m_patience);
    }

    static void remove_if_empty(OpenFile const &file, std::string const &path)
    {
        struct stat status;
        if (file.get_status(status) && status.st_size == 0)
            unlink(path.c_str());
    }

    char const *m_path;
    Patience m_patience;
    std::function<bool(std::string &)> const &m_change;
    bool m_is_waited_for = false; // by others, when the change was made
};

} // namespace

bool gen_os_write_private_profile_string(char const *, char const *, char const *, char const *, int, int &)
{
    return false;
}

bool gen_os_change_file(char const *path, int lock_msec, std::function<bool(std::string &text)> const &change)
{
    return Change(path, lock_msec, change).make();
}
