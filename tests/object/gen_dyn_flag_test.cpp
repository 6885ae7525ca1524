#include "gen_dyn_flag_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr unsigned ALL = 0xffffffff;

unsigned bits_of(GEN_DYN_FLAG const &flag)
{
    static_assert(sizeof flag == sizeof(unsigned));
    unsigned bits;
    std::memcpy(&bits, &flag, sizeof bits);
    return bits;
}

// Notes the bits of each call, and takes them away from the objects.
class Client : public GEN_DYN_FLAG_CLEARER
{
public:
    void clear_flags(GEN_DYN_FLAG const &flag) override
    {
        calls.push_back(bits_of(flag));
        for (GEN_DYN_FLAG &object : objects)
            object.clear_flag(flag);
        if (auto const hook = std::exchange(during_next_call, nullptr))
            hook();
    }

    std::vector<unsigned> calls;
    std::vector<GEN_DYN_FLAG> objects;
    std::function<void()> during_next_call;
};

struct Usage
{
    int used, dirty, clean;

    explicit Usage(GEN_DYN_FLAG_MANAGER const &manager) : used(-1), dirty(-1), clean(-1)
    {
        manager.get_usage_stats(&used, &dirty, &clean);
    }
    std::string text() const
    {
        return std::to_string(used) + "/" + std::to_string(dirty) + "/" + std::to_string(clean);
    }
};

// A manager and its client, with flags "0", "1" ... on the lowest bits and no call of the clearer noted.
struct Flags
{
    explicit Flags(int count = 0) : manager(&client)
    {
        for (int i = 0; i < count; ++i)
            manager.create_flag(std::to_string(i).c_str());
        client.calls.clear();
    }
    unsigned create(char const *name) { return bits_of(manager.create_flag(name)); }
    void destroy(unsigned bits) { manager.destroy_flag(bits); }
    std::string name_of(unsigned bits) const { return manager.get_flag_name(bits); }

    Client client;
    GEN_DYN_FLAG_MANAGER manager;
};

unsigned bit(int position)
{
    return 1U << position;
}

} // namespace

// A plain number.
static_assert(std::is_trivially_copyable_v<GEN_DYN_FLAG> && std::is_standard_layout_v<GEN_DYN_FLAG>);
static_assert(std::is_convertible_v<unsigned, GEN_DYN_FLAG>);
static_assert(std::is_same_v<decltype(std::declval<GEN_DYN_FLAG &>() |= GEN_DYN_FLAG()), GEN_DYN_FLAG>);
static_assert(std::is_same_v<decltype(std::declval<GEN_DYN_FLAG &>().set_flag(GEN_DYN_FLAG())), GEN_DYN_FLAG>);
static_assert(std::is_same_v<decltype(std::declval<GEN_DYN_FLAG &>().clear_flag(GEN_DYN_FLAG())), GEN_DYN_FLAG>);
static_assert(GEN_DYN_FLAG().test_if_zero() && (~GEN_DYN_FLAG(1) | GEN_DYN_FLAG(1)).test_if_all(0xffffffff) &&
                  GEN_DYN_FLAG(6).restricted_to(3).test(2) && GEN_DYN_FLAG(1).set_flag(4).test_if_any(4) &&
                  GEN_DYN_FLAG(5).clear_flag(5).test_if_zero(),
              "constant expressions, also in a caller of the library that exports them");
static_assert(std::is_abstract_v<GEN_DYN_FLAG_CLEARER> && std::has_virtual_destructor_v<GEN_DYN_FLAG_CLEARER>);
static_assert(sizeof(GEN_DYN_FLAG_CLEARER) == sizeof(void *), "no data but the virtual table's address");
static_assert(std::is_copy_constructible_v<Client> && std::is_copy_assignable_v<Client>);
static_assert(!std::is_copy_constructible_v<GEN_DYN_FLAG_MANAGER> && !std::is_copy_assignable_v<GEN_DYN_FLAG_MANAGER>);

TEST(GenDynFlag, HoldsTheBitsGiven)
{
    EXPECT_EQ(bits_of(GEN_DYN_FLAG()), 0U);
    EXPECT_EQ(bits_of(GEN_DYN_FLAG(0x80000001)), 0x80000001U);
    GEN_DYN_FLAG source(5), target;
    target = source;
    EXPECT_EQ(bits_of(target), 5U);
    target = GEN_DYN_FLAG(6);
    EXPECT_EQ(bits_of(target), 6U);
    EXPECT_EQ(bits_of(source), 5U);
}

