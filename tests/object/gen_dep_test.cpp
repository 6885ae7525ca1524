#include "gen_dep_sys.h"

#include "gen/object/gen_dep_registry.h"
#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

using Uids = std::vector<unsigned>;

static_assert(std::is_same_v<GEN_DEP::UID, unsigned>);

// Addresses of a test, and the ids that were called back about them. What is left at the end of a test is removed: the
// registry is one in the process.
class GenDep : public testing::Test
{
protected:
    ~GenDep() override
    {
        for (unsigned const uid : m_uids)
            GEN_DEP::remove_dependency(uid);
    }

    unsigned create(void const *memory, std::function<void(unsigned)> const &callback)
    {
        unsigned const uid = GEN_DEP::create_dependency(memory, callback);
        m_uids.push_back(uid);
        return uid;
    }
    // With a callback that notes its id.
    unsigned create(void const *memory)
    {
        return create(memory, [this](unsigned uid) { m_called.push_back(uid); });
    }
    void remove(unsigned uid)
    {
        GEN_DEP::remove_dependency(uid);
        m_uids.erase(std::find(m_uids.begin(), m_uids.end(), uid));
    }
    // The ids called back in one pass.
    Uids pass(void const *memory)
    {
        m_called.clear();
        GEN_DEP::memory_is_being_invalidated(memory);
        return m_called;
    }
    static bool is_safe(void const *memory) { return GEN_DEP::memory_is_now_safe_to_invalidate(memory); }

    char m_memory[3] = {};
    void const *const m_a = &m_memory[0];
    void const *const m_b = &m_memory[1];
    Uids m_called;

private:
    Uids m_uids;
};

} // namespace

TEST_F(GenDep, KnowsNothingOfAnAddressNeverRegistered)
{
    EXPECT_THAT(pass(m_a), IsEmpty());
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, RemovesNothingForTheIdOfNoDependency)
{
    create(m_a);
    GEN_DEP::remove_dependency(0);
    EXPECT_FALSE(is_safe(m_a));
}

TEST_F(GenDep, GivesAscendingIdsThatAreNeverUsedAgain)
{
    unsigned const first = create(m_a);
    EXPECT_GE(first, 1U);
    EXPECT_EQ(create(m_b), first + 1);
    remove(first + 1);
    remove(first);
    EXPECT_EQ(create(m_a), first + 2);
}

TEST_F(GenDep, CallsTheDependantsOfAnAddressInTheOrderOfTheirCreation)
{
    unsigned const first = create(m_a);
    unsigned const other = create(m_b);
    unsigned const second = create(m_a);
    unsigned const third = create(m_a);
    EXPECT_THAT(pass(m_a), ElementsAre(first, second, third));
    EXPECT_THAT(pass(m_b), ElementsAre(other));
    remove(second);
    EXPECT_THAT(pass(m_a), ElementsAre(first, third));
    unsigned const fourth = create(m_a);
    EXPECT_THAT(pass(m_a), ElementsAre(first, third, fourth));
}

TEST_F(GenDep, KeepsWhatDoesNotRemoveItself)
{
    unsigned const uid = create(m_a);
    EXPECT_THAT(pass(m_a), ElementsAre(uid));
    EXPECT_FALSE(is_safe(m_a));
    EXPECT_THAT(pass(m_a), ElementsAre(uid)) << "called by the next pass again";
}

TEST_F(GenDep, IsSafeOnceAllHaveGone)
{
    unsigned const first = create(m_a);
    unsigned const second = create(m_a);
    remove(first);
    EXPECT_FALSE(is_safe(m_a));
    EXPECT_FALSE(is_safe(m_a)) << "asking changes nothing";
    remove(second);
    EXPECT_TRUE(is_safe(m_a));
    EXPECT_THAT(pass(m_a), IsEmpty());
    EXPECT_THAT(m_called, IsEmpty()) << "asking calls nobody";
}

TEST_F(GenDep, TakesNullForAnAddressLikeAnyOther)
{
    unsigned const uid = create(nullptr);
    EXPECT_THAT(pass(nullptr), ElementsAre(uid));
    EXPECT_FALSE(is_safe(nullptr));
    EXPECT_TRUE(is_safe(m_a));
    remove(uid);
    EXPECT_TRUE(is_safe(nullptr));
}

