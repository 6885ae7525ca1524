// The report on Linux where the system or libdw fails: the process makes no child, the child ends or hangs, allocations
// fail, the stack is short, the stream is full or closed.
#include "err_sys.h"

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/internal_error.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <vector>

// The C library's own names. NOLINTBEGIN(readability-identifier-naming)
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);
}
// NOLINTEND(readability-identifier-naming)

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

enum class ForkState
{
    ORDINARY,
    FAILS,
    FAULTS,
};
ForkState l_fork = ForkState::ORDINARY;

// The children that hang at their first allocation, as if another thread held the lock of the heap.
int l_hanging_children = 0;
bool l_is_hanging = false;

// The allocation that fails, and all after it.
constexpr std::size_t NEVER = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> l_allocations_left{NEVER};

bool may_allocate()
{
    while (l_is_hanging)
        pause();
    std::size_t const left = l_allocations_left.load();
    if (left != NEVER && left != 0)
        --l_allocations_left;
    return left != 0;
}

constexpr char HEAD[] = "Internal error: first\n  Library: TST\n  Source:  tests/err, line 7\n";
constexpr char STACK[] = "\n  Stack:\n    #0 ";

} // namespace

// These replace the functions of the C library in the whole process.
extern "C" {

[[gnu::visibility("default")]] pid_t _Fork()
{
    if (l_fork == ForkState::FAILS) {
        errno = EAGAIN;
        return -1;
    }
    if (l_fork == ForkState::FAULTS)
        *static_cast<int volatile *>(nullptr) = 1;
    static auto const fork_itself = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "_Fork"));
    bool const is_hanging = l_hanging_children > 0 && l_hanging_children-- > 0;
    pid_t const child = fork_itself();
    l_is_hanging = child == 0 && is_hanging;
    return child;
}

[[gnu::visibility("default")]] void *malloc(std::size_t size)
{
    return may_allocate() ? __libc_malloc(size) : nullptr;
}

[[gnu::visibility("default")]] void *calloc(std::size_t count, std::size_t size)
{
    return may_allocate() ? __libc_calloc(count, size) : nullptr;
}

[[gnu::visibility("default")]] void *realloc(void *memory, std::size_t size)
{
    return may_allocate() ? __libc_realloc(memory, size) : nullptr;
}
}

// Visible to the linker, so that the loader knows its name too.
[[gnu::visibility("default")]] void err_test_failing_function();
void (*volatile l_err_test_failing_function)() = err_test_failing_function;

void err_test_failing_function()
{
    err_report_internal_error("first", "TST", "tests/err", 7);
}

namespace {

void fail()
{
    l_err_test_failing_function();
}

// A frame of which nothing is known but its module.
auto has_plain_frames()
{
    return ContainsRegex("\n    #0 err_child_test\\+0x[0-9a-f]+\n    #1 ");
}

class ErrChildDeathTest : public testing::Test
{
protected:
    ErrChildDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ErrChildDeathTest, WithoutAChildFramesAreModulesAndOffsets)
{
    EXPECT_EXIT((l_fork = ForkState::FAILS, fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), has_plain_frames()));
}

TEST_F(ErrChildDeathTest, AFaultWhileTheBlockIsMadeKeepsTheStatus)
{
    EXPECT_EXIT((l_fork = ForkState::FAULTS, fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), Not(HasSubstr("Stack:"))));
}

TEST_F(ErrChildDeathTest, AChildThatCannotGetALockIsReplaced)
{
    EXPECT_EXIT((l_hanging_children = 2, fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), HasSubstr("\n    #0 err_test_failing_function()+0x")));
}

// Written by the thread that flushes all streams, which holds the lock of their list meanwhile.
std::atomic<bool> l_is_flushing{false};

ssize_t write_late(void *, char const *, std::size_t size)
{
    l_is_flushing = true;
    // More than one child waits for its lock.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    return static_cast<ssize_t>(size);
}

void fail_beside_a_flush()
{
    std::FILE *const stream = fopencookie(nullptr, "w", {nullptr, write_late, nullptr, nullptr});
    std::fputs("text", stream);
    std::thread([] { std::fflush(nullptr); }).detach();
    while (!l_is_flushing)
        std::this_thread::yield();
    fail();
}

TEST_F(ErrChildDeathTest, AChildThatCannotOpenAStreamIsReplaced)
{
    EXPECT_EXIT(
        fail_beside_a_flush(), ExitedWithCode(INTERNAL_ERROR_STATUS),
        AllOf(HasSubstr(HEAD), HasSubstr("\n    #0 err_test_failing_function()+0x"), HasSubstr("err_child_test.cpp:")));
}

TEST_F(ErrChildDeathTest, ChildrenThatNeverGetALockAreGivenUp)
{
    EXPECT_EXIT((l_hanging_children = 1000, fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), has_plain_frames()));
}

