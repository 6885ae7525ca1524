#include "gen_string_sys.h"

#include "tests/support/argument_slots.h"
#include "tests/support/formatmessage_reference.h"
#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <climits>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ExitedWithCode;

std::string expanded(std::string const &format, ArgumentSlots slots)
{
    std::string out;
    std::uint32_t const length = gen_formatmessage(out, format.c_str(), slots.begin());
    EXPECT_EQ(length, out.size()) << shown(format);
    return out;
}

// The texts "#1", "#2" and so on, one for each insert and more.
ArgumentSlots numbered_texts()
{
    static std::vector<std::string> const texts = [] {
        std::vector<std::string> made;
        for (int i = 1; i <= 128; ++i)
            made.push_back("#" + std::to_string(i));
        return made;
    }();
    ArgumentSlots slots;
    for (std::string const &text : texts)
        slots.add(text.c_str());
    return slots;
}

struct ExpandCase
{
    char const *format;
    ArgumentSlots slots;
    char const *text;
};

TEST(GenFormatMessage, PutsInsertsInPlace)
{
    char const *const no_text = nullptr;
    ExpandCase const cases[] = {
        {"", ArgumentSlots(), ""},
        {"plain text", ArgumentSlots(), "plain text"},
        {"%1", ArgumentSlots("a"), "a"},
        {"%1 %2", ArgumentSlots("a", "b"), "a b"},
        {"%1%2%3", ArgumentSlots("a", "b", "c"), "abc"},
        {"<%1>", ArgumentSlots(""), "<>"},
        {"%1", ArgumentSlots(no_text), "(null)"},
        // The text of an argument is no template, and its line ends stay.
        {"%1 %2", ArgumentSlots("%2 %n %0", "b"), "%2 %n %0 b"},
        {"%1", ArgumentSlots("a\n\rb"), "a\n\rb"},
        // Any order, and as often as wanted.
        {"%2 %1", ArgumentSlots("a", "b"), "b a"},
        {"%1 %1", ArgumentSlots("a"), "a a"},
        {"%3%2%1%2%3", ArgumentSlots("a", "b", "c"), "cbabc"},
        {"%1%3%2", ArgumentSlots("a", "b", "c"), "acb"},
        {"%2%2 %1", ArgumentSlots("a", "b"), "bb a"},
        // An argument that the template doesn't use is one slot.
        {"%2", ArgumentSlots(1, "b"), "b"},
        {"%3%1", ArgumentSlots("a", 1.5, "c"), "ca"},
        {"%12", ArgumentSlots(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, "twelfth"), "twelfth"},
        // One digit or two; a third one is text.
        {"%123", ArgumentSlots(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, "twelfth"), "twelfth3"},
        {"%10", ArgumentSlots(1, 2, 3, 4, 5, 6, 7, 8, 9, "tenth"), "tenth"},
        {"%1a", ArgumentSlots("x"), "xa"},
        {"%1 0", ArgumentSlots("x"), "x 0"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, KnowsEveryNumberFrom1To99)
{
    for (int number = 1; number <= 99; ++number) {
        std::string const text = "#" + std::to_string(number);
        std::string const insert = "%" + std::to_string(number);
        EXPECT_EQ(expanded(insert, numbered_texts()), text);
        std::string const field = std::string(5 - text.size(), ' ') + text;
        EXPECT_EQ(expanded(insert + "!5s!%1%99", numbered_texts()), field + "#1#99") << insert;
    }
}

TEST(GenFormatMessage, ConvertsAsTheInsertSpecifies)
{
    constexpr std::int64_t WIDE = 0x123456789A;
    ExpandCase const cases[] = {
        {"%1!s!", ArgumentSlots("a"), "a"},
        {"%1!d!", ArgumentSlots(-7), "-7"},
        {"%1!d! %2", ArgumentSlots(7, "text"), "7 text"},
        {"%2 %1!d!", ArgumentSlots(7, "text"), "text 7"},
        {"%2!u!%1!c!", ArgumentSlots('x', 4294967295U), "4294967295x"},
        {"%1!i!%1!o!%1!x!%1!X!", ArgumentSlots(171), "171253abAB"},
        {"%1!5d!|%1!-5d!|%1!05d!|%1!+d!|%1! d!|%1!.3d!", ArgumentSlots(42), "   42|42   |00042|+42| 42|042"},
        {"%1!#x!", ArgumentSlots(255), "0xff"},
        {"%1!.2f!|%1!e!|%1!g!|%1!10.3f!|%1!A!", ArgumentSlots(0.5), "0.50|5.000000e-01|0.5|     0.500|0X1P-1"},
        {"%1!lld! %1!I64x! %1!hhd! %1!hd! %1!d!", ArgumentSlots(WIDE), "78187493530 123456789a -102 30874 878082202"},
        {"%1!jd! %1!zu! %1!td! %1!I32x!", ArgumentSlots(WIDE), "78187493530 78187493530 78187493530 3456789a"},
        {"%1!-4s!|%1!4s!|%1!.1s!", ArgumentSlots("ab"), "ab  |  ab|a"},
        {"%1!p!", ArgumentSlots(static_cast<void *>(nullptr)), "(nil)"},
        // Text within the marks goes along.
        {"%1!d per cent!", ArgumentSlots(5), "5 per cent"},
        {"%1!d%%!", ArgumentSlots(5), "5%"},
        // More than one slot for an insert: the next one counts from the slot after them.
        {"%1!*d!|%2", ArgumentSlots(4, 7, "x"), "   7|x"},
        {"%1!*.*f!|%2", ArgumentSlots(6, 1, 2.25, "x"), "   2.2|x"},
        {"%1!d-%d!|%2", ArgumentSlots(3, 4, "x"), "3-4|x"},
        {"%2|%1!d-%d!", ArgumentSlots(3, 4, "x"), "x|3-4"},
        {"%3|%1!d-%d!", ArgumentSlots(3, 4, 0, "x"), "x|3-4"},
        // No slot at all.
        {"%1!%!|%2", ArgumentSlots("x"), "%|x"},
        // Text that is not a conversion is copied and takes no slot.
        {"%1!!|%2", ArgumentSlots("x"), "%|x"},
        {"%1!y!|%2", ArgumentSlots("x"), "%y|x"},
        {"%1!5!|%2", ArgumentSlots("x"), "%5|x"},
        {"%1!ll!|%2", ArgumentSlots("x"), "%ll|x"},
        // An absurd field gives nothing, and takes its slot.
        {"%1!2000000d!|%2", ArgumentSlots(1, "x"), "|x"},
        // Without the closing mark the conversion goes to the end.
        {"%1!d", ArgumentSlots(7), "7"},
        {"%1!d %2", ArgumentSlots(7, "x"), "7 %2"},
        {"%1!", ArgumentSlots("x"), "%"},
        // The marks have a meaning only after a number.
        {"%1 !d!", ArgumentSlots("x"), "x !d!"},
        {"%1!d!!", ArgumentSlots(7), "7!"},
        {"%12!d!3", ArgumentSlots(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12), "123"},
        {"%1!d!%1!x!", ArgumentSlots(10), "10a"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, StepsOverAnInsertByTheConversionScannedLast)
{
    ExpandCase const cases[] = {
        // Before %1 the one from the end of the template counts; two slots.
        {"%2|%1!d!|%1!d %d!", ArgumentSlots(1, 2, "x"), "x|1|1 2"},
        // After "%1!d!" it is this one: one slot.
        {"%1!d!|%2!d!|%1!d %d!", ArgumentSlots(1, 2, 3), "1|2|1 2"},
        {"%1!d %d!|%1!d!|%2!d!", ArgumentSlots(1, 2, 3), "1 2|1|2"},
        {"%1!d %d!|%2!d!|%1!d!", ArgumentSlots(1, 2, 3), "1 2|3|1"},
        {"%3!d!|%1!d %d!|%2!d!", ArgumentSlots(1, 2, 3, 4), "4|1 2|3"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, KeepsOtherPerCentSigns)
{
    ExpandCase const cases[] = {
        {"100%% done", ArgumentSlots(), "100% done"},
        {"%%", ArgumentSlots(), "%"},
        {"%%%%", ArgumentSlots(), "%%"},
        {"%%1", ArgumentSlots("a"), "%1"},
        {"%%%1", ArgumentSlots("a"), "%a"},
        {"%x", ArgumentSlots(), "%x"},
        {"%n%r%t%b%.%!% ", ArgumentSlots(), "%n%r%t%b%.%!% "},
        {"%s%d", ArgumentSlots(), "%s%d"},
        {"%-1", ArgumentSlots("a"), "%-1"},
        {"%x%1", ArgumentSlots("a"), "%xa"},
        {"%!d!", ArgumentSlots(7), "%!d!"},
        {"%\xE9%1", ArgumentSlots("a"),
         "%\xE9"
         "a"},
        // A single one at the end.
        {"%", ArgumentSlots(), "%"},
        {"50%", ArgumentSlots(), "50%"},
        {"%1%", ArgumentSlots("a"), "a%"},
        {"%%%", ArgumentSlots(), "%%"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, EndsAtInsert0)
{
    ExpandCase const cases[] = {
        {"a%0b", ArgumentSlots(), "a"},
        {"%0", ArgumentSlots(), ""},
        {"%01", ArgumentSlots("a"), ""},
        {"%%0", ArgumentSlots(), "%0"},
        {"%1%0%2", ArgumentSlots("a", "b"), "a"},
        {"a\n%0\r", ArgumentSlots(), "a\n"},
        // An insert after it is not seen: insert 1 takes one slot, whatever its conversion there.
        {"%2%0%1!d %d!", ArgumentSlots(1, "b", "c"), "b"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, MakesLineEndsAlike)
{
    ExpandCase const cases[] = {
        {"a\r\nb", ArgumentSlots(), "a\r\nb"},
        {"a\n\rb", ArgumentSlots(), "a\r\nb"},
        {"a\nb", ArgumentSlots(), "a\nb"},
        {"a\rb", ArgumentSlots(), "a\rb"},
        {"\n\n", ArgumentSlots(), "\n\n"},
        {"\r\r", ArgumentSlots(), "\r\r"},
        // Pairs are made from the front.
        {"\r\n\r", ArgumentSlots(), "\r\n\r"},
        {"\n\r\n", ArgumentSlots(), "\r\n\n"},
        {"\r\r\n", ArgumentSlots(), "\r\r\n"},
        {"\n\n\r", ArgumentSlots(), "\n\r\n"},
        {"\n\r\n\r", ArgumentSlots(), "\r\n\r\n"},
        {"\r\n\n\r", ArgumentSlots(), "\r\n\r\n"},
        // An insert between the two separates them, and so does a per-cent sign.
        {"\n%1\r", ArgumentSlots(""), "\n\r"},
        {"\n%%\r", ArgumentSlots(), "\n%\r"},
        {"%\n\r", ArgumentSlots(), "%\n\r"},
        {"%\r\n\r", ArgumentSlots(), "%\r\r\n"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, AppendsAndCountsWhatWasThere)
{
    ArgumentSlots slots("a", "b");
    std::string out = "front ";
    EXPECT_EQ(gen_formatmessage(out, "%2 %1", slots.begin()), 9U);
    EXPECT_EQ(out, "front b a");
    EXPECT_EQ(gen_formatmessage(out, "", slots.begin()), 9U);
    EXPECT_EQ(gen_formatmessage(out, "%0", slots.begin()), 9U);
    EXPECT_EQ(out, "front b a");
    EXPECT_EQ(gen_formatmessage(out, "!", nullptr), 10U);
    EXPECT_EQ(out, "front b a!");
}

TEST(GenFormatMessage, TakesTextsOfAnyLength)
{
    for (int size : {1, 100, 510, 511, 512, 513, 1000, 5000}) {
        std::string const text = repeated("x", size);
        std::string const argument = repeated("y", size);
        ArgumentSlots slots(argument.c_str(), 7);
        for (std::string const inserts : {"%1%2!d!%1", "%2!d!%1%2!d!"}) {
            std::string const inserted = inserts[1] == '1' ? argument + "7" + argument : "7" + argument + "7";
            std::string out = "front";
            gen_formatmessage(out, (text + inserts + text).c_str(), slots.begin());
            EXPECT_TRUE(out == "front" + text + inserted + text) << inserts << ", texts of " << size;
        }
    }
}

TEST(GenFormatMessage, PrintsTheLimitsOfANumber)
{
    ExpandCase const cases[] = {
        {"%1!d!", ArgumentSlots(INT_MIN), "-2147483648"},
        {"%1!d!", ArgumentSlots(INT_MAX), "2147483647"},
        {"%1!d!", ArgumentSlots(0), "0"},
        // The low half of the slot counts.
        {"%1!d!", ArgumentSlots(0x7FFFFFFF80000000), "-2147483648"},
        {"%1!d!", ArgumentSlots(0x100000000), "0"},
    };
    for (ExpandCase const &c : cases)
        EXPECT_EQ(expanded(c.format, c.slots), c.text) << shown(c.format);
}

TEST(GenFormatMessage, CountsZeroCharactersOfItsArguments)
{
    ArgumentSlots slots(0);
    std::string out;
    EXPECT_EQ(gen_formatmessage(out, "<%1!c!>", slots.begin()), 3U);
    EXPECT_EQ(out, std::string("<\0>", 3));
}

TEST(GenFormatMessage, WritesToNoArgument)
{
    int written = -1;
    ArgumentSlots slots(&written, "b");
    std::vector<char> const before(slots.begin(), slots.begin() + 16);
    std::string out;
    gen_formatmessage(out, "<%1!n!|%2|%1!lln!>", slots.begin());
    EXPECT_EQ(out, "<|b|>");
    EXPECT_EQ(written, -1);
    EXPECT_EQ(std::vector<char>(slots.begin(), slots.begin() + 16), before);
}

// The area of the conversions: 4095 bytes for conversions of 1 + n bytes with a terminator each.
TEST(GenFormatMessage, HasRoomFor4095BytesOfConversions)
{
    auto const long_insert = [](int number, int size) {
        return "%" + std::to_string(number) + "!d" + std::string(static_cast<std::size_t>(size) - 1, 'x') + '!';
    };
    struct
    {
        std::string format;
        std::string text;
    } const cases[] = {
        {long_insert(1, 4092), "7" + std::string(4091, 'x')},
        {long_insert(1, 4093), "7" + std::string(4092, 'x')}, // fills it with its terminator
        {long_insert(1, 4094), ""},                           // no room for the terminator
        {long_insert(1, 4095), ""},
        {long_insert(1, 100000), ""},
        {long_insert(1, 4094) + "tail", "tail"},
        {long_insert(1, 4000) + "|" + long_insert(2, 91), "7" + std::string(3999, 'x') + "|8" + std::string(90, 'x')},
        {long_insert(1, 4000) + "|" + long_insert(2, 92), "7" + std::string(3999, 'x') + "|"},
        // After a full area nothing is printed, and the slot is not taken.
        {long_insert(1, 4093) + "|%2!d!|%1!d!", "7" + std::string(4092, 'x') + "||"},
        {long_insert(1, 4094) + "|%2!d!|%1!d!", "||"},
        // An insert that fits, used again after the full area: its last conversion counts, which is empty, so that
        // insert 2 is in slot 1.
        {"%2!d!|" + long_insert(1, 5000), "7|"},
        {"%2!d!|%1!d!|" + long_insert(1, 5000), "7|7|"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(expanded(c.format, ArgumentSlots(7, 8, 9)), c.text) << shown(c.format.substr(0, 40));
}

TEST(GenFormatMessage, HasRoomFor1365PlainInserts)
{
    EXPECT_EQ(expanded(repeated("%1", 1365), ArgumentSlots("a")), repeated("a", 1365));
    EXPECT_EQ(expanded(repeated("%1", 1366) + ".", ArgumentSlots("a")), repeated("a", 1365) + ".");
    EXPECT_EQ(expanded(repeated("%1", 100000), ArgumentSlots("a")), repeated("a", 1365));
}

TEST(GenFormatMessage, ExpandsEveryShortTemplate)
{
    constexpr char ALPHABET[] = {'%', '0', '1', '2', '!', 'd', '\r', '\n', 'a'};
    ArgumentSlots slots = numbered_texts();
    std::vector<std::string> templates{""};
    for (std::size_t i = 0; i < templates.size(); ++i) {
        std::string const format = templates[i];
        std::string out;
        gen_formatmessage(out, format.c_str(), slots.begin());
        ASSERT_EQ(out, FormatMessageReference(format, slots.begin()).text()) << shown(format);
        for (char c : ALPHABET)
            if (format.size() < 5)
                templates.push_back(format + c);
    }
    EXPECT_EQ(templates.size(), 66430U);
}

constexpr char const *NO_TABLES =
    "gen_formatmessage: FORMAT_MESSAGE_FROM_SYSTEM and FORMAT_MESSAGE_FROM_HMODULE are not supported";
constexpr char const *NO_STRING = "gen_formatmessage: The FORMAT_MESSAGE_FROM_STRING flag must be used";
constexpr char const *HAS_WIDTH = "gen_formatmessage: FORMAT_MESSAGE_MAX_WIDTH_MASK is not supported.\n";

void expect_rejection(std::initializer_list<unsigned long> faulty_flags, std::string const &error)
{
    for (unsigned long flags : faulty_flags) {
        char buffer[16];
        EXPECT_EXIT(gen_formatmessage(flags, "x", 0, 0, buffer, sizeof buffer, nullptr),
                    ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(error, "gen_string_message"))
            << "flags " << flags;
    }
}

TEST(GenFormatMessageDeathTest, RejectsTablesOfTheSystem)
{
    expect_rejection({0x1800, 0x18FF, 0xC00, 0x1400, 0x1C00, 0x14FF, 0xE00}, NO_TABLES);
}

TEST(GenFormatMessageDeathTest, NeedsATemplate)
{
    // One of them has everything but the three sources.
    expect_rejection({0, 0x200, 0x300, 0xFF, 0xFFFFE2FF, 0x800, 0x1000}, NO_STRING);
}

TEST(GenFormatMessageDeathTest, RejectsEachBitOfAWidth)
{
    expect_rejection({0x401, 0x402, 0x404, 0x408, 0x410, 0x420, 0x440, 0x480, 0x4FF, 0x701}, HAS_WIDTH);
}

TEST(GenFormatMessageFlags, HaveTheValuesOfTheSystem)
{
    EXPECT_EQ(FORMAT_MESSAGE_ALLOCATE_BUFFER, 0x100UL);
    EXPECT_EQ(FORMAT_MESSAGE_IGNORE_INSERTS, 0x200UL);
    EXPECT_EQ(FORMAT_MESSAGE_FROM_STRING, 0x400UL);
    EXPECT_EQ(FORMAT_MESSAGE_FROM_HMODULE, 0x800UL);
    EXPECT_EQ(FORMAT_MESSAGE_FROM_SYSTEM, 0x1000UL);
    EXPECT_EQ(FORMAT_MESSAGE_ARGUMENT_ARRAY, 0x2000UL);
    EXPECT_EQ(FORMAT_MESSAGE_MAX_WIDTH_MASK, 0xFFUL);
}

// A buffer that shows what was written.
constexpr char UNTOUCHED = '\x7E';

struct BufferCase
{
    char const *source;
    unsigned long flags; // in addition to the required one
    unsigned long size;
    std::uint32_t length;
    std::string written; // with its terminator
};

TEST(GenFormatMessageIntoBuffer, CutsAndTerminates)
{
    using namespace std::string_literals;
    BufferCase const cases[] = {
        {"hello", 0, 16, 5, "hello\0"s},
        {"hello", 0, 7, 5, "hello\0"s},
        {"hello", 0, 6, 5, "hello\0"s},
        {"hello", 0, 5, 4, "hell\0"s},
        {"hello", 0, 4, 3, "hel\0"s},
        {"hello", 0, 2, 1, "h\0"s},
        {"hello", 0, 1, 0, "\0"s},
        {"hello", 0, ULONG_MAX, 5, "hello\0"s},
        // An empty text writes nothing, and needs no room.
        {"", 0, 16, 0, ""},
        {"", 0, 0, 0, ""},
        {"%0hello", 0, 16, 0, ""},
        // A buffer of no bytes stays as it is.
        {"hello", 0, 0, 0, ""},
        {"%1", 0x200, 0, 0, ""},
        {"", 0x200, 16, 0, ""},
        // Inserts and line ends.
        {"%2 %1!s!\n\r", 0, 16, 7, "bb a\r\n\0"s.insert(4, "A")},
        {"%2", 0, 2, 1, "b\0"s},
        {"%2 %1\n\r%%%0x", 0x200, 16, 12, "%2 %1\n\r%%%0x\0"s},
        {"%1", 0x200, 2, 1, "%\0"s},
        {"%", 0x200, 16, 1, "%\0"s},
        // The flag of argument arrays, and unknown ones, don't matter.
        {"%1", 0x2000, 16, 2, "aA\0"s},
        {"%1", 0xFFFFC000, 16, 2, "aA\0"s},
    };
    for (BufferCase const &c : cases) {
        ArgumentSlots slots("aA", "bb");
        std::string const before(16, UNTOUCHED);
        std::string buffer = before;
        std::uint32_t const length =
            gen_formatmessage(0x400 | c.flags, c.source, 4711, 1031, buffer.data(), c.size, slots.begin());
        std::string const what = shown(c.source) + ", size " + std::to_string(c.size);
        EXPECT_EQ(length, c.length) << what;
        EXPECT_EQ(shown(buffer), shown(c.written + before.substr(c.written.size()))) << what;
    }
}

TEST(GenFormatMessageIntoBuffer, StopsAtAZeroCharacterAndFillsUp)
{
    ArgumentSlots slots(0);
    std::string buffer(8, UNTOUCHED);
    EXPECT_EQ(gen_formatmessage(0x400, "a%1!c!bc", 0, 0, buffer.data(), 8, slots.begin()), 4U);
    EXPECT_EQ(shown(buffer), shown(std::string("a\0\0\0\0", 5) + std::string(3, UNTOUCHED)));
}

TEST(GenFormatMessageIntoBuffer, IgnoresIdentifierAndLanguage)
{
    for (unsigned long number : {0UL, 1UL, ULONG_MAX}) {
        char buffer[16];
        EXPECT_EQ(gen_formatmessage(0x400, "x", number, number, buffer, sizeof buffer, nullptr), 1U) << number;
        EXPECT_STREQ(buffer, "x") << number;
    }
}

struct BlockCase
{
    char const *source;
    unsigned long flags; // in addition to the required ones
    unsigned long size;
    std::uint32_t length;
    char const *text;
};

TEST(GenFormatMessageIntoBlock, HasAtLeastTheSizeAndIsFilledWithZeros)
{
    BlockCase const cases[] = {
        {"hello", 0, 0, 5, "hello"},        {"hello", 0, 1, 5, "hello"},
        {"hello", 0, 5, 5, "hello"},        {"hello", 0, 6, 6, "hello"},
        {"hello", 0, 64, 64, "hello"},      {"hello", 0, 100000, 100000, "hello"},
        {"%1 %1!3s!", 0, 4, 5, "a   a"},    {"%1%0b", 0, 0, 1, "a"},
        {"\n\r", 0, 0, 2, "\r\n"},          {"%1\n\r", 0x200, 0, 4, "%1\n\r"},
        {"%1", 0x200 | 0x2000, 3, 3, "%1"},
    };
    for (BlockCase const &c : cases) {
        ArgumentSlots slots("a");
        char *block = nullptr;
        std::uint32_t const length =
            gen_formatmessage(0x500 | c.flags, c.source, 0, 0, reinterpret_cast<char *>(&block), c.size, slots.begin());
        std::string const what = shown(c.source) + ", size " + std::to_string(c.size);
        EXPECT_EQ(length, c.length) << what;
        ASSERT_NE(block, nullptr) << what;
        std::string expected = c.text;
        expected.resize(c.length + 1);
        EXPECT_EQ(std::string(block, length + 1), expected) << what;
        std::free(block);
    }
}

TEST(GenFormatMessageIntoBlock, IsNullForAnEmptyText)
{
    for (char const *source : {"", "%0text", "%1"})
        for (unsigned long size : {0UL, 1UL, 64UL}) {
            ArgumentSlots slots("");
            char other = 'x';
            char *block = &other;
            EXPECT_EQ(gen_formatmessage(0x500, source, 0, 0, reinterpret_cast<char *>(&block), size, slots.begin()), 0U)
                << shown(source) << ", size " << size;
            EXPECT_EQ(block, nullptr) << shown(source) << ", size " << size;
        }
}

TEST(GenFormatMessage, ReadsNothingAfterItsTemplate)
{
    for (std::string const text : {"", "%", "%%", "%1", "%12", "%1!", "%1!d", "%1!d!", "a\n", "a\r", "\n\r", "%0"}) {
        std::vector<char> const exact = terminated(text);
        ArgumentSlots slots = numbered_texts();
        std::string out;
        gen_formatmessage(out, exact.data(), slots.begin());
        EXPECT_EQ(out, FormatMessageReference(text, slots.begin()).text()) << shown(text);
    }
}

} // namespace
