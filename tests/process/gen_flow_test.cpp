#include "gen_flow_sys.h"

#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/debugger.h"
#include "tests/support/environment.h"
#include "tests/support/internal_error.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ExitedWithCode;

namespace {

constexpr char const *SET_TWICE = "kmap_legacy_bridge cannot be set more than once. (Unless it has been unset.)";
constexpr char const *NOT_SET = "kmap_legacy_bridge has not been set with gen_set_kmap_legacy_bridge()!";

} // namespace

TEST(GenFlowBtclLoad, FollowsTheLastValue)
{
    EXPECT_FALSE(gen_is_btcl_load());
    for (bool const value : {true, true, false, true, false}) {
        gen_set_btcl_load(value);
        EXPECT_EQ(gen_is_btcl_load(), value);
    }
}

TEST(GenFlowBridge, ReturnsTheOppositeOfTheBridgeValue)
{
    for (bool const value : {true, false, true}) {
        gen_set_kmap_legacy_bridge(value);
        EXPECT_EQ(gen_is_kalvern_syn(), !value);
        EXPECT_EQ(gen_is_kalvern_syn(), !value) << "asked again";
        gen_unset_kmap_legacy_bridge();
    }
}

TEST(GenFlowBridge, CanBeTakenBackBeforeItIsGiven)
{
    gen_unset_kmap_legacy_bridge();
    gen_unset_kmap_legacy_bridge();
    gen_set_kmap_legacy_bridge(false);
    EXPECT_TRUE(gen_is_kalvern_syn());
}

TEST(GenFlowBridgeDeathTest, AskingBeforeAnySetIsAnInternalError)
{
    EXPECT_EXIT(gen_is_kalvern_syn(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(NOT_SET, "gen_flow"));
}

TEST(GenFlowBridgeDeathTest, AskingAfterAnUnsetIsAnInternalError)
{
    gen_set_kmap_legacy_bridge(true);
    gen_unset_kmap_legacy_bridge();
    EXPECT_EXIT(gen_is_kalvern_syn(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(NOT_SET, "gen_flow"));
}

TEST(GenFlowBridgeDeathTest, SettingTwiceIsAnInternalErrorAlsoWithTheSameValue)
{
    for (bool const first : {false, true})
        for (bool const second : {false, true}) {
            SCOPED_TRACE(testing::Message() << first << " then " << second);
            gen_set_kmap_legacy_bridge(first);
            EXPECT_EXIT(gen_set_kmap_legacy_bridge(second), ExitedWithCode(INTERNAL_ERROR_STATUS),
                        dies_with(SET_TWICE, "gen_flow"));
            gen_unset_kmap_legacy_bridge();
        }
}

TEST(GenFlowUtstMode, StaysOnceSet)
{
    EXPECT_FALSE(gen_is_utst_mode());
    gen_set_utst_mode();
    EXPECT_TRUE(gen_is_utst_mode());
    gen_set_utst_mode();
    EXPECT_TRUE(gen_is_utst_mode());
}

TEST(GenDebug, LearnsFromTheVersionLibraryWhetherThisIsACustomerBuild)
{
#ifdef ZEL_CUSTOMER_TEST
    EXPECT_TRUE(gen_debug_is_customer_build());
#else
    EXPECT_FALSE(gen_debug_is_customer_build());
#endif
}

// Whether a break is made at all is seen in gen_flow_break_test.
TEST(GenDebug, BreakWithoutADebuggerReturns)
{
    for (char const *const key : {static_cast<char const *>(nullptr), "off", "on"})
        for (bool const swallow : {false, true}) {
            mem_cfg_set("dont_catch_all_exceptions", key);
            EXPECT_NO_THROW(gen_debug_break(swallow)) << (key == nullptr ? "no key" : key) << ' ' << swallow;
        }
}

// Set in the run under a debugger.
constexpr char const *DEBUGGED = "GEN_FLOW_TEST_DEBUGGED";

constexpr char const *OUTPUT = "100% a text\n";

TEST(GenDebug, OutputStaysOffTheStandardStreamsUnlessADebuggerListensThere)
{
    bool const is_heard = std::getenv(DEBUGGED) != nullptr && !ON_WINDOWS;
    CapturedOutput output(StandardStream::OUTPUT);
    CapturedOutput errors(StandardStream::ERROR_OUTPUT);
    gen_debug_output_string(OUTPUT);
    EXPECT_EQ(errors.text(), is_heard ? OUTPUT : "");
    EXPECT_EQ(output.text(), "");
}

TEST(GenDebug, OutputReachesTheDebugger)
{
    Environment const debugged(DEBUGGED, "1");
    DebuggedRun const run = run_under_debugger("--gtest_filter=GenDebug.OutputStays*");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.debug_output, ON_WINDOWS ? OUTPUT : "");
}
