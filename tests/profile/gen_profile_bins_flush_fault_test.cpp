// A fault that is found while the buffer is flushed before another event: in a customer build that event has no effect.
#include "gen_flow_sys.h"
#include "tests/support/profile_bins.h"

using testing::ElementsAre;
using testing::ExitedWithCode;

class GenProfileBinsFlushFaultDeathTest : public ProfileBinsTest
{
protected:
    // Leaves a fault in the buffer, after an open.
    void start_with_fault()
    {
        start();
        GEN_PROFILE_BINS::open("T", "A", IMMEDIATE);
        m_current = gen_profile_bin_get_current_bin();
        GEN_PROFILE_BINS::close(nullptr);
        forget();
        GEN_PROFILE_BINS::open("T", "A", PLAIN);
        GEN_PROFILE_BINS::close("wrong");
    }

    // The state after the calls of the fault itself.
    void expect_no_effect_after_the_fault()
    {
        EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended"));
        EXPECT_THAT(m_messages.lines(), ElementsAre("Error: trying to close wrong but open bin is Fitter/A"));
        EXPECT_EQ(gen_profile_bin_get_current_bin(), m_current);
    }

    GEN_PROFILE_BIN const *m_current = nullptr; // when the fault is found
};

TEST_F(GenProfileBinsFlushFaultDeathTest, ReachesNothingAfterIt)
{
    struct Case
    {
        char const *name;
        void (*call)();
    };
    constexpr Case CASES[] = {
        {"immediate open", [] { GEN_PROFILE_BINS::open("T", "B", ANNOUNCED); }},
        {"buffered open", [] { GEN_PROFILE_BINS::open("T", "B", OTHER_PLAIN); }},
        {"ignoring", [] { GEN_PROFILE_BINS::open("T", "B", 0); }},
    };
    start_with_fault();
    if (!gen_debug_is_customer_build()) {
        for (Case const &c : CASES)
            EXPECT_EXIT(c.call(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("Can't close bin")) << c.name;
        return;
    }
    for (Case const &c : CASES) { // only the first finds the fault
        SCOPED_TRACE(c.name);
        c.call();
        expect_no_effect_after_the_fault();
    }
}

TEST_F(GenProfileBinsFlushFaultDeathTest, ReachesNoneOfTheLaterEventsInTheBuffer)
{
    start_with_fault();
    GEN_PROFILE_BINS::open("T", "B", PLAIN);
    GEN_PROFILE_BINS::close(nullptr);
    if (!gen_debug_is_customer_build()) {
        EXPECT_EXIT(GEN_PROFILE_BINS::open("T", "C", IMMEDIATE), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_bins("Can't close bin"));
        return;
    }
    GEN_PROFILE_BINS::open("T", "C", IMMEDIATE);
    expect_no_effect_after_the_fault();
}