TEST_F(GenDep, HoldsACopyOfTheCallbackUntilItsRemoval)
{
    auto const held = std::make_shared<int>(0);
    std::function<void(unsigned)> callback = [held](unsigned) { ++*held; };
    unsigned const uid = create(m_a, callback);
    callback = nullptr;
    EXPECT_EQ(held.use_count(), 2);
    pass(m_a);
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 2) << "the copies of the pass are gone";
    EXPECT_FALSE(is_safe(m_a));
    EXPECT_EQ(held.use_count(), 2) << "and so are those of the question";
    remove(uid);
    EXPECT_EQ(held.use_count(), 1);
}

namespace {

struct CopyCounter
{
    int *copies;

    explicit CopyCounter(int *count) : copies(count) {}
    CopyCounter(CopyCounter const &other) : copies(other.copies) { ++*copies; }
    CopyCounter &operator=(CopyCounter const &) = delete;
    void operator()(unsigned) const {}
};

} // namespace

TEST_F(GenDep, CopiesTheLiveCallbacksForEveryQuestion)
{
    int copies = 0;
    std::function<void(unsigned)> const callback = CopyCounter(&copies);
    create(m_a, callback);
    remove(create(m_a, callback));
    copies = 0;
    pass(m_a);
    EXPECT_EQ(copies, 1);
    EXPECT_FALSE(is_safe(m_a));
    EXPECT_EQ(copies, 2);
}

// The calls that a callback may make.

TEST_F(GenDep, LetsCallbacksRemoveThemselves)
{
    Uids called;
    auto const held = std::make_shared<int>(0);
    for (int i = 0; i < 3; ++i)
        GEN_DEP::create_dependency(m_a, [&called, held, values = std::vector<int>(100, 7)](unsigned uid) {
            GEN_DEP::remove_dependency(uid);
            called.push_back(uid);
            *held += values.back(); // captures live on after the removal
        });
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_EQ(called.size(), 3U);
    EXPECT_EQ(*held, 21);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, CallsWhatAnEarlierCallbackRemoved)
{
    Uids uids;
    Uids called;
    uids.push_back(GEN_DEP::create_dependency(m_a, [&](unsigned uid) {
        called.push_back(uid);
        for (unsigned const each : uids)
            GEN_DEP::remove_dependency(each);
        EXPECT_TRUE(is_safe(m_a)) << "both have gone";
    }));
    auto held = std::make_shared<int>(0);
    uids.push_back(GEN_DEP::create_dependency(m_a, [&called, held](unsigned uid) {
        called.push_back(uid);
        ++*held;
    }));
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_EQ(called, uids) << "the second runs still, with an id that is gone";
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, LetsCallbacksRemoveOthersThatRanAndThoseOfOtherAddresses)
{
    unsigned const first = GEN_DEP::create_dependency(m_a, [](unsigned) {});
    unsigned const elsewhere = GEN_DEP::create_dependency(m_b, [](unsigned) {});
    unsigned const second = create(m_a, [&](unsigned) {
        GEN_DEP::remove_dependency(first);
        GEN_DEP::remove_dependency(elsewhere);
    });
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_FALSE(is_safe(m_a));
    EXPECT_TRUE(is_safe(m_b));
    remove(second);
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, DoesNotCallWhatACallbackCreates)
{
    unsigned created = 0;
    unsigned const uid = GEN_DEP::create_dependency(m_a, [&](unsigned self) {
        created = create(m_a);
        GEN_DEP::remove_dependency(self);
    });
    EXPECT_THAT(pass(m_a), IsEmpty());
    EXPECT_EQ(created, uid + 1);
    EXPECT_FALSE(is_safe(m_a)) << "the new one counts";
    EXPECT_THAT(pass(m_a), ElementsAre(created)) << "and is called by the next pass";
    remove(created);
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, LetsACallbackCreateSoManyThatTheTablesGrow)
{
    Uids called;
    for (int i = 0; i < 2; ++i)
        create(m_a, [&](unsigned uid) {
            called.push_back(uid);
            for (int k = 0; k < 1000; ++k)
                create(k % 2 == 0 ? m_a : &m_memory[2] + k);
        });
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_EQ(called.size(), 2U);
    EXPECT_THAT(m_called, IsEmpty());
}

