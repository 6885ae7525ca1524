// Profile bins over scripted clocks and memory figures.
#ifndef TESTS_SUPPORT_PROFILE_BINS_H
#define TESTS_SUPPORT_PROFILE_BINS_H

#include "gen_profile_bins_sys.h"

#include "tests/support/gen_os_fake.h"
#include "tests/support/internal_error.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Flags of typical opens.
constexpr unsigned PLAIN = GEN_PB_FLAG_RECORD; // waits in the buffer
constexpr unsigned OTHER_PLAIN = 2;            // waits too, after a flush
constexpr unsigned IMMEDIATE = GEN_PB_FLAG_IMMEDIATE;
constexpr unsigned ANNOUNCED = GEN_PB_FLAG_ANNOUNCE | GEN_PB_FLAG_IMMEDIATE;

/// Moves the scripted clocks on, or back.
inline void pass_time(double cpu_sec, double wall_sec)
{
    gen_os_fake_advance(static_cast<std::int64_t>(cpu_sec * 1e6), static_cast<std::int64_t>(wall_sec * 1e7));
}

/// Opens are given and bins are handed out as pointers to const.
inline GEN_PROFILE_BIN &writable(GEN_PROFILE_BIN const *bin)
{
    return *const_cast<GEN_PROFILE_BIN *>(bin);
}

/// Messages go to the standard streams, debug messages too: so that a death test sees them.
inline void show_messages()
{
    mem_msg_redirect(nullptr, nullptr);
    mem_cfg_set("mem_show_debug_messages", "on");
}

/// An internal error of the profile bins with exactly this text.
inline auto dies_in_bins(std::string const &text)
{
    return dies_with(text, "gen_profile_bins*");
}

/// Records all messages, and starts the clocks at times that can't be taken for intervals.
class ProfileBinsTest : public testing::Test
{
protected:
    ProfileBinsTest()
    {
        gen_os_fake_set_frequency(10000000);
        gen_os_fake_set_clocks(/*cpu_usec=*/1000000000, /*ticks=*/70000000000);
        gen_os_fake_set_calendar_msec(1794683027123); // 2026-11-14 19:03:47
    }

    /// Initialises as a process that is not the main one, and forgets the messages and memory calls of it.
    void start(char const *name = "Fitter")
    {
        GEN_PROFILE_BINS::initialize(name, /*primary=*/false, /*debug_messages=*/false);
        forget();
    }

    void forget()
    {
        m_messages.clear();
        mem_fake_clear_log();
    }

    /// The calls of the memory tracker since the last forget().
    static std::vector<std::string> memory_calls() { return mem_fake_log(); }

    MessageRecorder m_messages;
};

#endif