TEST(GenDynFlag, CombinesEveryPairOfSmallWords)
{
    // Four bits at the bottom and four at the top.
    for (unsigned low_a = 0; low_a < 256; ++low_a)
        for (unsigned low_b = 0; low_b < 256; ++low_b) {
            unsigned const a = low_a >> 4 << 28 | (low_a & 15);
            unsigned const b = low_b >> 4 << 28 | (low_b & 15);
            GEN_DYN_FLAG const first(a), second(b);
            GEN_DYN_FLAG set(a), cleared(a), joined(a);
            ASSERT_EQ(bits_of(first | second), a | b);
            ASSERT_EQ(bits_of(set.set_flag(second)), a | b);
            ASSERT_EQ(bits_of(set), a | b);
            ASSERT_EQ(bits_of(joined |= second), a | b);
            ASSERT_EQ(bits_of(joined), a | b);
            ASSERT_EQ(bits_of(cleared.clear_flag(second)), a & ~b);
            ASSERT_EQ(bits_of(cleared), a & ~b);
            ASSERT_EQ(bits_of(first.restricted_to(second)), a & b);
            ASSERT_EQ(first.test(second), (a & b) != 0) << a << ' ' << b;
            ASSERT_EQ(first.test_if_any(second), (a & b) != 0) << a << ' ' << b;
            ASSERT_EQ(first.test_if_all(second), (a & b) == b) << a << ' ' << b;
            ASSERT_EQ(bits_of(first), a) << "changed by a question";
            ASSERT_EQ(bits_of(second), b) << "changed as an argument";
        }
}

TEST(GenDynFlag, ComplementsAllBits)
{
    for (unsigned bits : {0U, 1U, 0x80000000U, 0x12345678U, ALL})
        EXPECT_EQ(bits_of(~GEN_DYN_FLAG(bits)), bits ^ ALL) << bits;
}

TEST(GenDynFlag, TestsEmptyFlags)
{
    for (unsigned bits : {0U, 1U, ALL}) {
        GEN_DYN_FLAG const flag(bits);
        EXPECT_TRUE(flag.test_if_all(GEN_DYN_FLAG())) << bits;
        EXPECT_FALSE(flag.test_if_any(GEN_DYN_FLAG())) << bits;
        EXPECT_FALSE(flag.test(GEN_DYN_FLAG())) << bits;
        EXPECT_EQ(flag.test_if_zero(), bits == 0) << bits;
    }
}

TEST(GenDynFlag, TakesItselfAsAnArgument)
{
    GEN_DYN_FLAG flag(5);
    EXPECT_EQ(bits_of(flag.set_flag(flag)), 5U);
    EXPECT_EQ(bits_of(flag |= flag), 5U);
    EXPECT_EQ(bits_of(flag.clear_flag(flag)), 0U);
}

TEST(GenDynFlag, GivesCopiesThatAreIndependent)
{
    GEN_DYN_FLAG flag(1);
    flag.set_flag(2).set_flag(4); // the second works on a copy
    EXPECT_EQ(bits_of(flag), 3U);
    (flag |= 8).clear_flag(1);
    EXPECT_EQ(bits_of(flag), 11U);
}

TEST(GenDynFlagManager, WipesEveryWordAtItsStart)
{
    Client client;
    client.objects = {GEN_DYN_FLAG(ALL), GEN_DYN_FLAG(1)};
    {
        GEN_DYN_FLAG_MANAGER manager(&client);
        EXPECT_THAT(client.calls, ElementsAre(ALL));
        EXPECT_EQ(Usage(manager).text(), "0/0/32");
        EXPECT_TRUE(client.objects[0].test_if_zero() && client.objects[1].test_if_zero());
        manager.create_flag("named at the end");
    }
    EXPECT_EQ(client.calls.size(), 1U) << "the destructor calls nobody";
}

TEST(GenDynFlagManager, GivesOutTheLowestCleanBits)
{
    Flags flags;
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(flags.create(std::to_string(i).c_str()), bit(i));
    EXPECT_THAT(flags.client.calls, IsEmpty());
    EXPECT_EQ(Usage(flags.manager).text(), "32/0/0");
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(bits_of(flags.manager.get_named_flag(std::to_string(i).c_str())), bit(i));
}

TEST(GenDynFlagManager, KeepsACopyOfTheName)
{
    Flags flags;
    char name[] = "first";
    flags.create(name);
    name[0] = 'X';
    EXPECT_EQ(flags.name_of(1), "(0x1) first");
    EXPECT_EQ(flags.create(""), 2U) << "an empty name is one";
    EXPECT_EQ(bits_of(flags.manager.get_named_flag("")), 2U);
}

