#include "thr_sys.h"

#include "tests/support/debugger.h"
#include "tests/support/environment.h"
#include "tests/support/own_executable.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t NAME_SIZE = 260;

// Works from the construction of static objects to their release.
class StaticUser
{
public:
    StaticUser() : m_mutex(thr_mutex_create())
    {
        THR_SCOPED_MUTEX const lock(m_mutex);
        m_is_built = m_mutex != nullptr;
    }
    ~StaticUser()
    {
        {
            THR_SCOPED_MUTEX const lock(m_mutex);
        }
        thr_mutex_destroy(m_mutex);
    }

    THR_MUTEX_OBJ m_mutex;
    bool m_is_built = false;
};

StaticUser l_static_user;

std::string library_name(char const *stem)
{
    char name[NAME_SIZE];
    thr_drl_construct_library_name(name, sizeof(name), stem);
    return name;
}

// Status of a command of the platform's shell: the shell's own exit status.
int shell_status(std::string const &command)
{
    int const status = std::system(command.c_str());
    return ON_WINDOWS ? status : (status >> 8) & 0xff;
}

TEST(ThrMutex, WorksInStaticConstructors)
{
    EXPECT_TRUE(l_static_user.m_is_built);
}

TEST(ThrMutex, LetsOneThreadIn)
{
    constexpr int THREADS = 4;
    constexpr int STEPS = 10000;
    THR_MUTEX_OBJ mutex = thr_mutex_create();
    ASSERT_NE(mutex, nullptr);
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < STEPS; ++j)
                if (THR_SCOPED_MUTEX const lock(mutex); j % 2 == 0)
                    count += 2;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(count, THREADS * STEPS);
    thr_mutex_destroy(mutex);
}

TEST(ThrMutex, BlocksUntilUnlocked)
{
    THR_MUTEX_OBJ mutex = thr_mutex_create();
    std::atomic<bool> is_unlocking{false};
    std::atomic<bool> was_early{false};
    thr_mutex_lock(mutex);
    std::thread other([&] {
        thr_mutex_lock(mutex);
        was_early = !is_unlocking;
        thr_mutex_unlock(mutex);
    });
    for (int i = 0; i < 1000; ++i)
        thr_sleep(0);
    is_unlocking = true;
    thr_mutex_unlock(mutex);
    other.join();
    EXPECT_FALSE(was_early);
    thr_mutex_destroy(mutex);
}

TEST(ThrMutex, ScopedMutexNeedsTheVariableForItsStartOnly)
{
    THR_MUTEX_OBJ mutex = thr_mutex_create();
    THR_MUTEX_OBJ variable = mutex;
    {
        THR_SCOPED_MUTEX const lock(variable);
        variable = nullptr;
    }
    // It would wait for itself if the guard had left the mutex locked.
    thr_mutex_lock(mutex);
    thr_mutex_unlock(mutex);
    thr_mutex_destroy(mutex);
}

TEST(ThrMutex, NullDoesNothing)
{
    THR_MUTEX_OBJ mutex = nullptr;
    {
        THR_SCOPED_MUTEX const outer(mutex);
        THR_SCOPED_MUTEX const inner(mutex);
        thr_mutex_lock(mutex);
        thr_mutex_lock(mutex);
    }
    thr_mutex_unlock(mutex);
    thr_mutex_destroy(mutex);
    EXPECT_EQ(mutex, nullptr);
}

TEST(ThrThreadSelf, IsTheSameOnOneThreadAndDiffersBetweenLiveThreads)
{
    constexpr std::size_t THREADS = 16;
    std::atomic<std::size_t> arrived{0};
    std::vector<std::int64_t> identities(THREADS);
    std::vector<char> is_stable(THREADS);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < THREADS; ++i)
        threads.emplace_back([&, i] {
            identities[i] = thr_thread_self();
            ++arrived;
            while (arrived != THREADS)
                thr_sleep(0);
            is_stable[i] = thr_thread_self() == identities[i];
        });
    for (std::thread &thread : threads)
        thread.join();
    identities.push_back(thr_thread_self());
    EXPECT_EQ(thr_thread_self(), identities.back());
    EXPECT_THAT(is_stable, testing::Each(1));
    EXPECT_THAT(identities, testing::Each(testing::AllOf(testing::Ne(0), testing::Ne(-1))));
    EXPECT_EQ(std::set<std::int64_t>(identities.begin(), identities.end()).size(), THREADS + 1);
}