TEST_F(ErrChildDeathTest, EachFailingAllocationLeavesTheBlock)
{
    // Each of the first ones; of those in the long work of libdw, some.
    for (std::size_t i = 0; i < 20000; i += i < 64 ? 1 : i / 8)
        EXPECT_EXIT((l_allocations_left = i, fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(HasSubstr(HEAD), HasSubstr(STACK)))
            << "allocations before the first that fails: " << i;
}

// A library that takes the place of libdw and does what the variable ERR_FAKE_DW names.
class ErrFakeDwDeathTest : public ErrChildDeathTest
{
protected:
    Environment const m_path{"LD_LIBRARY_PATH", ERR_FAKE_DW_DIRECTORY};
};

// What must happen once, in the process itself, and not in the child too. The counts are in memory that both share.
struct Counts
{
    std::atomic<int> ends_of_thread;
    std::atomic<int> handlers;
};
Counts *l_counts = nullptr;

struct EndOfThread
{
    ~EndOfThread() { std::fprintf(stderr, "[end of thread %d]\n", ++l_counts->ends_of_thread); }
};

[[noreturn]] void fail_with_handlers()
{
    void *const shared = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    l_counts = new (shared) Counts{};
    static thread_local EndOfThread const end;
    static_cast<void>(&end);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::setvbuf(stdout, nullptr, _IOFBF, 4096);
    std::fputs("[buffered]\n", stdout);
    std::atexit([] { std::fprintf(stderr, "[handler %d]\n", ++l_counts->handlers); });
    fail();
    std::abort(); // never
}

MATCHER(HasEachHandlerOnce, "")
{
    for (char const *const text :
         {"Internal error: ", "  Stack:\n", "[end of thread 1]\n", "[handler 1]\n", "[buffered]\n"})
        if (count_of(arg, text) != 1) {
            *result_listener << "has " << count_of(arg, text) << " times " << text;
            return false;
        }
    return true;
}

TEST_F(ErrFakeDwDeathTest, ALibraryThatEndsTheChildLosesSymbolsAlone)
{
    for (char const *const action : {"exit", "assert", "fault"}) {
        Environment const variable("ERR_FAKE_DW", action);
        EXPECT_EXIT(fail_with_handlers(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(HasEachHandlerOnce(), HasSubstr(HEAD), HasSubstr(STACK), HasSubstr("__libc_start_main+0x"),
                          Not(HasSubstr("[fake"))))
            << action;
    }
}

TEST_F(ErrFakeDwDeathTest, ALibraryThatHangsIsEnded)
{
    Environment const variable("ERR_FAKE_DW", "hang");
    EXPECT_EXIT(fail_with_handlers(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasEachHandlerOnce(), HasSubstr(HEAD), HasSubstr("__libc_start_main+0x")));
}

TEST_F(ErrFakeDwDeathTest, ALibraryThatEndsTheProcessDoesNotEndTheCallerOfADescription)
{
    for (char const *const action : {"exit", "assert", "fault"}) {
        Environment const variable("ERR_FAKE_DW", action);
        EXPECT_EXIT(
            {
                void const *const address = __builtin_return_address(0);
                std::vector<ERR_PLACE> const places = err_describe_calls(&address, 1);
                bool const is_found = places.size() == 1 && places[0].object == "err_child_test" &&
                                      places[0].object_offset != 0 && places[0].lines.empty();
                _exit(is_found ? 0 : 1);
            },
            ExitedWithCode(0), "")
            << action;
    }
}

// The stack.

std::size_t l_stack_left = 0;

// Calls itself until only so much of the stack is left.
[[gnu::noinline]] void fail_with_short_stack(char const *stack)
{
    char volatile space[256];
    space[0] = 0;
    if (static_cast<std::size_t>(const_cast<char const *>(space) - stack) > l_stack_left + sizeof space)
        fail_with_short_stack(stack);
    else
        fail();
    space[1] = 0; // after the call, so that each call has a frame
}

void *run_with_short_stack(void *stack)
{
    fail_with_short_stack(static_cast<char const *>(stack));
    return nullptr;
}

[[noreturn]] void fail_on_short_stack(std::size_t left)
{
    constexpr std::size_t SIZE = 64 * 1024;
    constexpr std::size_t GUARD = 16 * 1024 * 1024; // more than any function steps over
    l_stack_left = left;
    void *const memory = mmap(nullptr, GUARD + SIZE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    char *const stack = static_cast<char *>(memory) + GUARD;
    if (memory == MAP_FAILED || mprotect(stack, SIZE, PROT_READ | PROT_WRITE) != 0)
        _exit(1);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, SIZE);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, run_with_short_stack, stack) != 0)
        _exit(1);
    pthread_join(thread, nullptr);
    _exit(1);
}

TEST_F(ErrChildDeathTest, AShortStackIsEnough)
{
    for (std::size_t const left : {40960, 20480, 8192})
        EXPECT_EXIT(fail_on_short_stack(left), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(HasSubstr(HEAD), HasSubstr(" at tests/err/err_child_test.cpp:")))
            << "left: " << left;
}

// The stream.