TEST(GenDynFlagManager, ClearsOneBitWhenTheLastOneIsUsedAgain)
{
    Flags flags(32);
    flags.destroy(bit(20));
    EXPECT_THAT(flags.client.calls, IsEmpty()) << "to destroy visits nobody";
    EXPECT_EQ(flags.create("again"), bit(20));
    EXPECT_THAT(flags.client.calls, ElementsAre(bit(20)));
}

TEST(GenDynFlagManager, PrefersCleanBitsAndClearsAllDirtyOnesAtOnce)
{
    Flags flags(30);
    flags.client.objects = {GEN_DYN_FLAG(ALL)};
    flags.destroy(bit(3));
    flags.destroy(bit(7));
    EXPECT_EQ(flags.create("a"), bit(30));
    EXPECT_EQ(flags.create("b"), bit(31));
    EXPECT_THAT(flags.client.calls, IsEmpty());
    EXPECT_EQ(flags.name_of(bit(3) | bit(7) | bit(30)), "(0x40000088) DIRTY | DIRTY | a");

    EXPECT_EQ(flags.create("c"), bit(7)) << "the highest dirty one";
    EXPECT_THAT(flags.client.calls, ElementsAre(bit(3) | bit(7)));
    EXPECT_EQ(bits_of(flags.client.objects[0]), ALL & ~(bit(3) | bit(7)));
    EXPECT_EQ(flags.name_of(bit(3) | bit(7)), "(0x88) BAD_FLAG | c");

    EXPECT_EQ(flags.create("d"), bit(3));
    EXPECT_EQ(flags.client.calls.size(), 1U) << "it was cleared with the other";
}

TEST(GenDynFlagManager, DirtyBitsStayWhileACleanOneIsUsed)
{
    Flags flags(31);
    flags.destroy(bit(0));
    EXPECT_EQ(flags.create("a"), bit(31)) << "not the dirty bit on the way";
    EXPECT_EQ(flags.name_of(1), "(0x1) DIRTY");
    EXPECT_THAT(flags.client.calls, IsEmpty());
}

TEST(GenDynFlagManager, ComparesNamesBelowTheNewBitOnly)
{
    Flags flags(32);
    flags.destroy(bit(5));
    flags.destroy(bit(9));
    EXPECT_EQ(flags.create("new"), bit(9)); // bit 5 is clean now
    EXPECT_EQ(flags.create("31"), bit(5)) << "the name of bit 31 goes unnoticed";
    EXPECT_EQ(bits_of(flags.manager.get_named_flag("31")), bit(5)) << "the lower one is found";
}

TEST(GenDynFlagManager, NamesAnySetOfBits)
{
    struct NameCase
    {
        unsigned bits;
        char const *text;
    };
    constexpr NameCase CASES[] = {
        {0, "(0x0) "},
        {1, "(0x1) f1"},
        {3, "(0x3) f1 | f2"},
        {4, "(0x4) DIRTY"},
        {5, "(0x5) f1 | DIRTY"},
        {8, "(0x8) BAD_FLAG"},
        {0xf, "(0xf) f1 | f2 | DIRTY | BAD_FLAG"},
        {0x80000001, "(0x80000001) f1 | BAD_FLAG"},
        {0xab000000, "(0xab000000) BAD_FLAG | BAD_FLAG | BAD_FLAG | BAD_FLAG | BAD_FLAG"},
    };
    Flags flags;
    for (char const *name : {"f1", "f2", "f3"})
        flags.create(name);
    flags.destroy(bit(2));
    for (NameCase const &c : CASES)
        EXPECT_EQ(flags.name_of(c.bits), c.text);
}

TEST(GenDynFlagManager, CountsDestroyedFlagsAsClean)
{
    Flags flags(5);
    EXPECT_EQ(Usage(flags.manager).text(), "5/0/27");
    flags.destroy(bit(1));
    flags.destroy(bit(4));
    EXPECT_EQ(Usage(flags.manager).text(), "3/0/29");
    flags.create("on bit 5");
    EXPECT_EQ(Usage(flags.manager).text(), "4/0/28");
}

TEST(GenDynFlagManager, TakesAnEmptyFlagForNothing)
{
    Flags flags(1);
    flags.destroy(0);
    EXPECT_EQ(Usage(flags.manager).text(), "1/0/31");
}

TEST(GenDynFlagManager, FindsAFlagAmongEmptySlots)
{
    Flags flags(3);
    flags.destroy(bit(0));
    EXPECT_EQ(bits_of(flags.manager.get_named_flag("2")), bit(2));
}

