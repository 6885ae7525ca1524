// The change of a file when the system, other processes or the rights of the file stand against it. Linux.
#include "gen/os/gen_os_ini.h"

#include "tests/support/open_descriptors.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temp_dir.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

constexpr char NAME[] = "tool.ini";
constexpr char NEXT_NAME[] = "tool.ini.gen_ini_tmp";
constexpr char ACL_NAME[] = "system.posix_acl_access";

// No lock is ever held that long here unless the test holds it.
constexpr int LONG_MSEC = 60'000;
constexpr int SHORT_MSEC = 20;

// A file descriptor for a scope.
class Descriptor
{
public:
    Descriptor(std::string const &path, int flags) : m_number(open(path.c_str(), flags | O_CLOEXEC)) {}
    ~Descriptor() { close(m_number); }
    Descriptor(Descriptor const &) = delete;
    Descriptor &operator=(Descriptor const &) = delete;

    int number() const { return m_number; }

private:
    int m_number;
};

class GenIniFileFaults : public testing::Test
{
protected:
    GenIniFileFaults() : m_path(m_dir.write(NAME, "old\n")) {}

    // Adds a line.
    bool add(std::string const &line, int lock_msec = LONG_MSEC)
    {
        return gen_os_change_file(m_path.c_str(), lock_msec, [&](std::string &text) {
            text += line + '\n';
            return true;
        });
    }

    void set_mode(mode_t mode) { ASSERT_EQ(chmod(m_path.c_str(), mode), 0); }

    struct stat status() const
    {
        struct stat result = {};
        stat(m_path.c_str(), &result);
        return result;
    }

    mode_t mode() const { return status().st_mode & 07777; }
    std::string text() const { return m_dir.read(NAME); }
    std::set<std::string> names() const { return entry_names(m_dir.path()); }

    TempDir m_dir;
    std::string m_path;
};

} // namespace

// Failing calls.

TEST_F(GenIniFileFaults, AFailedCallChangesNothing)
{
    std::size_t const descriptors = open_descriptor_count();
    for (SystemCallFault const &fault : std::vector<SystemCallFault>{{"open", EMFILE},
                                                                     {"open", EACCES},
                                                                     {"open", EROFS, 2},
                                                                     {"open", ENOSPC, 2},
                                                                     {"flock", ENOLCK},
                                                                     {"flock", ENOLCK, 2, 1000},
                                                                     {"fstat", EIO},
                                                                     {"fstat", EIO, 3},
                                                                     {"read", EIO},
                                                                     {"read", EIO, 2},
                                                                     {"fchmod", EPERM},
                                                                     {"write", ENOSPC},
                                                                     {"write", EIO},
                                                                     {"write", EDQUOT, 2},
                                                                     {"fsync", EIO},
                                                                     {"fsync", ENOSPC},
                                                                     {"rename", EACCES}}) {
        std::vector<SystemCallFault> faults = {fault};
        if (fault.function == "write" && fault.first == 2)
            faults.push_back({"write", SystemCallFault::SHORT_TRANSFER}); // so that there is a second one
        {
            SystemCallFaults const scope(faults);
            EXPECT_FALSE(add("new", SHORT_MSEC)) << fault.function << ' ' << fault.error;
            EXPECT_GT(scope.met(), 0) << fault.function << ' ' << fault.error;
        }
        EXPECT_EQ(text(), "old\n") << fault.function << ' ' << fault.error;
        EXPECT_THAT(names(), ElementsAre(NAME)) << fault.function << ' ' << fault.error;
        EXPECT_EQ(open_descriptor_count(), descriptors) << fault.function << ' ' << fault.error;
    }
    EXPECT_TRUE(add("new", SHORT_MSEC)); // no lock is held
    EXPECT_EQ(text(), "old\nnew\n");
}

TEST_F(GenIniFileFaults, AFailedCallLeavesNoNewFile)
{
    for (char const *const function : {"fchmod", "write", "fsync", "rename"}) {
        fs::remove(m_path);
        SystemCallFaults const scope({{function, EIO}});
        EXPECT_FALSE(add("new", SHORT_MSEC)) << function;
        EXPECT_EQ(scope.met(), 1) << function;
        EXPECT_THAT(names(), testing::IsEmpty()) << function;
    }
}

