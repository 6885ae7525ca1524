#include "gen_index_compressor_queue_sys.h"

#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::ExitedWithCode;

namespace {

using Queue = GEN_INDEX_COMPRESSOR_QUEUE;
using Names = std::vector<std::string>;

// The private members of a queue: an explicit instantiation may name private members.
auto head_of(Queue const &queue);
auto ready_count_of(Queue const &queue);
bool merge_texts(Queue &queue, std::string &existing, std::string const &incoming, bool &compatible);
bool scan_one_int(Queue const &queue, char &ch, char const *&cursor, int &value);
bool scan_one_index(Queue const &queue, char &ch, char const *&cursor, int *range);

template <auto HEAD, auto READY_COUNT, auto MERGE, auto SCAN_INT, auto SCAN_INDEX>
struct PrivateMembers
{
    friend auto head_of(Queue const &queue) { return queue.*HEAD; }
    friend auto ready_count_of(Queue const &queue) { return queue.*READY_COUNT; }
    friend bool merge_texts(Queue &queue, std::string &existing, std::string const &incoming, bool &compatible)
    {
        return (queue.*MERGE)(existing, incoming, compatible);
    }
    friend bool scan_one_int(Queue const &queue, char &ch, char const *&cursor, int &value)
    {
        return (queue.*SCAN_INT)(ch, cursor, value);
    }
    friend bool scan_one_index(Queue const &queue, char &ch, char const *&cursor, int *range)
    {
        return (queue.*SCAN_INDEX)(ch, cursor, range);
    }
};
template struct PrivateMembers<&Queue::m_head, &Queue::m_ready_count, &Queue::merge, &Queue::scan_int,
                               &Queue::scan_index>;

// The entries from front to back; an asterisk after one that is ready.
Names entries_of(Queue const &queue)
{
    Names entries;
    for (auto node = head_of(queue); node != nullptr; node = node->m_next)
        entries.push_back(node->m_name + (node->m_ready ? "*" : ""));
    return entries;
}

// Empties itself, as a queue under error check requires.
struct FilledQueue : Queue
{
    explicit FilledQueue(Names const &names, BRACKET_TYPE type = BRACKET_REQUIRED) : Queue(true, type)
    {
        for (std::string const &name : names)
            push_back(name);
    }
    FilledQueue(FilledQueue const &) = delete;
    FilledQueue &operator=(FilledQueue const &) = delete;
    ~FilledQueue() { clear(); }
};

Names entries_after(Names const &names, Queue::BRACKET_TYPE type)
{
    return entries_of(FilledQueue(names, type));
}

// All entries of a queue, expanded.
Names expand(Queue &queue)
{
    Names names;
    for (; !queue.empty(); queue.pop_front())
        names.push_back(queue.expand_front());
    return names;
}

constexpr Queue::BRACKET_TYPE REQUIRED = Queue::BRACKET_REQUIRED;
constexpr Queue::BRACKET_TYPE OPTIONAL_BARE = Queue::BRACKET_OPTIONAL;
constexpr Queue::BRACKET_TYPE AFTER_TILDE = Queue::BRACKET_OPTIONAL_AFTER_TILDE;
constexpr Queue::BRACKET_TYPE ALL_TYPES[] = {REQUIRED, OPTIONAL_BARE, AFTER_TILDE};

struct QueueCase
{
    Queue::BRACKET_TYPE type;
    Names pushed;
    Names entries;
};

void expect_entries(std::vector<QueueCase> const &cases)
{
    for (QueueCase const &c : cases)
        EXPECT_EQ(entries_after(c.pushed, c.type), c.entries)
            << "type " << c.type << ", pushed " << testing::PrintToString(c.pushed);
}

} // namespace

TEST(GenIndexCompressorQueue, CountsTheBracketTypes)
{
    EXPECT_EQ(static_cast<int>(Queue::BRACKET_REQUIRED), 0);
    EXPECT_EQ(static_cast<int>(Queue::BRACKET_OPTIONAL), 1);
    EXPECT_EQ(static_cast<int>(Queue::BRACKET_OPTIONAL_AFTER_TILDE), 2);
}