TEST(ThrSleep, RestsAtLeastThatLong)
{
    for (unsigned const milliseconds : {1u, 30u}) {
        auto const start = std::chrono::steady_clock::now();
        thr_sleep(milliseconds);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(milliseconds))
            << milliseconds << " ms";
    }
}

TEST(ThrDebugBreak, DoesNothingWithoutADebugger)
{
    bool is_passed = false;
    thr_debug_break();
    is_passed = true;
    EXPECT_TRUE(is_passed);
}

TEST(ThrDebugBreak, BreaksIntoADebugger)
{
    DebuggedRun const run = run_under_debugger("--gtest_filter=ThrDebugBreak.DoesNothingWithoutADebugger");
    EXPECT_EQ(run.breaks, 1);
    // The debugger continues it after the break.
    EXPECT_EQ(run.status, 0);
}

TEST(ThrSetenv, IsSeenByGetenvAndByChildren)
{
    Environment const restored("ZEL_THR_TEST", nullptr);
    for (char const *value : {"one", "two two", "k=v;w"}) {
        thr_setenv("ZEL_THR_TEST", value);
        EXPECT_STREQ(std::getenv("ZEL_THR_TEST"), value);
        std::string const text = value;
        EXPECT_EQ(shell_status(ON_WINDOWS ? "if \"%ZEL_THR_TEST%\"==\"" + text + "\" (exit 7) else (exit 8)"
                                          : "[ \"$ZEL_THR_TEST\" = '" + text + "' ] && exit 7; exit 8"),
                  7)
            << value;
    }
}

TEST(ThrSetenv, EmptyValueLeavesTheVariableSet)
{
    for (char const *former : {static_cast<char const *>(nullptr), "", "former"}) {
        Environment const restored("ZEL_THR_TEST", former);
        thr_setenv("ZEL_THR_TEST", "");
        EXPECT_STREQ(std::getenv("ZEL_THR_TEST"), "") << "former " << (former == nullptr ? "null" : former);
        // The shell of Windows can't distinguish such a variable from a missing one.
        EXPECT_EQ(shell_status(ON_WINDOWS ? "exit 7" : "[ \"${ZEL_THR_TEST-unset}\" = '' ] && exit 7; exit 8"), 7)
            << "former " << (former == nullptr ? "null" : former);
        thr_setenv("ZEL_THR_TEST", "later");
        EXPECT_STREQ(std::getenv("ZEL_THR_TEST"), "later") << "former " << (former == nullptr ? "null" : former);
    }
}

#ifdef _WIN32
TEST(ThrSetenv, EmptyValueIsAlsoThatOfTheWideEnvironment)
{
    for (char const *former : {static_cast<char const *>(nullptr), "", "former"}) {
        Environment const restored("ZEL_THR_TEST", former);
        thr_setenv("ZEL_THR_TEST", "");
        wchar_t const *const value = _wgetenv(L"ZEL_THR_TEST");
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(std::wstring(value), L"");
    }
}
#endif

TEST(ThrSetenv, NullValueRemovesTheVariable)
{
    for (char const *former : {static_cast<char const *>(nullptr), "", "former"}) {
        Environment const restored("ZEL_THR_TEST", former);
        thr_setenv("ZEL_THR_TEST", nullptr);
        EXPECT_EQ(shell_status(ON_WINDOWS ? "if defined ZEL_THR_TEST (exit 8) else (exit 7)"
                                          : "[ \"${ZEL_THR_TEST-unset}\" = unset ] && exit 7; exit 8"),
                  7)
            << "former " << (former == nullptr ? "null" : former);
        EXPECT_EQ(std::getenv("ZEL_THR_TEST"), nullptr) << "former " << (former == nullptr ? "null" : former);
    }
}

TEST(ThrSetenv, PassesOverNamesThatCannotBe)
{
    Environment const restored("ZEL_THR_TEST", "kept");
    for (char const *name : {static_cast<char const *>(nullptr), "", "=", "ZEL_THR_TEST=x", "=ZEL_THR_TEST"})
        for (char const *value : {static_cast<char const *>(nullptr), "", "changed"}) {
            thr_setenv(name, value);
            EXPECT_STREQ(std::getenv("ZEL_THR_TEST"), "kept") << "name " << (name == nullptr ? "null" : name);
        }
}