TEST(GenDynFlagManager, MayBeCalledBackByItsClearer)
{
    Flags flags(32);
    flags.destroy(bit(3));
    flags.destroy(bit(7));
    std::string names, usage;
    unsigned nested = 0;
    flags.client.during_next_call = [&] {
        names = flags.name_of(bit(3) | bit(7));
        usage = Usage(flags.manager).text();
        nested = flags.create("nested");
    };
    EXPECT_EQ(flags.create("outer"), bit(7));
    EXPECT_EQ(names, "(0x88) DIRTY | outer") << "the flag has its name already";
    EXPECT_EQ(usage, "30/1/1") << "a flag on a dirty bit";
    EXPECT_EQ(nested, bit(3));
    EXPECT_THAT(flags.client.calls, ElementsAre(bit(3) | bit(7), bit(3)));
    EXPECT_EQ(Usage(flags.manager).text(), "32/0/0");
}

TEST(GenDynFlagManager, LetsItsClearerDestroyFlags)
{
    Flags flags(32);
    flags.destroy(bit(3));
    flags.destroy(bit(7));
    flags.client.during_next_call = [&] {
        flags.destroy(bit(0));
        flags.destroy(bit(7)); // the one being created
    };
    EXPECT_EQ(flags.create("gone again"), bit(7));
    EXPECT_EQ(flags.name_of(bit(0) | bit(3) | bit(7)), "(0x89) DIRTY | BAD_FLAG | BAD_FLAG");
}

TEST(GenDynFlagManager, KeepsTheFlagWhenTheClearerThrows)
{
    Flags flags(32);
    flags.destroy(bit(3));
    flags.destroy(bit(7));
    flags.client.during_next_call = [] { throw std::runtime_error("no objects"); };
    EXPECT_THROW(flags.create("named"), std::runtime_error);
    EXPECT_EQ(flags.name_of(bit(3) | bit(7)), "(0x88) DIRTY | named");
    EXPECT_EQ(Usage(flags.manager).text(), "30/1/1");

    flags.client.calls.clear();
    flags.manager.destroy_flag(flags.manager.get_named_flag("named"));
    EXPECT_EQ(flags.create("again"), bit(7));
    EXPECT_THAT(flags.client.calls, ElementsAre(bit(3) | bit(7))) << "both bits are dirty still";
}

TEST(GenDynFlag, TestsItselfIntoAFile)
{
    TempDir const dir;
    CurrentDirectory const current(dir.path());
    Flags flags;
    GEN_DYN_FLAG::test_myself_out(&flags.manager);
    std::string const expected = "used=5 dirty= 0 clean=27\n"
                                 "(0x1f) f1 | f2 | f3 | f4 | f5\n"
                                 "(0x11) f1 | f5\n"
                                 "(0xe) f2 | f3 | f4\n"
                                 "used=4 dirty= 0 clean=28\n"
                                 "(0x1f) f1 | f2 | DIRTY | f4 | f5\n"
                                 "used=0 dirty= 0 clean=32\n"
                                 "(0x1f) DIRTY | DIRTY | DIRTY | DIRTY | DIRTY\n";
    EXPECT_EQ(dir.read("gen_dyn_flag_test.txt"), in_text_mode(expected));
    EXPECT_EQ(Usage(flags.manager).text(), "0/0/32");
}

TEST(GenDynFlag, TestsItselfWithoutAFileThatCannotBeWritten)
{
    TempDir const dir;
    std::filesystem::create_directory(dir.path() / "gen_dyn_flag_test.txt");
    CurrentDirectory const current(dir.path());
    Flags flags;
    GEN_DYN_FLAG::test_myself_out(&flags.manager);
    EXPECT_EQ(flags.name_of(0x1f), "(0x1f) DIRTY | DIRTY | DIRTY | DIRTY | DIRTY");
}

