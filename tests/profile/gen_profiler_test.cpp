// The guard of a bin, with receivers of messages that throw although their contract forbids it: the process goes on.
#include "gen_profile_bins_sys.h"

#include "mem_sys.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

int l_messages = 0;

void throw_at_message(MEM_MSG_KIND, char const *, char const *text, void *)
{
    ++l_messages;
    throw std::runtime_error(text);
}

void receive(MEM_MSG_KIND, char const *, char const *, void *) {}

class GenProfiler : public testing::Test
{
protected:
    GenProfiler()
    {
        mem_msg_redirect(receive, nullptr);
        GEN_PROFILE_BINS::initialize("Root", /*primary=*/true, /*debug_messages=*/false);
    }
    ~GenProfiler() override { mem_msg_redirect(nullptr, nullptr); }
};

TEST_F(GenProfiler, LetsNoExceptionOfAMessageOut)
{
    {
        GEN_PROFILER const guard("TST", "A", GEN_PB_FLAG_IMMEDIATE | GEN_PB_FLAG_ANNOUNCE);
        mem_msg_redirect(throw_at_message, nullptr);
    }
    EXPECT_EQ(l_messages, 1);
}

// Each close of a guard adds an event to the buffer, which such a flush leaves empty.
TEST_F(GenProfiler, LetsNoExceptionOfAFlushOut)
{
    {
        GEN_PROFILER const announced("TST", "A", GEN_PB_FLAG_ANNOUNCE);
        mem_msg_redirect(throw_at_message, nullptr);
        for (int k = 0; k < 4; ++k)
            GEN_PROFILER const guard("TST", "B", GEN_PB_FLAG_ANNOUNCE);
    }
    EXPECT_EQ(l_messages, 1);
    {
        GEN_PROFILER const buffered("TST", "C", GEN_PB_FLAG_ANNOUNCE);
    }
    EXPECT_EQ(l_messages, 1) << "two events, which wait for more";
    mem_msg_redirect(receive, nullptr);
    // The close of A was lost with the rest of the buffer.
    EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "D", GEN_PB_FLAG_IMMEDIATE)->get_path(nullptr), "Root/A/D");
}

} // namespace