TEST_F(GenDep, LetsACallbackBeginAPassOfItsOwn)
{
    Uids called;
    int depth = 0;
    unsigned first = 0, inner = 0;
    first = create(m_a, [&](unsigned uid) {
        called.push_back(uid);
        if (++depth > 1)
            return;
        inner = create(m_a, [&](unsigned self) { called.push_back(self); });
        GEN_DEP::memory_is_being_invalidated(m_a); // this pass has the new one
        called.push_back(0);
    });
    unsigned const second = create(m_a, [&](unsigned uid) { called.push_back(uid); });
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_THAT(called, ElementsAre(first, first, second, inner, 0U, second)) << "the outer pass goes on as it began";
}

TEST_F(GenDep, LetsACallbackBeginAPassAboutAnotherAddressAndAsk)
{
    unsigned const elsewhere = create(m_b);
    bool was_safe = true;
    create(m_a, [&](unsigned) {
        GEN_DEP::memory_is_being_invalidated(m_b);
        was_safe = is_safe(m_a) || is_safe(m_b);
    });
    EXPECT_THAT(pass(m_a), ElementsAre(elsewhere));
    EXPECT_FALSE(was_safe);
}

TEST_F(GenDep, LeavesThePassAtAnException)
{
    auto const held = std::make_shared<int>(0);
    unsigned const first = create(m_a);
    unsigned const throwing = create(m_a, [held](unsigned) { throw std::runtime_error("no"); });
    unsigned const third = create(m_a);
    EXPECT_THROW(GEN_DEP::memory_is_being_invalidated(m_a), std::runtime_error);
    EXPECT_THAT(m_called, ElementsAre(first)) << "those after it don't run";
    EXPECT_EQ(held.use_count(), 2) << "the copies of the pass are released";
    EXPECT_FALSE(is_safe(m_a));
    remove(throwing);
    EXPECT_THAT(pass(m_a), ElementsAre(first, third)) << "the registry is as it was";
}

TEST_F(GenDep, KeepsWhatWasDoneBeforeAnException)
{
    unsigned created = 0;
    GEN_DEP::create_dependency(m_a, [&](unsigned self) {
        created = create(m_a);
        GEN_DEP::remove_dependency(self);
        throw 5;
    });
    EXPECT_THROW(GEN_DEP::memory_is_being_invalidated(m_a), int);
    EXPECT_THAT(pass(m_a), ElementsAre(created));
}

TEST_F(GenDep, TakesAnEmptyCallbackThatFailsWhenItIsCalled)
{
    unsigned const first = create(m_a);
    unsigned const empty = create(m_a, nullptr);
    unsigned const third = create(m_a);
    EXPECT_FALSE(is_safe(m_a));
    m_called.clear();
    EXPECT_THROW(GEN_DEP::memory_is_being_invalidated(m_a), std::bad_function_call);
    EXPECT_THAT(m_called, ElementsAre(first));
    remove(empty);
    EXPECT_THAT(pass(m_a), ElementsAre(first, third));
}

TEST_F(GenDep, GoesOnWhenACallbackCannotBeCopied)
{
    struct Uncopyable
    {
        bool *throws;

        explicit Uncopyable(bool *when) : throws(when) {}
        Uncopyable(Uncopyable const &other) : throws(other.throws)
        {
            if (*throws)
                throw std::runtime_error("no copy");
        }
        Uncopyable &operator=(Uncopyable const &) = delete;
        void operator()(unsigned) const {}
    };
    bool throws = false;
    std::function<void(unsigned)> const callback = Uncopyable(&throws);
    unsigned const first = create(m_b, callback);
    throws = true;
    EXPECT_THROW(GEN_DEP::create_dependency(m_a, callback), std::runtime_error);
    EXPECT_TRUE(is_safe(m_a));
    EXPECT_THROW(GEN_DEP::memory_is_being_invalidated(m_b), std::runtime_error);
    EXPECT_THROW(GEN_DEP::memory_is_now_safe_to_invalidate(m_b), std::runtime_error);
    throws = false;
    EXPECT_FALSE(is_safe(m_b));
    EXPECT_EQ(create(m_a), first + 1) << "the failed one used up no id";
}

namespace {

// Holds a dependency of its own for as long as it lives, and so does each copy.
struct Dependant
{
    static int s_count; // alive
    static int s_calls;

    void const *memory;
    unsigned uid;