TEST_F(GenIniFileFaults, GoesOnAfterInterruptions)
{
    for (char const *const function : {"open", "flock", "read", "write", "fsync"}) {
        m_dir.write(NAME, "old\n");
        SystemCallFaults const scope({{function, EINTR, 1, 3}, {function, EINTR, 5, 1}});
        EXPECT_TRUE(add("new")) << function;
        EXPECT_EQ(text(), "old\nnew\n") << function;
        EXPECT_GE(scope.met(), 3) << function;
    }
}

// Then the name could be that of another file.
TEST_F(GenIniFileFaults, LooksAgainIfItCantCompareFiles)
{
    for (int const call : {2, 4}) {
        m_dir.write(NAME, "old\n");
        SystemCallFaults const scope({{"fstat", EIO, call}});
        EXPECT_TRUE(add("new"));
        EXPECT_EQ(scope.met(), 1);
        EXPECT_EQ(text(), "old\nnew\n");
        EXPECT_THAT(names(), ElementsAre(NAME));
    }
}

TEST_F(GenIniFileFaults, ReadsAndWritesInParts)
{
    constexpr int ALL = 1'000'000;
    SystemCallFaults const scope(
        {{"read", SystemCallFault::SHORT_TRANSFER, 1, ALL}, {"write", SystemCallFault::SHORT_TRANSFER, 1, ALL}});
    EXPECT_TRUE(add("a line of some length"));
    EXPECT_EQ(text(), "old\na line of some length\n");
    EXPECT_GT(scope.met(), 26 + 4);
}

