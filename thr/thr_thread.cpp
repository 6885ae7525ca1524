#include "thr_sys.h"

#include "sys/os/sys_os_thread.h"
#include "sys/sys_process.h"
#include "thr/os/thr_os.h"

#include <chrono>
#include <cstring>
#include <thread>

std::int64_t thr_thread_self()
{
    return sys_thread_self();
}

void thr_sleep(unsigned milliseconds)
{
    if (milliseconds == 0) {
        thr_os_yield();
        return;
    }
    using Clock = std::chrono::steady_clock;
    Clock::time_point const end = Clock::now() + std::chrono::milliseconds(milliseconds);
    // A timer that counts in ticks may wake the thread too early.
    for (Clock::time_point now = Clock::now(); now < end; now = Clock::now())
        std::this_thread::sleep_for(end - now);
}

void thr_debug_break()
{
    if (sys_is_debugged())
        thr_os_break();
}

void thr_setenv(char const *name, char const *value)
{
    if (name == nullptr || *name == '\0' || std::strchr(name, '=') != nullptr)
        return;
    if (value == nullptr)
        thr_os_unsetenv(name);
    else
        thr_os_setenv(name, value);
}