    explicit Dependant(void const *address)
        : memory(address), uid(GEN_DEP::create_dependency(memory, [](unsigned) { ++s_calls; }))
    {
        ++s_count;
    }
    Dependant(Dependant const &other) : Dependant(other.memory) {}
    Dependant &operator=(Dependant const &) = delete;
    ~Dependant()
    {
        GEN_DEP::remove_dependency(uid);
        --s_count;
    }
    void operator()(unsigned) const {}
};
int Dependant::s_count = 0;
int Dependant::s_calls = 0;

} // namespace

TEST_F(GenDep, BearsCallbacksThatRegisterWhenTheyAreCopiedAndRemoveWhenTheyGo)
{
    unsigned const uid = GEN_DEP::create_dependency(m_a, Dependant(m_a));
    int const count = Dependant::s_count;
    EXPECT_GT(count, 0);
    GEN_DEP::memory_is_being_invalidated(m_a);
    EXPECT_EQ(Dependant::s_calls, count) << "those that the pass itself made aren't called";
    EXPECT_EQ(Dependant::s_count, count);
    EXPECT_FALSE(is_safe(m_a));
    GEN_DEP::remove_dependency(uid);
    EXPECT_EQ(Dependant::s_count, 0);
    EXPECT_TRUE(is_safe(m_a));
}

