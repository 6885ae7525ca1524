// The mutex under which the system's call changes a file. Windows.
#include "gen/os/gen_os_ini.h"

#include "tests/support/temp_dir.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include <windows.h>

#include <gtest/gtest.h>

namespace {

constexpr int SHORT_MSEC = 20;
constexpr int LONG_MSEC = 60'000;

// The documented name: the hash FNV-1a of the full path in lower case.
std::string mutex_name(std::filesystem::path path)
{
    std::uint64_t hash = 14695981039346656037U;
    for (char const c : path.make_preferred().string())
        hash = (hash ^ static_cast<unsigned>(std::tolower(static_cast<unsigned char>(c)))) * 1099511628211U;
    char name[64];
    std::snprintf(name, sizeof name, "Global\\zel_gen_ini_%016llx", static_cast<unsigned long long>(hash));
    return name;
}

bool set_key(std::string const &file, int lock_msec)
{
    int result = -1;
    EXPECT_TRUE(gen_os_write_private_profile_string("a", "x", "2", file.c_str(), lock_msec, result));
    return result != 0;
}

} // namespace

TEST(GenIniFileMutex, IsWaitedForAndGivenUp)
{
    TempDir const dir;
    std::string const file = dir.write("Tool.ini", "[a]\r\nx=1\r\n");
    HANDLE const mutex = CreateMutexA(nullptr, /*bInitialOwner=*/TRUE, mutex_name(file).c_str());
    ASSERT_NE(mutex, nullptr);
    bool is_set = true;
    std::thread([&] { is_set = set_key(file, SHORT_MSEC); }).join(); // a thread may lock its own mutex again
    EXPECT_FALSE(is_set);
    EXPECT_EQ(dir.read("Tool.ini"), "[a]\r\nx=1\r\n");
    ReleaseMutex(mutex);
    std::thread([&] { is_set = set_key(file, SHORT_MSEC); }).join();
    EXPECT_TRUE(is_set);
    EXPECT_EQ(dir.read("Tool.ini"), "[a]\r\nx=2\r\n");
    CloseHandle(mutex);
}

TEST(GenIniFileMutex, IsTakenFromAThreadThatEnded)
{
    TempDir const dir;
    std::string const file = dir.write("tool.ini", "[a]\r\nx=1\r\n");
    HANDLE mutex = nullptr;
    std::thread([&] { mutex = CreateMutexA(nullptr, /*bInitialOwner=*/TRUE, mutex_name(file).c_str()); }).join();
    ASSERT_NE(mutex, nullptr);
    EXPECT_TRUE(set_key(file, LONG_MSEC));
    EXPECT_EQ(dir.read("tool.ini"), "[a]\r\nx=2\r\n");
    CloseHandle(mutex);
}