TEST(ThrDrlInit, MayBeRepeatedAndTakenBackInAnyOrder)
{
    std::string const name = library_name("zel_thr");
    thr_drl_fini();
    for (char const *path : {"/opt/bin/one", "/opt/bin/two", "", static_cast<char const *>(nullptr)}) {
        thr_drl_init(path);
        EXPECT_TRUE(thr_drl_is_loaded(name.c_str())) << "path " << (path == nullptr ? "null" : path);
    }
    thr_drl_fini();
    thr_drl_fini();
    EXPECT_TRUE(thr_drl_is_loaded(name.c_str()));
}

TEST(ThrDrlConstructLibraryName, PutsPrefixAndSuffixAroundTheStem)
{
    EXPECT_EQ(library_name("zel_gen"), ON_WINDOWS ? "zel_gen.dll" : "libzel_gen.so");
    EXPECT_EQ(library_name("a.b"), ON_WINDOWS ? "a.b.dll" : "liba.b.so");
    EXPECT_EQ(library_name(""), "");
    EXPECT_EQ(library_name(nullptr), "");
}

TEST(ThrDrlConstructLibraryName, LeavesTheBufferEmptyWhenTheNameDoesNotFit)
{
    std::string const stem(200, 's');
    std::string const name = library_name(stem.c_str());
    ASSERT_GT(name.size(), stem.size());
    for (std::size_t size = 1; size <= NAME_SIZE; ++size) {
        // The byte after the buffer is watched.
        std::vector<char> buffer(size + 1, '#');
        thr_drl_construct_library_name(buffer.data(), size, stem.c_str());
        EXPECT_STREQ(buffer.data(), size > name.size() ? name.c_str() : "") << "size " << size;
        EXPECT_EQ(buffer[size], '#') << "size " << size;
    }
}

TEST(ThrDrlConstructLibraryName, LeavesABufferOfNoSizeAlone)
{
    char buffer[] = "#";
    thr_drl_construct_library_name(buffer, 0, "stem");
    EXPECT_STREQ(buffer, "#");
    thr_drl_construct_library_name(nullptr, NAME_SIZE, "stem");
}

TEST(ThrDrlIsLoaded, FindsLibrariesOfThisProcess)
{
    EXPECT_TRUE(thr_drl_is_loaded(library_name("zel_thr").c_str()));
    EXPECT_TRUE(thr_drl_is_loaded(ON_WINDOWS ? "ZEL_THR.DLL" : "libzel_thr.so.1"));
    EXPECT_TRUE(thr_drl_is_loaded(ON_WINDOWS ? "kernel32.dll" : "libc.so"));
    for (char const *name :
         {"", "zel_thr.so", "libzel_thr", "libzel_thr.so.9", "libzel_thr.so.", "no_such_library.dll"})
        EXPECT_FALSE(thr_drl_is_loaded(name)) << '"' << name << '"';
    EXPECT_FALSE(thr_drl_is_loaded(nullptr));
}

TEST(ThrDrlIsLoaded, TakesADirectoryForTheOneThatTheLibraryWasLoadedFrom)
{
    // The libraries lie next to the executable.
    std::filesystem::path const directory = own_executable().parent_path();
    std::filesystem::path const library = directory / library_name("zel_thr");
    for (std::string const &name : {library.string(), library.generic_string()})
        EXPECT_TRUE(thr_drl_is_loaded(name.c_str())) << name;
    std::string const elsewhere = (directory.parent_path() / library_name("zel_thr")).string();
    EXPECT_FALSE(thr_drl_is_loaded(elsewhere.c_str())) << elsewhere;
    EXPECT_FALSE(thr_drl_is_loaded((library.generic_string() + std::string(100000, 'x')).c_str()));
}

TEST(ThrDrlIsLoaded, LoadsNothing)
{
    // The version library lies next to the executable, which does not need it.
    std::string const name = library_name("zel_ver");
    EXPECT_FALSE(thr_drl_is_loaded(name.c_str()));
    EXPECT_FALSE(thr_drl_is_loaded(name.c_str()));
}

} // namespace