TEST_F(GenIniFileFaults, TheTextReachesTheDiskBeforeTheNameIsTaken)
{
    std::string text_at_sync;
    std::string text_at_name;
    bool is_synced = false;
    SystemCallFaults const scope({{"fsync", SystemCallFault::NO_ERROR, 1, 1,
                                   [&] {
                                       text_at_sync = m_dir.read(NEXT_NAME);
                                       is_synced = true;
                                   }},
                                  {"rename", SystemCallFault::NO_ERROR, 1, 1, [&] {
                                       EXPECT_TRUE(is_synced);
                                       text_at_name = text();
                                   }}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(scope.met(), 2);
    EXPECT_EQ(text_at_sync, "old\nnew\n");
    EXPECT_EQ(text_at_name, "old\n");
}

TEST_F(GenIniFileFaults, WritesNothingThatIsAsBefore)
{
    ino_t const file = status().st_ino;
    EXPECT_TRUE(gen_os_change_file(m_path.c_str(), LONG_MSEC, [](std::string &) { return true; }));
    EXPECT_EQ(status().st_ino, file);
    fs::remove(m_path);
    EXPECT_TRUE(gen_os_change_file(m_path.c_str(), LONG_MSEC, [](std::string &) { return true; }));
    EXPECT_FALSE(gen_os_change_file(m_path.c_str(), LONG_MSEC, [](std::string &) { return false; }));
    EXPECT_THAT(names(), testing::IsEmpty());
}

// The lock.

TEST_F(GenIniFileFaults, GivesUpWhenTheLockIsHeldTooLong)
{
    Descriptor const other(m_path, O_RDONLY);
    ASSERT_EQ(flock(other.number(), LOCK_EX), 0);
    EXPECT_FALSE(add("new", SHORT_MSEC));
    EXPECT_FALSE(add("new", 0));
    EXPECT_EQ(text(), "old\n");
    ASSERT_EQ(flock(other.number(), LOCK_UN), 0);
    EXPECT_TRUE(add("new", 0));
    EXPECT_EQ(text(), "old\nnew\n");
}

TEST_F(GenIniFileFaults, HoldsTheLockDuringTheChange)
{
    EXPECT_TRUE(gen_os_change_file(m_path.c_str(), LONG_MSEC, [this](std::string &text) {
        EXPECT_FALSE(add("another", SHORT_MSEC));
        text += "new\n";
        return true;
    }));
    EXPECT_EQ(text(), "old\nnew\n");
}

TEST_F(GenIniFileFaults, HoldsTheLockUntilTheNewFileHasTheName)
{
    SystemCallFaults const scope({{"rename", SystemCallFault::NO_ERROR, 1, 1, [this] {
                                       EXPECT_FALSE(add("another", SHORT_MSEC));
                                       // The file that gets the name is locked too.
                                       Descriptor const next(m_dir.text(NEXT_NAME), O_RDONLY);
                                       EXPECT_EQ(flock(next.number(), LOCK_EX | LOCK_NB), -1);
                                   }}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(scope.met(), 1);
    EXPECT_EQ(text(), "old\nnew\n");
}

TEST_F(GenIniFileFaults, TakesTheFileThatReplacedTheLockedOne)
{
    SystemCallFaults const scope({{"flock", SystemCallFault::NO_ERROR, 1, 1, [this] {
                                       m_dir.write("other", "other\n");
                                       fs::rename(m_dir.path() / "other", m_path);
                                   }}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(scope.met(), 1);
    EXPECT_EQ(text(), "other\nnew\n");
}

TEST_F(GenIniFileFaults, MakesTheFileThatWasRemovedBeforeTheLock)
{
    SystemCallFaults const scope({{"flock", SystemCallFault::NO_ERROR, 1, 1, [this] { fs::remove(m_path); }}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(scope.met(), 1);
    EXPECT_EQ(text(), "new\n");
}

// Otherwise a caller that changes the file again and again would have the lock nearly always.
TEST_F(GenIniFileFaults, LetsAnotherCallerThatWaitsGoFirst)
{
    std::atomic<bool> waits{false};
    std::thread other;
    {
        // The other caller has marked the file when it looks for the lock a second time.
        auto const wait_as_another = [&] {
            SystemCallFaults const scope({{"flock", SystemCallFault::NO_ERROR, 2, 1, [&] { waits = true; }}});
            EXPECT_TRUE(add("another"));
        };
        SystemCallFaults const scope({{"rename", SystemCallFault::NO_ERROR, 1, 1,
                                       [&] {
                                           other = std::thread(wait_as_another);
                                           while (!waits)
                                               std::this_thread::yield();
                                       }},
                                      {"nanosleep", SystemCallFault::NO_ERROR}});
        EXPECT_TRUE(add("new"));
        EXPECT_EQ(scope.met(), 2);
    }
    other.join();
    EXPECT_EQ(text(), "old\nnew\nanother\n");
    SystemCallFaults const scope({{"nanosleep", SystemCallFault::NO_ERROR}});
    EXPECT_TRUE(add("alone"));
    EXPECT_EQ(scope.met(), 0);
}

// A child of a fork has the same openings of files, and may live long.
TEST_F(GenIniFileFaults, KeepsNoLockInAChildOfAFork)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    pid_t child = -1;
    {
        SystemCallFaults const scope({{"fsync", SystemCallFault::NO_ERROR, 1, 1, [&] {
                                           child = fork();
                                           if (child == 0) {
                                               char byte;
                                               close(ends[1]);
                                               read(ends[0], &byte, 1); // until the parent closes the pipe
                                               _exit(0);
                                           }
                                       }}});
        EXPECT_TRUE(add("new"));
    }
    EXPECT_TRUE(add("newer", SHORT_MSEC));
    close(ends[1]);
    close(ends[0]);
    int result = -1;
    EXPECT_EQ(waitpid(child, &result, 0), child);
    EXPECT_EQ(text(), "old\nnew\nnewer\n");
}

// The file that a killed process leaves.

TEST_F(GenIniFileFaults, RemovesTheFileOfAKilledProcess)
{
    pid_t const child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        SystemCallFaults const scope({{"rename", SystemCallFault::NO_ERROR, 1, 1, [] { raise(SIGKILL); }}});
        add("killed");
        _exit(0);
    }
    int result = 0;
    ASSERT_EQ(waitpid(child, &result, 0), child);
    ASSERT_TRUE(WIFSIGNALED(result));
    EXPECT_THAT(names(), ElementsAre(NAME, NEXT_NAME));
    EXPECT_EQ(text(), "old\n");
    EXPECT_TRUE(add("new"));
    EXPECT_THAT(names(), ElementsAre(NAME));
    EXPECT_EQ(text(), "old\nnew\n");
}

TEST_F(GenIniFileFaults, LeavesTheFileOfALivingOwner)
{
    m_dir.write(NEXT_NAME, "of another");
    Descriptor const owner(m_dir.text(NEXT_NAME), O_RDONLY);
    ASSERT_EQ(flock(owner.number(), LOCK_EX), 0);
    EXPECT_FALSE(add("new", SHORT_MSEC));
    EXPECT_EQ(text(), "old\n");
    EXPECT_EQ(m_dir.read(NEXT_NAME), "of another");
}

TEST_F(GenIniFileFaults, GivesWayToACallerThatRemovesItsNewFile)
{
    SystemCallFaults const scope(
        {{"flock", SystemCallFault::NO_ERROR, 2, 1, [this] { fs::remove(m_dir.path() / NEXT_NAME); }}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(scope.met(), 1);
    EXPECT_EQ(text(), "old\nnew\n");
    EXPECT_THAT(names(), ElementsAre(NAME));
}

TEST_F(GenIniFileFaults, WritesThroughNothingThatHasTheNextName)
{
    std::string const victim = m_dir.write("victim", "precious");
    fs::create_hard_link(victim, m_dir.path() / NEXT_NAME);
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(m_dir.read("victim"), "precious");
    fs::create_symlink("victim", m_dir.path() / NEXT_NAME);
    EXPECT_FALSE(add("newer", SHORT_MSEC));
    fs::remove(m_dir.path() / NEXT_NAME);
    fs::create_directory(m_dir.path() / NEXT_NAME);
    EXPECT_FALSE(add("newer", SHORT_MSEC));
    EXPECT_EQ(m_dir.read("victim"), "precious");
    EXPECT_EQ(text(), "old\nnew\n");
}

// Rights.

TEST_F(GenIniFileFaults, KeepsTheMode)
{
    for (mode_t const mode_bits : {0600U, 0640U, 0664U, 0666U, 0755U, 0200U | 0400U, 02660U}) {
        set_mode(mode_bits);
        EXPECT_TRUE(add("new"));
        EXPECT_EQ(mode(), mode_bits);
    }
}

TEST_F(GenIniFileFaults, TheNewFileIsNeverOpenToMore)
{
    set_mode(0640);
    std::vector<mode_t> modes;
    auto const note = [&] {
        struct stat next = {};
        ASSERT_EQ(stat(m_dir.text(NEXT_NAME).c_str(), &next), 0);
        modes.push_back(next.st_mode & 07777);
    };
    mode_t const former = umask(0);
    {
        SystemCallFaults const scope({{"fchown", SystemCallFault::NO_ERROR, 1, 1, note},
                                      {"fchmod", SystemCallFault::NO_ERROR, 1, 1, note},
                                      {"write", SystemCallFault::NO_ERROR, 1, 1, note}});
        EXPECT_TRUE(add("new"));
    }
    umask(former);
    EXPECT_THAT(modes, ElementsAre(0600, 0600, 0640));
}

TEST_F(GenIniFileFaults, MakesAFileAsTheUserWantsIt)
{
    mode_t const former = umask(027);
    fs::remove(m_path);
    EXPECT_TRUE(add("new"));
    umask(former);
    EXPECT_EQ(mode(), 0640U);
}

TEST_F(GenIniFileFaults, KeepsOwnerAndGroup)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a file away";
    ASSERT_EQ(chown(m_path.c_str(), 1234, 2345), 0);
    set_mode(06775);
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(status().st_uid, 1234U);
    EXPECT_EQ(status().st_gid, 2345U);
    EXPECT_EQ(mode(), 06775U);
}

TEST_F(GenIniFileFaults, KeepsTheGroupIfTheOwnerIsAnother)
{
    set_mode(06664);
    SystemCallFaults const scope({{"fchown", EPERM}});
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(mode(), 0664U); // without the bits that act for the owner
}

TEST_F(GenIniFileFaults, GivesNoOtherGroupThePermissionsOfTheGroup)
{
    struct
    {
        mode_t former;
        mode_t mode;
    } const cases[] = {{0660, 0600}, {0664, 0644}, {0666, 0666}, {06770, 0700}, {0604, 0604}};
    for (auto const &c : cases) {
        set_mode(c.former);
        SystemCallFaults const scope({{"fchown", EPERM, 1, 2}});
        EXPECT_TRUE(add("new"));
        EXPECT_EQ(scope.met(), 2);
        EXPECT_EQ(mode(), c.mode);
    }
}

// An ACL as the system stores it: version 2, then a tag, permissions and an identity for each entry. The owner, user
// 1234, the group, the mask and the others.
constexpr unsigned char ACL[] = {
    2,  0, 0, 0,                         //
    1,  0, 6, 0, 0xff, 0xff, 0xff, 0xff, //
    2,  0, 6, 0, 0xd2, 0x04, 0,    0,    //
    4,  0, 4, 0, 0xff, 0xff, 0xff, 0xff, //
    16, 0, 6, 0, 0xff, 0xff, 0xff, 0xff, //
    32, 0, 0, 0, 0xff, 0xff, 0xff, 0xff,
};

std::string acl_of(std::string const &path)
{
    char value[1024];
    ssize_t const size = getxattr(path.c_str(), ACL_NAME, value, sizeof value);
    return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

TEST_F(GenIniFileFaults, KeepsTheAcl)
{
    if (setxattr(m_path.c_str(), ACL_NAME, ACL, sizeof ACL, 0) != 0)
        GTEST_SKIP() << "the file system has no ACLs";
    std::string const acl = acl_of(m_path);
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(acl_of(m_path), acl);
    EXPECT_EQ(mode(), 0660U);
    // Nobody gets more than the ACL gave, if it can't be kept.
    for (char const *const function : {"fsetxattr", "fgetxattr"}) {
        ASSERT_EQ(setxattr(m_path.c_str(), ACL_NAME, ACL, sizeof ACL, 0), 0);
        SystemCallFaults const scope({{function, EPERM}});
        EXPECT_TRUE(add("new"));
        EXPECT_EQ(scope.met(), 1);
        EXPECT_EQ(acl_of(m_path), "none");
        EXPECT_EQ(mode(), 0600U);
    }
}

TEST_F(GenIniFileFaults, TakesNoAclOfTheDirectory)
{
    if (setxattr(m_dir.text().c_str(), "system.posix_acl_default", ACL, sizeof ACL, 0) != 0)
        GTEST_SKIP() << "the file system has no ACLs";
    set_mode(0640);
    ASSERT_EQ(acl_of(m_path), "none");
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(acl_of(m_path), "none");
    EXPECT_EQ(mode(), 0640U);
}

TEST_F(GenIniFileFaults, RefusesAFileWithoutWritePermission)
{
    for (mode_t const mode_bits : {0444U, 0400U, 0555U}) {
        set_mode(mode_bits);
        EXPECT_FALSE(add("new"));
        EXPECT_FALSE(gen_os_change_file(m_path.c_str(), LONG_MSEC, [](std::string &) { return true; }));
        EXPECT_EQ(text(), "old\n");
        EXPECT_EQ(mode(), mode_bits);
    }
}

// Links and other files.

TEST_F(GenIniFileFaults, FollowsALinkToNothing)
{
    fs::remove(m_path);
    fs::create_directory(m_dir.path() / "sub");
    fs::create_symlink("sub/real.ini", m_dir.path() / "middle.ini");
    fs::create_symlink("middle.ini", m_path);
    EXPECT_TRUE(add("new"));
    EXPECT_EQ(m_dir.read("sub/real.ini"), "new\n");
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_TRUE(fs::is_symlink(m_dir.path() / "middle.ini"));
    EXPECT_TRUE(add("newer"));
    EXPECT_EQ(m_dir.read("sub/real.ini"), "new\nnewer\n");
    EXPECT_THAT(entry_names(m_dir.path() / "sub"), ElementsAre("real.ini"));
}

TEST_F(GenIniFileFaults, RefusesWhatIsNoRegularFile)
{
    fs::remove(m_path);
    fs::create_symlink(NAME, m_path); // to itself
    EXPECT_FALSE(add("new"));
    fs::remove(m_path);
    fs::create_directory(m_path);
    EXPECT_FALSE(add("new"));
    fs::remove(m_path);
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_FALSE(add("new")); // and doesn't wait for a writer
    EXPECT_TRUE(fs::is_fifo(m_path));
    m_path = "/dev/null";
    EXPECT_FALSE(add("new"));
}

// The directory has to be writable, since the file is replaced.
TEST_F(GenIniFileFaults, NeedsADirectoryThatTakesANewFile)
{
    SystemCallFaults const scope({{"open", EACCES, 2}});
    EXPECT_FALSE(add("new"));
    EXPECT_EQ(text(), "old\n");
}
