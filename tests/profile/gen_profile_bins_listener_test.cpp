// Listeners of the profile bins: when they are called, and what they see of the tree then. The library's objects are in
// the test itself, which has no other way to register.
#include "gen/profile/gen_profile_bins_listener.h"

#include "gen/profile/gen_profile_bins_bin.h"
#include "tests/support/profile_bins.h"
#include "tests/support/temp_dir.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string name_of(GEN_PB_IMPL const *bin)
{
    return bin == nullptr ? "none" : bin->m_name;
}

char const *type_of(GEN_PB_EVENT const &event)
{
    return event.m_type == GEN_PB_EVENT_OPEN ? "open" : "close";
}

// Writes its calls into a list that it may share with others.
class Recorder final : public GEN_PB_LISTENER
{
public:
    explicit Recorder(std::vector<std::string> &calls, std::string prefix = {})
        : m_calls(calls), m_prefix(std::move(prefix))
    {
    }

    // "open Moves (1) in Placer": the name, the count, and the current bin.
    void on_open(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override
    {
        EXPECT_EQ(event.m_type, GEN_PB_EVENT_OPEN);
        add("open " + bin.m_name + " (" + std::to_string(bin.m_count) + ") in " +
            name_of(GEN_PB_IMPL::get_current_bin()));
    }

    // "close Moves after 5 ns in Moves": the name, the CPU time of all intervals, and the current bin.
    void on_close(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override
    {
        EXPECT_EQ(event.m_type, GEN_PB_EVENT_CLOSE);
        add("close " + bin.m_name + " after " + std::to_string(bin.m_total.m_values[GEN_PB_CPU]) + " ns in " +
            name_of(GEN_PB_IMPL::get_current_bin()));
    }

    void on_step(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override
    {
        add("step " + gen_pb_step(bin) + " " + type_of(event));
    }

    // "complete tool: Placer Router": the name of the run, and the bins below the root.
    void on_complete(GEN_PB_IMPL const &root, char const *name) override
    {
        EXPECT_EQ(&root, GEN_PB_IMPL::get_root_bin());
        std::string call = std::string("complete ") + name + ':';
        for (GEN_PB_IMPL const *child : root.m_children)
            call += ' ' + child->m_name;
        add(call);
    }

    void on_end(char const *name) override
    {
        add(std::string("end ") + name + ", root " + name_of(GEN_PB_IMPL::get_root_bin()));
    }

private:
    void add(std::string const &call) { m_calls.push_back(m_prefix + call); }

    std::vector<std::string> &m_calls;
    std::string m_prefix;
};

class GenProfileBinsListener : public ProfileBinsTest
{
protected:
    // The calls since the last use of this function.
    std::vector<std::string> calls() { return std::exchange(m_calls, {}); }

    std::vector<std::string> m_calls;
    Recorder m_recorder{m_calls};
};

} // namespace

TEST_F(GenProfileBinsListener, IsCalledWhenAnEventReachesTheTree)
{
    start();
    gen_pb_listen_to_bins(m_recorder);
    GEN_PROFILE_BINS::open("T", "Placer", IMMEDIATE);
    EXPECT_THAT(calls(), ElementsAre("open Placer (1) in Fitter"));
    pass_time(/*cpu_sec=*/1, /*wall_sec=*/1);
    GEN_PROFILE_BINS::close("Placer");
    EXPECT_THAT(calls(), ElementsAre("close Placer after 1000000000 ns in Placer"));
    GEN_PROFILE_BINS::open("T", "Placer", PLAIN);
    pass_time(/*cpu_sec=*/2, /*wall_sec=*/2);
    GEN_PROFILE_BINS::close("Placer");
    EXPECT_THAT(calls(), IsEmpty()); // both wait in the buffer
    GEN_PROFILE_BINS::open("T", "Router", IMMEDIATE);
    EXPECT_THAT(calls(), ElementsAre("open Placer (2) in Fitter", "close Placer after 3000000000 ns in Placer",
                                     "open Router (1) in Fitter"));
}

TEST_F(GenProfileBinsListener, IsCalledForAnonymousBinsButNotForNestedOrIgnoredOpens)
{
    start();
    gen_pb_listen_to_bins(m_recorder);
    GEN_PROFILE_BINS::open("T", "", IMMEDIATE);
    GEN_PROFILE_BINS::close(nullptr);
    EXPECT_THAT(calls(), ElementsAre("open  (1) in Fitter", "close  after 0 ns in "));
    GEN_PROFILE_BINS::open("T", "Fitter", IMMEDIATE); // inside itself
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::open("T", "Placer", 0);
    GEN_PROFILE_BINS::open("T", "Moves", IMMEDIATE);
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::close(nullptr);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GenProfileBinsListener, IsCalledForAStepAfterItsOpenAndClose)
{
    start();
    gen_pb_listen_to_bins(m_recorder);
    GEN_PROFILE_BINS::open_with_user_tag("T", "Placer", IMMEDIATE, /*tag=*/nullptr, "Placement");
    EXPECT_THAT(calls(), ElementsAre("open Placer (1) in Fitter", "step 1 open"));
    GEN_PROFILE_BINS::open_with_user_tag("T", "Moves", IMMEDIATE, /*tag=*/nullptr, "Moves");
    GEN_PROFILE_BINS::close(nullptr);
    EXPECT_THAT(calls(), ElementsAre("open Moves (1) in Placer", "step 1.1 open", "close Moves after 0 ns in Moves",
                                     "step 1.1 close"));
}

TEST_F(GenProfileBinsListener, IsCalledOnceThoughRegisteredTwiceAndNotAfterItsRemoval)
{
    start();
    gen_pb_listen_to_bins(m_recorder);
    gen_pb_listen_to_bins(m_recorder);
    GEN_PROFILE_BINS::open("T", "Placer", IMMEDIATE);
    EXPECT_THAT(calls(), ElementsAre("open Placer (1) in Fitter"));
    gen_pb_ignore_bins(m_recorder);
    gen_pb_ignore_bins(m_recorder);
    GEN_PROFILE_BINS::close(nullptr);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GenProfileBinsListener, IsCalledAtEachEndBeforeAndAfterTheBinsAreDeleted)
{
    start();
    gen_pb_listen_to_end(m_recorder);
    gen_pb_listen_to_end(m_recorder);
    GEN_PROFILE_BINS::finalize("first", /*close_root=*/true);
    EXPECT_THAT(calls(), ElementsAre("complete first:", "end first, root none"));
    start();
    GEN_PROFILE_BINS::open("T", "Placer", IMMEDIATE);
    GEN_PROFILE_BINS::close("Placer");
    GEN_PROFILE_BINS::finalize("second", /*close_root=*/true);
    EXPECT_THAT(calls(), ElementsAre("complete second: Placer", "end second, root none"));
}

TEST_F(GenProfileBinsListener, SeesTheTreeBeforeTheTaggedReportChangesIt)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    gen_pb_listen_to_end(m_recorder);
    GEN_PROFILE_BINS::open_with_tag("T", "Placer", IMMEDIATE, "tag");
    GEN_PROFILE_BINS::close(nullptr);
    forget();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(calls(), ElementsAre("complete tool: Placer", "end tool, root none"));
    EXPECT_NE(directory.read("profile_bins_tagged_tool.log"), "");
}

TEST_F(GenProfileBinsListener, OpensNoBinWhenTheTreeIsComplete)
{
    class Opener final : public GEN_PB_LISTENER
    {
        void on_complete(GEN_PB_IMPL const &root, char const * /*name*/) override
        {
            EXPECT_EQ(GEN_PROFILE_BINS::open("T", "late", IMMEDIATE), nullptr);
            GEN_PROFILE_BINS::close(nullptr);
            EXPECT_TRUE(root.m_children.empty());
        }
    } opener;
    start();
    gen_pb_listen_to_end(opener);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_EQ(GEN_PB_IMPL::get_root_bin(), nullptr);
}

TEST_F(GenProfileBinsListener, IsCalledAtTheEndBeforeThoseThatRegisteredEarlier)
{
    Recorder early(m_calls, "early: ");
    Recorder late(m_calls, "late: ");
    start();
    gen_pb_listen_to_end(early);
    gen_pb_listen_to_end(late);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(calls(), ElementsAre("late: complete tool:", "early: complete tool:", "late: end tool, root none",
                                     "early: end tool, root none"));
}

TEST_F(GenProfileBinsListener, IsCalledForBinsInTheOrderOfRegistration)
{
    Recorder early(m_calls, "early: ");
    Recorder late(m_calls, "late: ");
    start();
    gen_pb_listen_to_bins(early);
    gen_pb_listen_to_bins(late);
    GEN_PROFILE_BINS::open("T", "Placer", IMMEDIATE);
    EXPECT_THAT(calls(), ElementsAre("early: open Placer (1) in Fitter", "late: open Placer (1) in Fitter"));
}