// Standard error becomes a pipe without room, whose writes don't wait. Returns its other end.
int fill_standard_error()
{
    int ends[2];
    if (pipe2(ends, O_NONBLOCK) != 0)
        _exit(1);
    std::string const filler(4096, '-');
    while (write(ends[1], filler.data(), filler.size()) > 0)
        ;
    while (write(ends[1], "-", 1) > 0)
        ;
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    return ends[0];
}

TEST_F(ErrChildDeathTest, AFullStreamIsWaitedFor)
{
    EXPECT_EXIT(
        {
            static int const terminal = dup(STDERR_FILENO);
            static int const source = fill_standard_error();
            static std::thread reader([] {
                while (!err_is_in_abnormal_exit())
                    std::this_thread::yield();
                std::this_thread::sleep_for(std::chrono::milliseconds(100)); // the report waits
                char text[4096];
                fcntl(source, F_SETFL, 0);
                for (ssize_t count = 1; count > 0;) {
                    count = read(source, text, sizeof text);
                    if (count <= 0 || write(terminal, text, static_cast<std::size_t>(count)) != count)
                        return;
                }
            });
            std::atexit([] {
                close(STDERR_FILENO);
                reader.join();
            });
            fail();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS),
        AllOf(HasSubstr(HEAD), HasSubstr("\n    #0 err_test_failing_function()+0x")));
}

TEST_F(ErrChildDeathTest, AStreamThatStaysFullIsGivenUp)
{
    EXPECT_EXIT((fill_standard_error(), fail()), ExitedWithCode(INTERNAL_ERROR_STATUS), "^$");
}

// Prints the size and the beginning of each write to the standard error stream.
int l_terminal = -1;
int l_source = -1;

void print_writes()
{
    static char message[400'000];
    close(STDERR_FILENO);
    for (;;) {
        ssize_t const size = recv(l_source, message, sizeof message - 1, MSG_DONTWAIT);
        if (size <= 0)
            return;
        message[size] = '\0';
        dprintf(l_terminal, "[%zd %.8s]\n", size, message);
    }
}

[[noreturn]] void fail_with_counted_writes(std::size_t expression_size)
{
    std::string const expression(expression_size, 'x');
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0)
        _exit(1);
    l_terminal = dup(STDERR_FILENO);
    l_source = ends[0];
    dup2(ends[1], STDERR_FILENO);
    std::atexit(print_writes);
    err_report_internal_error(expression.c_str(), "TST", "tests/err", 7);
}

TEST_F(ErrChildDeathTest, TheBlockHasTwoWritesAndALongOneThree)
{
    EXPECT_EXIT(fail_with_counted_writes(10), ExitedWithCode(INTERNAL_ERROR_STATUS),
                ContainsRegex("^.[0-9]+ Internal.\n.[0-9]+   Stack:.\n$"));
    EXPECT_EXIT(fail_with_counted_writes(50000), ExitedWithCode(INTERNAL_ERROR_STATUS),
                ContainsRegex("^.2048 Internal.\n.48[0-9][0-9][0-9] xxxxxxxx.\n.[0-9]+   Stack:.\n$"));
}

TEST_F(ErrChildDeathTest, AClosedStreamChangesNothingElse)
{
    EXPECT_EXIT(
        {
            static int const terminal = dup(STDERR_FILENO);
            std::atexit([] { static_cast<void>(write(terminal, "[handler runs]", 14) == 14); });
            close(STDERR_FILENO);
            fail();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr("[handler runs]"));
}

// The first write ends inside of the path.
TEST(ErrChild, ALongPathOfTheExecutableIsPrintedWhole)
{
    TempDir const directory;
    std::filesystem::path path = directory.path();
    while (path.native().size() < 3500)
        path /= std::string(200, 'd');
    std::filesystem::create_directories(path);
    path /= "failing";
    std::filesystem::copy_file(ERR_FAILING_PROGRAM, path);
    Environment const libraries("LD_LIBRARY_PATH", ERR_LIBRARY_DIRECTORY);
    ChildResult const result = run_child(path.string());
    EXPECT_EQ(result.status, INTERNAL_ERROR_STATUS);
    EXPECT_THAT(result.output, AllOf(HasSubstr("Internal error: a check\n"), HasSubstr(", " + path.string() + "\n"),
                                     HasSubstr("\n  Module:  (not set)\n  Stack:\n    #0 main+0x")));
}

// No path of the system is as long as this one.
TEST(ErrChild, APathThatTheSystemDoesNotGiveIsUnknown)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    for (int i = 0; i < 24; ++i) {
        std::string const name(200, 'd');
        std::filesystem::create_directory(name);
        std::filesystem::current_path(name);
    }
    std::filesystem::copy_file(ERR_FAILING_PROGRAM, "failing");
    Environment const libraries("LD_LIBRARY_PATH", ERR_LIBRARY_DIRECTORY);
    ChildResult const result = run_child("./failing");
    EXPECT_EQ(result.status, INTERNAL_ERROR_STATUS);
    EXPECT_THAT(result.output, AllOf(HasSubstr("Internal error: a check\n"), HasSubstr(", (unknown)\n"),
                                     HasSubstr("\n  Stack:\n    #0 failing+0x")));
}

} // namespace