TEST(GenIndexCompressorQueueMerge, MergesIndicesThatFollowOneAnother)
{
    expect_entries({
        {REQUIRED, {}, {}},
        {REQUIRED, {"a[0]"}, {"a[0]"}},
        {REQUIRED, {"a[0]", "a[1]", "a[2]"}, {"a[0:2]"}},
        {REQUIRED, {"a[0]", "a[2]"}, {"a[0]*", "a[2]"}},
        {REQUIRED, {"a[1]", "a[0]"}, {"a[1]*", "a[0]"}},
        {REQUIRED, {"a[0]", "a[0]"}, {"a[0]*", "a[0]"}},
        {REQUIRED, {"a[-2]", "a[-1]", "a[0]"}, {"a[-2:0]"}},
        {REQUIRED, {"[0]", "[1]"}, {"[0:1]"}},
        {REQUIRED, {"a[0].b", "a[1].b"}, {"a[0:1].b"}},
        {REQUIRED, {"a[9]", "a[10]"}, {"a[9:10]"}},
        {REQUIRED,
         {"a long name beyond any small buffer[0]", "a long name beyond any small buffer[1]"},
         {"a long name beyond any small buffer[0:1]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, MergesRanges)
{
    expect_entries({
        {REQUIRED, {"a[0:3]", "a[4:7]"}, {"a[0:7]"}},
        {REQUIRED, {"a[3:0]", "a[4]"}, {"a[0:4]"}},
        {REQUIRED, {"a[0]", "a[4:1]"}, {"a[0:4]"}},
        {REQUIRED, {"a[0:1][0]", "a[2:3][0]"}, {"a[0:3][0]"}},
        {REQUIRED, {"a[-1:-4]", "a[0]"}, {"a[-4:0]"}},
        {REQUIRED, {"a[0:3]", "a[3:0]"}, {"a[0:3]*", "a[3:0]"}}, // equal ranges
        {REQUIRED, {"a[0:3]", "a[3]"}, {"a[0:3]*", "a[3]"}},     // an overlap
        {REQUIRED, {"a[0:3]", "a[5]"}, {"a[0:3]*", "a[5]"}},     // a gap
    });
}

TEST(GenIndexCompressorQueueMerge, MergesFurtherDimensions)
{
    expect_entries({
        {REQUIRED, {"a[0][0]", "a[0][1]", "a[1][0]", "a[1][1]"}, {"a[0:1][0:1]"}},
        {REQUIRED, {"a[0][0]", "a[1][0]", "a[0][1]", "a[1][1]"}, {"a[0:1][0:1]"}}, // by columns
        {REQUIRED, {"a[0][0]", "a[0][1]", "a[1][0]"}, {"a[0][0:1]", "a[1][0]"}},
        {REQUIRED, {"a[0][0]", "a[1][1]"}, {"a[0][0]*", "a[1][1]"}},
        {REQUIRED, {"a[0][0]", "a[1][1]", "a[2][2]"}, {"a[0][0]*", "a[1][1]*", "a[2][2]"}},
        {REQUIRED,
         {"a[0][0][0]", "a[0][0][1]", "a[0][1][0]", "a[0][1][1]", "a[1][0][0]", "a[1][0][1]", "a[1][1][0]",
          "a[1][1][1]"},
         {"a[0:1][0:1][0:1]"}},
        // A ready row merges with the next row.
        {REQUIRED, {"a[0][0:1]", "a[1][0]", "a[1][1]"}, {"a[0:1][0:1]*"}},
    });
}

// A ready row receives the last row, then merges into the entry before it, and is counted once.
TEST(GenIndexCompressorQueueMerge, CountsAReadyEntryOnceWhenItMergesAgain)
{
    Names const fronts[] = {
        {"a[0][0:1][0:1]"},               // ready itself
        {"a[0][0][0:1]", "a[0][1][0:1]"}, // merged, and open
    };
    for (Names names : fronts) {
        SCOPED_TRACE(testing::PrintToString(names));
        names.insert(names.end(), {"a[1][0][0:1]", "a[1][1][0]", "a[1][1][1]"});
        FilledQueue queue(names);
        EXPECT_THAT(entries_of(queue), ElementsAre("a[0:1][0:1][0:1]*"));
        EXPECT_EQ(ready_count_of(queue), 1);
        queue.pop_front();
        EXPECT_FALSE(queue.ready());
    }
}

TEST(GenIndexCompressorQueueMerge, KeepsAMergedEntryOpenForNamesOfItsShape)
{
    expect_entries({
        {REQUIRED, {"a[0]", "a[1]", "a[3]", "a[4]"}, {"a[0:1]", "a[3:4]"}},
        {REQUIRED, {"a[0]", "a[1]", "b[0]"}, {"a[0:1]*", "b[0]"}},
        {REQUIRED, {"d[0]", "d[1]", "q", "d[2]"}, {"d[0:1]*", "q*", "d[2]"}},
        {REQUIRED, {"a[0]", "a[1]", "a[3]", "b"}, {"a[0:1]", "a[3]*", "b"}},
    });
    EXPECT_FALSE(FilledQueue({"a[0]", "a[1]", "a[3]", "a[4]"}).ready());
}

TEST(GenIndexCompressorQueueMerge, EndsTheComparisonWithTheShorterName)
{
    expect_entries({
        {REQUIRED, {"a[0]b", "a[1]"}, {"a[0:1]"}}, // the b is lost
        {REQUIRED, {"a[0]", "a[1]b"}, {"a[0:1]b"}},
        {REQUIRED, {"a[0]x", "a[1]y"}, {"a[0]x*", "a[1]y"}},
        {REQUIRED, {"a[0][5]", "a[1]"}, {"a[0:1]"}},
        {REQUIRED, {"a[0]", "a[1][5]"}, {"a[0:1][5]"}},
        {REQUIRED, {"", ""}, {"*", ""}},
        {REQUIRED, {"", "a[0]", "a[1]"}, {"*", "a[0:1]"}},
        {REQUIRED, {"a[0]", "a[1]", "", "a[2]"}, {"a[0:1]", "*", "a[2]"}}, // nothing differs from an empty name
        {REQUIRED, {"ab", "a"}, {"ab*", "a"}},
    });
}

TEST(GenIndexCompressorQueueMerge, ComparesIndicesByValue)
{
    expect_entries({
        {REQUIRED, {"a[007]", "a[8]"}, {"a[7:8]"}},
        {REQUIRED, {"a[7]", "a[008]"}, {"a[7:8]"}},
        {REQUIRED, {"a[01]", "a[1]"}, {"a[01]*", "a[1]"}},
        {REQUIRED, {"a[-0]", "a[1]"}, {"a[0:1]"}},
        {REQUIRED, {"a[01][0]", "a[1][1]"}, {"a[1][0:1]"}}, // equal indices stay as the later name spells them
        {REQUIRED, {"a[1][0]", "a[01][1]"}, {"a[01][0:1]"}},
        {REQUIRED, {"a[2:2][0]", "a[2][1]"}, {"a[2][0:1]"}},
        {OPTIONAL_BARE, {"a01", "a1"}, {"a01*", "a1"}},
        {OPTIONAL_BARE, {"a01", "a002"}, {"a[1:2]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, TakesBareNumbersWhereTheTypeAllowsThem)
{
    expect_entries({
        {REQUIRED, {"a1", "a2"}, {"a1*", "a2"}},
        {REQUIRED, {"a~1", "a~2"}, {"a~1*", "a~2"}},
        {OPTIONAL_BARE, {"a1", "a2", "a3"}, {"a[1:3]"}},
        {OPTIONAL_BARE, {"a1b2", "a1b3"}, {"a1b[2:3]"}},
        {OPTIONAL_BARE, {"a1b2", "a2b2"}, {"a[1:2]b2"}},
        {OPTIONAL_BARE, {"a1b2", "a2b3"}, {"a1b2*", "a2b3"}},
        {OPTIONAL_BARE, {"a1", "a[2]", "a3"}, {"a[1:3]"}}, // bare and in brackets
        {OPTIONAL_BARE, {"a1:2", "a3"}, {"a[1:3]"}},
        {OPTIONAL_BARE, {"a[0]", "a[1]"}, {"a[0:1]"}},
        {OPTIONAL_BARE, {"1", "2"}, {"[1:2]"}},
        {OPTIONAL_BARE, {"a1]", "a2]"}, {"a1]*", "a2]"}}, // closed without being opened
        // A sign counts where the earlier name has it against a digit of the later one.
        {OPTIONAL_BARE, {"a-1", "a0"}, {"a[-1:0]"}},
        {OPTIONAL_BARE, {"a-1", "a-2"}, {"a-[1:2]"}},
        {AFTER_TILDE, {"a1", "a2"}, {"a1*", "a2"}},
        {AFTER_TILDE, {"a~1", "a~2"}, {"a~[1:2]"}},
        {AFTER_TILDE, {"a~b1", "a~b2"}, {"a~b[1:2]"}},
        {AFTER_TILDE, {"a1~", "a2~"}, {"a1~*", "a2~"}},
        {AFTER_TILDE, {"a[1]", "a[2]"}, {"a[1:2]"}},
        {AFTER_TILDE, {"x~1|y1", "x~2|y1"}, {"x~[1:2]|y1"}},
        {AFTER_TILDE, {"x~1|y1", "x~1|y2"}, {"x~1|y1*", "x~1|y2"}},
        {AFTER_TILDE, {"x~|~1", "x~|~2"}, {"x~|~[1:2]"}}, // allowed again
        {AFTER_TILDE, {"x~y:1", "x~y:2"}, {"x~y:1*", "x~y:2"}},
        {AFTER_TILDE, {"x~y:~1", "x~y:~2"}, {"x~y:~[1:2]"}},
        {AFTER_TILDE, {"x|~1", "x|~2"}, {"x|~[1:2]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, ReadsIndicesUpToALimit)
{
    expect_entries({
        {REQUIRED, {"a[2147483638]", "a[2147483639]"}, {"a[2147483638:2147483639]"}},
        {REQUIRED, {"a[2147483639]", "a[2147483640]"}, {"a[2147483639]*", "a[2147483640]"}},
        {REQUIRED, {"a[2147483640]", "a[2147483641]"}, {"a[2147483640]*", "a[2147483641]"}},
        {REQUIRED, {"a[-2147483639]", "a[-2147483638]"}, {"a[-2147483639:-2147483638]"}},
        {REQUIRED, {"a[-2147483640]", "a[-2147483639]"}, {"a[-2147483640]*", "a[-2147483639]"}},
        {REQUIRED, {"a[00000000000000000001]", "a[2]"}, {"a[1:2]"}},
        {REQUIRED,
         {"a[99999999999999999999]", "a[99999999999999999999]"},
         {"a[99999999999999999999]*", "a[99999999999999999999]"}},
        {OPTIONAL_BARE, {"a2147483638", "a2147483639"}, {"a[2147483638:2147483639]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, ComparesBracketsWithoutANumberAsText)
{
    expect_entries({
        {REQUIRED, {"a[]", "a[]"}, {"a[]*", "a[]"}},
        {REQUIRED, {"a[x][0]", "a[x][1]"}, {"a[x][0:1]"}},
        {REQUIRED, {"a[x][0]", "a[y][1]"}, {"a[x][0]*", "a[y][1]"}},
        {REQUIRED, {"a[][0]", "a[][1]"}, {"a[][0:1]"}},
        {REQUIRED, {"a[[0]", "a[[1]"}, {"a[[0:1]"}},
        {REQUIRED, {"a[-][0]", "a[-][1]"}, {"a[-][0:1]"}},
        {REQUIRED, {"a[1:][0]", "a[1:][1]"}, {"a[1:][0:1]"}},
        {REQUIRED, {"a[12x][0]", "a[12x][1]"}, {"a[12x][0:1]"}},
        {REQUIRED, {"a[12x]", "a[13x]"}, {"a[12x]*", "a[13x]"}},
        {REQUIRED, {"a[99999999999][0]", "a[99999999999][1]"}, {"a[99999999999][0:1]"}},
        {REQUIRED, {"a[", "a["}, {"a[*", "a["}},
        {REQUIRED, {"a[1", "a["}, {"a[1*", "a["}},
        {REQUIRED, {"a[", "a[1"}, {"a[*", "a[1"}},
        {REQUIRED, {"a[12", "a[12"}, {"a[12*", "a[12"}},
        {REQUIRED, {"a[0", "a[1"}, {"a[0*", "a[1"}},
        {REQUIRED, {"a[0]", "a[1"}, {"a[0]*", "a[1"}},
        // The stretch of equal digits is compared as text; the difference after it may be an index of its own.
        {OPTIONAL_BARE, {"a[12x", "a[13x"}, {"a[1[2:3]x"}},
    });
}

// Pairs on which the comparison can't go on; they end without a merge, and so does the test.
TEST(GenIndexCompressorQueueMerge, LeavesPairsSeparateOnWhichTheComparisonCannotAdvance)
{
    expect_entries({
        {REQUIRED, {"ab", "a[1]"}, {"ab*", "a[1]"}},
        {REQUIRED, {"a[1]", "ab"}, {"a[1]*", "ab"}},
        {REQUIRED, {"a", "[1]"}, {"a*", "[1]"}},
        {REQUIRED, {"a1", "a[2]"}, {"a1*", "a[2]"}},
        {OPTIONAL_BARE, {"ab", "a1"}, {"ab*", "a1"}},
        {OPTIONAL_BARE, {"a1", "ab"}, {"a1*", "ab"}},
        {OPTIONAL_BARE, {"ab", "a[1]"}, {"ab*", "a[1]"}},
        {OPTIONAL_BARE, {"a1:", "a1:"}, {"a1:*", "a1:"}},
        {OPTIONAL_BARE, {"a1:b", "a2:b"}, {"a1:b*", "a2:b"}},
        {OPTIONAL_BARE, {"a2147483640", "a2147483640"}, {"a2147483640*", "a2147483640"}},
        {OPTIONAL_BARE, {"a99999999999", "a99999999999"}, {"a99999999999*", "a99999999999"}},
        {OPTIONAL_BARE, {"a[x", "a1"}, {"a[x*", "a1"}},
        {OPTIONAL_BARE, {"a1", "a[x"}, {"a1*", "a[x"}},
        {AFTER_TILDE, {"~b", "~1"}, {"~b*", "~1"}},
        // Such a pair counts as one of the same shape, so that a merged entry stays open.
        {REQUIRED, {"a[0]x", "a[1]x", "a[0][0]"}, {"a[0:1]x", "a[0][0]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, EndsANameAtANullCharacter)
{
    std::string const nul(1, '\0');
    for (Queue::BRACKET_TYPE const type : ALL_TYPES) {
        EXPECT_EQ(entries_after({"a[0]" + nul + "x", "a[1]" + nul + "y"}, type), Names{"a[0:1]" + nul + "y"});
        EXPECT_EQ(entries_after({"a[0" + nul + "]", "a[1" + nul + "]"}, type).size(), type == OPTIONAL_BARE ? 1U : 2U);
        EXPECT_EQ(entries_after({"a", nul}, type), (Names{"a*", nul}));
        EXPECT_EQ(entries_after({nul, nul}, type), (Names{nul + "*", nul}));
        EXPECT_EQ(entries_after({nul + "[0]", nul + "[1]"}, type), (Names{nul + "[0]*", nul + "[1]"}));
    }
}

TEST(GenIndexCompressorQueueMerge, ComparesBytesAboveTheAsciiRange)
{
    expect_entries({
        {REQUIRED, {"\xc3\xa9[0]", "\xc3\xa9[1]"}, {"\xc3\xa9[0:1]"}},
        {OPTIONAL_BARE, {"\xff\xb2[0]", "\xff\xb3[1]"}, {"\xff\xb2[0]*", "\xff\xb3[1]"}},
    });
}

TEST(GenIndexCompressorQueueMerge, AcceptsTheTextOfOneOfItsEntries)
{
    FilledQueue queue({"a[0]", "b"});
    queue.push_back(queue.front());
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0]*", "b*", "a[0]"));
    FilledQueue single({"a[0]"});
    single.push_back(single.front());
    EXPECT_THAT(entries_of(single), ElementsAre("a[0]*", "a[0]"));
}

TEST(GenIndexCompressorQueueMergeStep, DistinguishesShapeAndIndex)
{
    struct MergeCase
    {
        Queue::BRACKET_TYPE type;
        char const *existing;
        char const *incoming;
        bool merged;
        bool compatible;
        char const *text;
    };
    MergeCase const cases[] = {
        {REQUIRED, "a[0]", "a[1]", true, true, "a[0:1]"},
        {REQUIRED, "a[0]", "a[2]", false, true, "a[0]"},
        {REQUIRED, "a[0]", "b[1]", false, false, "a[0]"},
        {REQUIRED, "a[0]", "", false, true, "a[0]"},
        {REQUIRED, "", "a[0]", false, true, ""},
        {REQUIRED, "a[0]x", "a[1]y", false, false, "a[0]x"},
        {REQUIRED, "a[0]x", "a[2]y", false, false, "a[0]x"}, // the shape is found out after a gap
        {REQUIRED, "a[0][0]", "a[1][1]", false, true, "a[0][0]"},
        {REQUIRED, "a[0][0][0]", "a[1][1][1]", false, true, "a[0][0][0]"},
        {REQUIRED, "a[0][0]", "a[2][1]", false, true, "a[0][0]"},
        {REQUIRED, "ab", "a[1]", false, true, "ab"}, // the comparison cannot advance
        {REQUIRED, "a[1]", "ab", false, false, "a[1]"},
        {REQUIRED, "a[]b", "a[]c", false, false, "a[]b"},
        {OPTIONAL_BARE, "a1:", "a1:", false, true, "a1:"},
    };
    for (MergeCase const &c : cases) {
        Queue queue(true, c.type);
        std::string existing = c.existing;
        bool compatible = !c.compatible;
        EXPECT_EQ(merge_texts(queue, existing, c.incoming, compatible), c.merged) << c.existing << ", " << c.incoming;
        EXPECT_EQ(compatible, c.compatible) << c.existing << ", " << c.incoming;
        EXPECT_EQ(existing, c.text) << c.existing << ", " << c.incoming;
    }
}

TEST(GenIndexCompressorQueueScan, ReadsOneInteger)
{
    struct IntCase
    {
        char const *text;
        bool good;
        int value;
        int consumed;
    };
    constexpr IntCase CASES[] = {
        {"0", true, 0, 1},
        {"12x", true, 12, 2},
        {"-12]", true, -12, 3},
        {"007", true, 7, 3},
        {"2147483639", true, 2147483639, 10},
        {"-2147483639", true, -2147483639, 11},
        {"214748364", true, 214748364, 9},
        {"", false, 0, 0},
        {"x", false, 0, 0},
        {"-", false, 0, 0},
        {"-x", false, 0, 0},
        {"--1", false, 0, 0},
        {"+1", false, 0, 0},
        {" 1", false, 0, 0},
        {"2147483640x", false, INT_MIN, 10}, // passed over all the same
        {"-99999999999x", false, INT_MIN, 12},
    };
    Queue const queue;
    for (IntCase const &c : CASES) {
        char const *cursor = c.text;
        char ch = *cursor++;
        int value = INT_MIN;
        EXPECT_EQ(scan_one_int(queue, ch, cursor, value), c.good) << c.text;
        EXPECT_EQ(cursor - 1 - c.text, c.consumed) << c.text;
        EXPECT_EQ(ch, c.text[c.consumed]) << c.text;
        if (c.good) {
            EXPECT_EQ(value, c.value) << c.text;
        }
    }
}

TEST(GenIndexCompressorQueueScan, ReadsOneIndex)
{
    struct IndexCase
    {
        char const *text;
        bool good;
        int low;
        int high;
    };
    constexpr IndexCase CASES[] = {
        {"[0]", true, 0, 0},
        {"[3:0]", true, 0, 3},
        {"[-1:-5]", true, -5, -1},
        {"[2147483639]", true, 2147483639, 2147483639},
        {"[2147483640]", false, 0, 0},
        {"[0:2147483640]", false, 0, 0},
        {"[]", false, 0, 0},
        {"[0", false, 0, 0},
        {"[0:", false, 0, 0},
        {"[0:]", false, 0, 0},
        {"[:0]", false, 0, 0},
        {"[0:1:2]", false, 0, 0},
        {"[ 0]", false, 0, 0},
        {"[-]", false, 0, 0},
        {"[[0]]", false, 0, 0},
        {"7", false, 0, 0}, // bare
        {"]", false, 0, 0},
        {"", false, 0, 0},
    };
    Queue const queue;
    for (IndexCase const &c : CASES) {
        char const *cursor = c.text;
        char ch = *cursor++;
        int range[2] = {0, 0};
        EXPECT_EQ(scan_one_index(queue, ch, cursor, range), c.good) << c.text;
        std::ptrdiff_t const consumed = c.good ? static_cast<std::ptrdiff_t>(std::string(c.text).size()) : 0;
        EXPECT_EQ(cursor - 1 - c.text, consumed) << c.text;
        EXPECT_EQ(ch, c.text[consumed]) << c.text;
        if (c.good) {
            EXPECT_THAT(range, ElementsAre(c.low, c.high)) << c.text;
        }
    }
}

TEST(GenIndexCompressorQueueExpand, ExpandsTheFront)
{
    struct ExpandCase
    {
        Names pushed;
        char const *returned;
        Names entries;
    };
    ExpandCase const cases[] = {
        {{"a[0:2]"}, "a[0]", {"a[0]", "a[1]", "a[2]"}},
        {{"a[0:1][0:1]"}, "a[0][0]", {"a[0][0]", "a[0][1]", "a[1][0:1]"}},
        {{"a[5]"}, "a[5]", {"a[5]"}},
        {{""}, "", {""}},
        {{"a"}, "a", {"a"}},
        {{"a[1:0]b"}, "a[0]b", {"a[0]b", "a[1]b"}},
        {{"a[-1:1]"}, "a[-1]", {"a[-1]", "a[0]", "a[1]"}},
        {{"a[5:5]"}, "a[5:5]", {"a[5:5]"}},
        {{"a[05][0:1]"}, "a[05][0]", {"a[05][0]", "a[05][1]"}},
        {{"a[2147483638:2147483639]"}, "a[2147483638]", {"a[2147483638]", "a[2147483639]"}},
        {{"a[-2147483639:-2147483638]"}, "a[-2147483639]", {"a[-2147483639]", "a[-2147483638]"}},
        {{"a[0:2147483640]"}, "a[0:2147483640]", {"a[0:2147483640]"}},
        {{"[x[0:1]"}, "[x[0]", {"[x[0]", "[x[1]"}}, // a bracket that holds no index is passed over
        {{"[[0:1]]"}, "[[0]]", {"[[0]]", "[[1]]"}},
        {{"[1[0:1]"}, "[1[0]", {"[1[0]", "[1[1]"}},
        {{"[0:1"}, "[0:1", {"[0:1"}},
        {{"a0:1"}, "a0:1", {"a0:1"}},
        {{"[0:1][0:1][0:1]"}, "[0][0][0]", {"[0][0][0]", "[0][0][1]", "[0][1][0:1]", "[1][0:1][0:1]"}},
        {{"a[0:1]", "b[0:1]"}, "a[0]", {"a[0]", "a[1]", "b[0:1]"}}, // the front alone; what was ready is so no more
    };
    for (ExpandCase const &c : cases)
        for (Queue::BRACKET_TYPE const type : ALL_TYPES) {
            FilledQueue queue(c.pushed, type);
            EXPECT_EQ(queue.expand_front(), c.returned) << testing::PrintToString(c.pushed);
            EXPECT_EQ(queue.front(), c.returned) << testing::PrintToString(c.pushed);
            EXPECT_EQ(entries_of(queue), c.entries) << testing::PrintToString(c.pushed);
        }
}

TEST(GenIndexCompressorQueueExpand, WritesBracketsForBareIndices)
{
    FilledQueue queue({"a1", "a2"}, OPTIONAL_BARE);
    EXPECT_THAT(expand(queue), ElementsAre("a[1]", "a[2]"));
}

TEST(GenIndexCompressorQueueExpand, LinksTheEntriesBothWays)
{
    FilledQueue queue({"a[0:1]"});
    queue.expand_front();
    queue.push_back("a[2]"); // merges with the last of them, and that with the first
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0:2]"));
    queue.push_back("b");
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0:2]*", "b"));
}

TEST(GenIndexCompressorQueueExpand, MakesEntriesThatAreNotMerged)
{
    FilledQueue queue({"a[0]", "a[1]"});
    queue.expand_front();
    queue.push_back("a[3]"); // a merged entry would stay open
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0]", "a[1]*", "a[3]"));
    // Only the entry that receives a pushed name counts as merged, and it merges into the one before it.
    FilledQueue merged({"a[0:1]"});
    merged.expand_front();
    merged.push_back("a[2]");
    merged.push_back("a[4]");
    EXPECT_THAT(entries_of(merged), ElementsAre("a[0:2]*", "a[4]"));
}

TEST(GenIndexCompressorQueueExpand, LeavesTheQueueReadyForGoodAfterAReadyFront)
{
    Queue queue;
    for (char const *const name : {"a[0:1]", "b"})
        queue.push_back(name);
    EXPECT_TRUE(queue.ready());
    queue.expand_front();
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0]", "a[1]", "b"));
    for (int left = 3; left > 0; --left) {
        EXPECT_TRUE(queue.ready()) << left;
        EXPECT_FALSE(queue.empty()) << left;
        queue.pop_front();
    }
    EXPECT_TRUE(queue.empty());
    EXPECT_TRUE(queue.ready());
    EXPECT_EQ(ready_count_of(queue), 1);
}

TEST(GenIndexCompressorQueueExpand, LeavesAnOpenFrontUncounted)
{
    FilledQueue queue({"a[0:1]"});
    queue.expand_front();
    EXPECT_FALSE(queue.ready());
}

TEST(GenIndexCompressorQueueState, StartsEmpty)
{
    Queue queue;
    EXPECT_TRUE(queue.empty());
    EXPECT_FALSE(queue.ready());
    queue.pop_front();
    queue.clear();
    EXPECT_TRUE(queue.empty());
    EXPECT_FALSE(queue.ready());
}

TEST(GenIndexCompressorQueueState, RequiresBracketsByDefault)
{
    Queue queue;
    for (char const *const name : {"a1", "a2", "a~1", "a~2", "a[1]", "a[2]"})
        queue.push_back(name);
    EXPECT_THAT(entries_of(queue), ElementsAre("a1*", "a2*", "a~1*", "a~2*", "a[1:2]"));
    queue.clear();
}

TEST(GenIndexCompressorQueueState, CountsReadyEntriesDownAsTheyLeave)
{
    Queue queue;
    queue.push_back("a[0]");
    EXPECT_FALSE(queue.ready());
    queue.push_back("b");
    EXPECT_TRUE(queue.ready());
    queue.push_back("c");
    EXPECT_EQ(ready_count_of(queue), 2);
    EXPECT_EQ(queue.front(), "a[0]");
    queue.pop_front();
    EXPECT_TRUE(queue.ready());
    EXPECT_EQ(queue.front(), "b");
    queue.pop_front();
    EXPECT_FALSE(queue.ready());
    EXPECT_EQ(queue.front(), "c");
    queue.pop_front();
    EXPECT_TRUE(queue.empty());
    queue.push_back("d"); // usable again
    EXPECT_EQ(queue.front(), "d");
    queue.clear();
    EXPECT_TRUE(queue.empty());
}

// A consumer that takes what is ready holds a bounded number of entries.
TEST(GenIndexCompressorQueueState, StaysShortWhenReadyEntriesAreTaken)
{
    FilledQueue queue({});
    std::size_t taken = 0;
    for (int i = 0; i < 10000; ++i) {
        queue.push_back("a[" + std::to_string(i % 100) + "]." + std::to_string(i / 100));
        for (; queue.ready(); queue.pop_front())
            ++taken;
        ASSERT_LE(entries_of(queue).size(), 2U) << i;
    }
    EXPECT_EQ(taken, 99U);
    EXPECT_THAT(entries_of(queue), ElementsAre("a[0:99].99"));
}

TEST(GenIndexCompressorQueueState, SharesTheEntriesOfACopy)
{
    FilledQueue original({"a[0]", "b"});
    Queue copy(false);
    copy = original;
    EXPECT_EQ(&copy.front(), &original.front());
    EXPECT_TRUE(copy.ready());
    Queue second(copy);
    EXPECT_EQ(&second.front(), &original.front());
    EXPECT_EQ(entries_of(second), entries_of(original));

    // All three are under error check now, the flag being copied too.
    original.clear();
    copy = original;
    second = original;
}

TEST(GenIndexCompressorQueueState, FreesNothingWithoutErrorCheck)
{
    FilledQueue keeper({});
    {
        Queue queue(false);
        queue.push_back("a[0]");
        static_cast<Queue &>(keeper) = queue;
    }
    EXPECT_THAT(entries_of(keeper), ElementsAre("a[0]"));
}

namespace {

constexpr char const *QUEUE_HEADER = "h/gen_index_compressor_queue_sys.h";

void destroy_filled()
{
    Queue queue;
    queue.push_back("a");
}

} // namespace

TEST(GenIndexCompressorQueueDeathTest, AnEntryLeftAtTheEndIsAnInternalError)
{
    EXPECT_EXIT(destroy_filled(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_source("!m_error_check || m_head == NULL && m_tail == NULL", QUEUE_HEADER));
}

TEST(GenIndexCompressorQueueDeathTest, TheFrontOfAnEmptyQueueIsAnInternalError)
{
    EXPECT_EXIT(
        {
            Queue const queue;
            queue.front();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_source("m_head != NULL", QUEUE_HEADER));
    EXPECT_EXIT(
        {
            Queue queue;
            queue.expand_front();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_source("m_head != NULL", QUEUE_HEADER));
}

namespace {

// Calls `check` with each sequence of up to `length` of the names.
template <class Check>
void for_each_sequence(Names const &world, std::size_t length, Names &sequence, Check const &check)
{
    check(sequence);
    if (sequence.size() == length)
        return;
    for (std::string const &name : world) {
        sequence.push_back(name);
        for_each_sequence(world, length, sequence, check);
        sequence.pop_back();
    }
}

Names sorted(Names names)
{
    std::sort(names.begin(), names.end());
    return names;
}

// The queue as a list of texts, without links or flags of a walk: the same steps, written a second time.
class Model
{
public:
    explicit Model(Queue::BRACKET_TYPE type) : m_type(type) {}

    void push_back(std::string const &name)
    {
        bool compatible = true;
        if (!m_entries.empty() && merge(m_entries.back().name, name, compatible)) {
            m_entries.back().merged = true;
            while (m_entries.size() > 1) {
                Entry &before = m_entries[m_entries.size() - 2];
                if (!merge(before.name, m_entries.back().name, compatible))
                    break;
                before.ready = before.ready || m_entries.back().ready;
                m_entries.pop_back();
            }
            return;
        }
        if (!m_entries.empty() && (!m_entries.back().merged || !compatible))
            m_entries.back().ready = true;
        m_entries.push_back({name, false, false});
    }

    Names entries() const
    {
        Names texts;
        for (Entry const &entry : m_entries)
            texts.push_back(entry.name + (entry.ready ? "*" : ""));
        return texts;
    }

    int ready_count() const
    {
        return static_cast<int>(
            std::count_if(m_entries.begin(), m_entries.end(), [](Entry const &entry) { return entry.ready; }));
    }

    bool merge(std::string &existing, std::string const &incoming, bool &compatible) const
    {
        compatible = true;
        bool allowed = m_type == OPTIONAL_BARE;
        int differences = 0;
        std::string joined;
        std::size_t at1 = 0;
        std::size_t at2 = 0;
        while (at1 < incoming.size() && at2 < existing.size()) {
            char const c1 = incoming[at1];
            char const c2 = existing[at2];
            if (c2 == '~' && m_type == AFTER_TILDE)
                allowed = true;
            if (c2 == '|' || c2 == ':')
                allowed = m_type == OPTIONAL_BARE;
            if (c1 != '[' && !(allowed && c1 >= '0' && c1 <= '9')) {
                if (c1 != c2) {
                    compatible = false;
                    return false;
                }
                ++at1;
                ++at2;
                continue;
            }
            Index const index1 = index_at(incoming, at1, allowed);
            Index const index2 = index_at(existing, at2, allowed);
            if (index1.length != 0 && index2.length != 0) {
                if (index1.low != index2.low || index1.high != index2.high) {
                    // Two more for a difference that can't be joined.
                    differences += index2.high + 1 == index1.low ? 1 : 2;
                    joined = incoming.substr(0, at1) + "[" + std::to_string(index2.low) + ":" +
                             std::to_string(index1.high) + "]" + incoming.substr(at1 + index1.length);
                }
                at1 += index1.length;
                at2 += index2.length;
            } else if (c1 == '[' && c2 == '[') {
                do {
                    ++at1;
                    ++at2;
                } while (at1 < incoming.size() && at2 < existing.size() && incoming[at1] >= '0' &&
                         incoming[at1] <= '9' && incoming[at1] == existing[at2]);
            } else {
                return false;
            }
        }
        if (differences != 1)
            return false;
        existing = joined;
        return true;
    }

private:
    struct Entry
    {
        std::string name;
        bool merged;
        bool ready;
    };
    struct Index
    {
        std::size_t length; // 0: none
        int low;
        int high;
    };

    // Length of the number at a place; 0: none.
    static std::size_t number_length(std::string const &text, std::size_t at)
    {
        std::size_t const sign = at < text.size() && text[at] == '-' ? 1 : 0;
        std::size_t const digits = std::min(text.find_first_not_of("0123456789", at + sign), text.size()) - at - sign;
        return digits == 0 ? 0 : sign + digits;
    }

    static Index index_at(std::string const &text, std::size_t begin, bool bare_allowed)
    {
        Index const none{0, 0, 0};
        bool const bracketed = text[begin] == '[';
        if (!bracketed && !bare_allowed)
            return none;
        std::size_t at = begin + (bracketed ? 1 : 0);
        std::size_t length = number_length(text, at);
        if (length == 0)
            return none;
        int const first = std::stoi(text.substr(at, length));
        int second = first;
        at += length;
        if (at < text.size() && text[at] == ':') {
            ++at;
            length = number_length(text, at);
            if (length == 0)
                return none;
            second = std::stoi(text.substr(at, length));
            at += length;
        }
        bool const closed = at < text.size() && text[at] == ']';
        if (closed != bracketed)
            return none;
        return {at + (closed ? 1 : 0) - begin, std::min(first, second), std::max(first, second)};
    }

    Queue::BRACKET_TYPE m_type;
    std::vector<Entry> m_entries;
};

} // namespace

// Order is kept when rows come one after the other; columns come back as rows, so the names are compared as a set.
TEST(GenIndexCompressorQueueRoundTrip, GivesBackTheNamesOfASmallWorld)
{
    struct RoundTrip
    {
        Names world;
        std::size_t length;
    };
    RoundTrip const cases[] = {
        {{"a[0]", "a[1]", "a[2]", "b[0]", "b[1]"}, 6},
        {{"a[0][0]", "a[0][1]", "a[1][0]", "a[1][1]", "a[2][0]", "a[2][1]"}, 6},
        {{"m[0].x", "m[1].x", "m[0].y", "m[1].y", "q", "m[-1].x"}, 5},
    };
    for (RoundTrip const &c : cases) {
        Names sequence;
        for_each_sequence(c.world, c.length, sequence, [](Names const &pushed) {
            FilledQueue queue(pushed);
            ASSERT_EQ(sorted(expand(queue)), sorted(pushed)) << testing::PrintToString(pushed);
        });
    }
}

TEST(GenIndexCompressorQueueRoundTrip, KeepsTheOrderOfOneDimension)
{
    Names sequence;
    for_each_sequence({"a[-1]", "a[0]", "a[1]", "a[2]", "b[0]", "q"}, 6, sequence, [](Names const &pushed) {
        FilledQueue queue(pushed);
        ASSERT_EQ(expand(queue), pushed) << testing::PrintToString(pushed);
    });
}

TEST(GenIndexCompressorQueueRoundTrip, KeepsTheOrderOfRows)
{
    for (int const depth : {1, 2, 3})
        for (int const rows : {1, 2, 3, 10})
            for (int const columns : {1, 2, 3, 10}) {
                Names pushed;
                for (int i = 0; i < depth; ++i)
                    for (int j = 0; j < rows; ++j)
                        for (int k = 0; k < columns; ++k)
                            pushed.push_back("a[" + std::to_string(i) + "][" + std::to_string(j - 1) + "][" +
                                             std::to_string(k) + "]");
                FilledQueue queue(pushed);
                EXPECT_EQ(entries_of(queue).size(), 1U) << depth << " " << rows << " " << columns;
                EXPECT_EQ(expand(queue), pushed) << depth << " " << rows << " " << columns;
            }
}

TEST(GenIndexCompressorQueueModel, AgreesOnEachPairOfShortNames)
{
    Names names;
    std::string const alphabet = "a01[]:-~|";
    for (std::size_t begin = 0, length = 0; length <= 3; ++length) {
        std::size_t const end = names.size();
        if (length == 0)
            names.emplace_back();
        for (; begin < end; ++begin)
            for (char const ch : alphabet)
                names.push_back(names[begin] + ch);
    }
    ASSERT_EQ(names.size(), 1U + 9 + 81 + 729);
    for (Queue::BRACKET_TYPE const type : ALL_TYPES) {
        Queue queue(true, type);
        Model const model(type);
        for (std::string const &first : names)
            for (std::string const &second : names)
                // Before and after a place at which the pair may merge.
                for (std::string const &stem : {std::string(), std::string("~")}) {
                    std::string here = stem + first;
                    std::string there = here;
                    bool compatible_here;
                    bool compatible_there;
                    bool const merged = merge_texts(queue, here, stem + second, compatible_here);
                    ASSERT_EQ(merged, model.merge(there, stem + second, compatible_there))
                        << "type " << type << ": " << stem << first << ", " << second;
                    ASSERT_EQ(here, there) << "type " << type << ": " << stem << first << ", " << second;
                    ASSERT_EQ(compatible_here, compatible_there)
                        << "type " << type << ": " << stem << first << ", " << second;
                }
    }
}

TEST(GenIndexCompressorQueueModel, AgreesOnEachSequenceOfASmallWorld)
{
    Names const worlds[] = {
        {"a[0]", "a[1]", "a[0][0]", "a[0][1]", "a[1][0]", "a[1][1]", "b"},
        {"a[0][0:1]", "a[1][0]", "a[1][1]", "a[2:3][0:1]", "a[0][2]", "a[1][2]"},
        {"a0", "a1", "a[2]", "a~0", "a~1", "a~1|2", "a~1|3"},
        {"a[0", "a[1]", "a[0]x", "a[1]x", "ax", "a[2]"},
    };
    for (Queue::BRACKET_TYPE const type : ALL_TYPES)
        for (Names const &world : worlds) {
            Names sequence;
            for_each_sequence(world, 5, sequence, [type](Names const &pushed) {
                FilledQueue queue(pushed, type);
                Model model(type);
                for (std::string const &name : pushed)
                    model.push_back(name);
                ASSERT_EQ(entries_of(queue), model.entries())
                    << "type " << type << ": " << testing::PrintToString(pushed);
                ASSERT_EQ(ready_count_of(queue), model.ready_count())
                    << "type " << type << ": " << testing::PrintToString(pushed);
            });
        }
}