TEST_F(GenDep, ServesThreadsThatTakeTurns)
{
    std::mutex mutex;
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            for (int k = 0; k < 100; ++k) {
                std::lock_guard<std::mutex> const lock(mutex);
                GEN_DEP::create_dependency(m_a, [](unsigned uid) { GEN_DEP::remove_dependency(uid); });
                if (k % 10 == 9)
                    GEN_DEP::memory_is_being_invalidated(m_a);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_TRUE(is_safe(m_a));
}

// A registry of the test's own.

TEST(GenDepRegistry, BeginsWithOne)
{
    GEN_DEP_REGISTRY registry;
    EXPECT_EQ(registry.create_dependency(nullptr, nullptr), 1U);
    EXPECT_EQ(registry.create_dependency(nullptr, nullptr), 2U);
}

TEST(GenDepRegistry, RemovesNothingWhileNothingWasCreated)
{
    GEN_DEP_REGISTRY registry;
    registry.remove_dependency(0);
    EXPECT_TRUE(registry.memory_is_now_safe_to_invalidate(nullptr));
}

namespace {

constexpr unsigned LARGEST = std::numeric_limits<unsigned>::max();

void print_call(unsigned uid)
{
    std::fprintf(stderr, "called %u;", uid);
}

struct FaultCase
{
    char const *what;
    void (*fault)();
    char const *text;
};
constexpr FaultCase FAULT_CASES[] = {
    {"an unknown id", [] { GEN_DEP::remove_dependency(12345); }, "dependency_exists( uid )"},
    {"an id twice",
     [] {
         unsigned const uid = GEN_DEP::create_dependency(nullptr, print_call);
         GEN_DEP::remove_dependency(uid);
         GEN_DEP::remove_dependency(uid);
     },
     "dependency_exists( uid )"},
    {"an id that another callback removed",
     [] {
         unsigned second = 0;
         GEN_DEP::create_dependency(nullptr, [&](unsigned) { GEN_DEP::remove_dependency(second); });
         second = GEN_DEP::create_dependency(nullptr, [](unsigned uid) { GEN_DEP::remove_dependency(uid); });
         GEN_DEP::memory_is_being_invalidated(nullptr);
     },
     "dependency_exists( uid )"},
    {"the largest id", [] { GEN_DEP_REGISTRY(LARGEST).create_dependency(nullptr, print_call); },
     "my_uid< std::numeric_limits<UID>::max()"},
    {"the id after the last one",
     [] {
         GEN_DEP_REGISTRY registry(LARGEST - 1);
         registry.create_dependency(nullptr, print_call);
         registry.create_dependency(nullptr, print_call);
     },
     "my_uid< std::numeric_limits<UID>::max()"},
};

class GenDepDeathTest : public testing::Test
{
protected:
    GenDepDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// An explicit instantiation may name private members.
unsigned &next_uid_of(GEN_DEP_REGISTRY &registry);
template <auto NEXT_UID>
struct Opened
{
    friend unsigned &next_uid_of(GEN_DEP_REGISTRY &registry) { return registry.*NEXT_UID; }
};
template struct Opened<&GEN_DEP_REGISTRY::m_next_uid>;

using UidsOfMemory = std::unordered_map<void const *, Uids>;
UidsOfMemory &uids_of_memory_of(GEN_DEP_REGISTRY &registry);
template <auto UIDS_OF_MEMORY>
struct OpenedUids
{
    friend UidsOfMemory &uids_of_memory_of(GEN_DEP_REGISTRY &registry) { return registry.*UIDS_OF_MEMORY; }
};
template struct OpenedUids<&GEN_DEP_REGISTRY::m_uids_of_memory>;

} // namespace

TEST(GenDepRegistry, KeepsTheIdsOfAnAddressForGood)
{
    GEN_DEP_REGISTRY registry;
    for (int i = 0; i < 3; ++i)
        registry.remove_dependency(registry.create_dependency(nullptr, print_call));
    EXPECT_TRUE(registry.memory_is_now_safe_to_invalidate(nullptr));
    registry.memory_is_being_invalidated(&registry);
    EXPECT_THAT(uids_of_memory_of(registry), ElementsAre(Pair(nullptr, ElementsAre(1U, 2U, 3U))))
        << "a question makes no entry";
}

TEST_F(GenDepDeathTest, EndsTheProcessAtAMisuse)
{
    for (FaultCase const &c : FAULT_CASES) {
        SCOPED_TRACE(c.what);
        EXPECT_EXIT(c.fault(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_source(c.text, "gen/gen_dep_registry.h"));
    }
}

TEST_F(GenDepDeathTest, NeverGivesOutAnIdThatIsThere)
{
    GEN_DEP_REGISTRY registry;
    unsigned const uid = registry.create_dependency(nullptr, print_call);
    next_uid_of(registry) = uid;
    EXPECT_EXIT(registry.create_dependency(nullptr, print_call), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_source("!dependency_exists( my_uid )", "gen/gen_dep_registry.h"));
}

TEST(GenDepRegistry, GivesOutTheLastIdBelowTheLargest)
{
    GEN_DEP_REGISTRY registry(LARGEST - 1);
    unsigned const uid = registry.create_dependency(nullptr, print_call);
    EXPECT_EQ(uid, LARGEST - 1);
    EXPECT_FALSE(registry.memory_is_now_safe_to_invalidate(nullptr));
    registry.remove_dependency(uid);
    EXPECT_TRUE(registry.memory_is_now_safe_to_invalidate(nullptr));
}

// A process of its own: nothing has been created yet.
TEST_F(GenDepDeathTest, MayBeginWithAnyCall)
{
    void (*const FIRST_CALLS[])() = {
        [] { GEN_DEP::remove_dependency(0); },
        [] { GEN_DEP::memory_is_being_invalidated(nullptr); },
        [] { print_call(GEN_DEP::memory_is_now_safe_to_invalidate(nullptr) ? 0 : LARGEST); },
    };
    for (auto const &first_call : FIRST_CALLS)
        EXPECT_EXIT(
            {
                first_call();
                print_call(GEN_DEP::create_dependency(nullptr, print_call));
                std::exit(0);
            },
            ExitedWithCode(0), HasSubstr("called 1;"));
}

// At exit the registry releases its callbacks, and it may be called until the very end.

namespace {

struct PrintsItsEnd
{
    ~PrintsItsEnd()
    {
        unsigned const uid = GEN_DEP::create_dependency(this, print_call);
        GEN_DEP::memory_is_being_invalidated(this);
        GEN_DEP::remove_dependency(12345);
        std::fprintf(stderr, "released: id %u, safe %d;", uid, GEN_DEP::memory_is_now_safe_to_invalidate(this));
    }
};

} // namespace

TEST_F(GenDepDeathTest, ReleasesCallbacksAtExitWhichMayCallBack)
{
    EXPECT_EXIT(
        {
            GEN_DEP::create_dependency(nullptr, [held = std::make_shared<PrintsItsEnd>()](unsigned) {});
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("released: id 0, safe 1;"));
}

TEST_F(GenDepDeathTest, IsThereInExitHandlersRegisteredAfterItsFirstUse)
{
    EXPECT_EXIT(
        {
            GEN_DEP::create_dependency(nullptr, print_call);
            std::atexit([] {
                GEN_DEP::memory_is_being_invalidated(nullptr);
                std::fprintf(stderr, "safe %d;", GEN_DEP::memory_is_now_safe_to_invalidate(nullptr));
            });
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("called 1;safe 0;"));
}