namespace {

// The state that a failed operation left, printed in an exit handler.
Flags *l_watched = nullptr;

void print_watched()
{
    std::fprintf(stderr, "left: %s %s calls %zu", Usage(l_watched->manager).text().c_str(),
                 l_watched->name_of(0x11).c_str(), l_watched->client.calls.size());
}

struct FaultCase
{
    char const *what;
    int flag_count;
    std::vector<int> destroyed;
    std::function<void(Flags &)> fault;
    char const *text;
    char const *left;
};

std::vector<FaultCase> fault_cases()
{
    return {
        {"the 33rd flag",
         32,
         {},
         [](Flags &f) { f.create("x%s"); },
         "too many flags, can't create 'x%s'",
         "32/0/0 (0x11) 0 | 4 calls 0"},
        {"a name in a lower slot",
         5,
         {},
         [](Flags &f) { f.create("4"); },
         "flag '4' (0x10) already exists",
         "5/0/27 (0x11) 0 | 4 calls 0"},
        {"a name above a dirty slot",
         32,
         {4, 9},
         [](Flags &f) { f.create("31"); },
         "flag '31' (0x80000000) already exists",
         "30/0/2 (0x11) 0 | DIRTY calls 0"},
        {"no name", 1, {}, [](Flags &f) { f.create(nullptr); }, "name != 0", "1/0/31 (0x11) 0 | BAD_FLAG calls 0"},
        {"two bits",
         5,
         {},
         [](Flags &f) { f.destroy(0x11); },
         "flag 0x11: not a single bit",
         "5/0/27 (0x11) 0 | 4 calls 0"},
        {"all bits",
         5,
         {},
         [](Flags &f) { f.destroy(ALL); },
         "flag 0xffffffff: not a single bit",
         "5/0/27 (0x11) 0 | 4 calls 0"},
        {"a clean slot",
         1,
         {},
         [](Flags &f) { f.destroy(0x80000000); },
         "flag 0x80000000 not found to delete",
         "1/0/31 (0x11) 0 | BAD_FLAG calls 0"},
        {"a dirty slot",
         5,
         {4},
         [](Flags &f) { f.destroy(0x10); },
         "flag 0x10 not found to delete",
         "4/0/28 (0x11) 0 | DIRTY calls 0"},
        {"the name of a destroyed flag",
         5,
         {4},
         [](Flags &f) { f.manager.get_named_flag("4"); },
         "couldn't find flag '4'",
         "4/0/28 (0x11) 0 | DIRTY calls 0"},
        {"a name never given",
         5,
         {},
         [](Flags &f) { f.manager.get_named_flag("five"); },
         "couldn't find flag 'five'",
         "5/0/27 (0x11) 0 | 4 calls 0"},
        {"to look for no name",
         5,
         {},
         [](Flags &f) { f.manager.get_named_flag(nullptr); },
         "couldn't find flag '(null)'",
         "5/0/27 (0x11) 0 | 4 calls 0"},
        {"to count without a place for a count",
         5,
         {},
         [](Flags &f) {
             int count;
             f.manager.get_usage_stats(&count, nullptr, &count);
         },
         "used != 0 && dirty != 0 && clean != 0",
         "5/0/27 (0x11) 0 | 4 calls 0"},
    };
}

class GenDynFlagDeathTest : public testing::Test
{
protected:
    GenDynFlagDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace

TEST_F(GenDynFlagDeathTest, FaultsChangeNothingBeforeTheyEndTheProcess)
{
    for (FaultCase const &c : fault_cases()) {
        SCOPED_TRACE(c.what);
        EXPECT_EXIT(
            {
                Flags flags(c.flag_count);
                for (int const position : c.destroyed)
                    flags.destroy(bit(position));
                l_watched = &flags;
                std::atexit(print_watched);
                c.fault(flags);
            },
            ExitedWithCode(INTERNAL_ERROR_STATUS),
            AllOf(dies_with(c.text, "gen_dyn_flag"), HasSubstr(std::string("left: ") + c.left)));
    }
}

TEST_F(GenDynFlagDeathTest, NeedsAClearerAndAManager)
{
    EXPECT_EXIT(GEN_DYN_FLAG_MANAGER(nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("m_clearer != 0", "gen_dyn_flag"));
    EXPECT_EXIT(GEN_DYN_FLAG::test_myself_out(nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("mgr!=0", "gen_dyn_flag"));
}

namespace {

// An explicit instantiation may name private members.
std::uint64_t &slot_count_of(GEN_DYN_FLAG_MANAGER &manager);
template <auto SLOT_COUNT>
struct Opened
{
    friend std::uint64_t &slot_count_of(GEN_DYN_FLAG_MANAGER &manager) { return manager.*SLOT_COUNT; }
};
template struct Opened<&GEN_DYN_FLAG_MANAGER::m_slot_count>;

} // namespace

// With 32 slots no bit is beyond them.
TEST_F(GenDynFlagDeathTest, RefusesABitBeyondTheSlots)
{
    Flags flags;
    EXPECT_EQ(slot_count_of(flags.manager), 32U);
    slot_count_of(flags.manager) = 3;
    EXPECT_EXIT(flags.destroy(bit(3)), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("flag 0x8: too many bits", "gen_dyn_flag"));
    EXPECT_EXIT(flags.destroy(bit(3) | bit(4)), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("flag 0x18: not a single bit", "gen_dyn_flag"));
}
