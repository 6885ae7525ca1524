#include "gen_string_sys.h"

#include <gtest/gtest.h>

namespace {

// Every byte but the terminator, in order.
std::string all_bytes()
{
    std::string text;
    for (int code = 1; code < 256; ++code)
        text += static_cast<char>(code);
    return text;
}

// The same with the letters from `from` on replaced by those from `to` on.
std::string all_bytes_folded(char from, char to)
{
    std::string text = all_bytes();
    for (int letter = 0; letter < 26; ++letter)
        text[static_cast<std::size_t>(from + letter - 1)] = static_cast<char>(to + letter);
    return text;
}

std::string const LOWER = all_bytes_folded('A', 'a');
std::string const UPPER = all_bytes_folded('a', 'A');

using FoldCode = char (*)(int);
using FoldText = void (*)(char *);
using FoldString = void (*)(std::string &);
using FoldAndReturn = char *(*)(char *);

struct CodeCase
{
    char const *name;
    FoldCode fold;
    char from;
    char to;
};
constexpr CodeCase CODE_CASES[] = {
    {"gen_ascii_tolower", gen_ascii_tolower, 'A', 'a'},
    {"gen_ascii_toupper", gen_ascii_toupper, 'a', 'A'},
};

struct TextCase
{
    char const *name;
    FoldText fold_text;
    FoldString fold_string;
    bool lower;
};
constexpr TextCase TEXT_CASES[] = {
    {"gen_tolower", gen_tolower, gen_tolower, true},
    {"gen_ascii_tolower", gen_ascii_tolower, gen_ascii_tolower, true},
    {"gen_toupper", gen_toupper, gen_toupper, false},
    {"gen_ascii_toupper", gen_ascii_toupper, gen_ascii_toupper, false},
};

struct ReturnCase
{
    char const *name;
    FoldAndReturn fold;
    bool lower;
};
constexpr ReturnCase RETURN_CASES[] = {
    {"gen_strlwr", gen_strlwr, true},
    {"gen_strupr", gen_strupr, false},
};

} // namespace

TEST(GenAsciiFoldCode, FoldsLettersAndKeepsTheLowByteOfAnythingElse)
{
    for (CodeCase const &c : CODE_CASES)
        for (int code = -1000; code <= 1000; ++code) {
            bool const is_letter = code >= c.from && code < c.from + 26;
            int const folded = is_letter ? code - c.from + c.to : code;
            EXPECT_EQ(static_cast<unsigned char>(c.fold(code)), static_cast<unsigned>(folded) & 0xff)
                << c.name << " of " << code;
        }
}

TEST(GenAsciiFoldCode, KnowsNoOtherCodesOfLetters)
{
    EXPECT_EQ(gen_ascii_tolower(200), static_cast<char>(200));
    EXPECT_EQ(gen_ascii_tolower(0x141), 'A');
    EXPECT_EQ(gen_ascii_toupper(0x161), 'a');
    EXPECT_EQ(gen_ascii_tolower(-191), 'A');
}

TEST(GenFoldText, FoldsUpToTheTerminator)
{
    for (TextCase const &c : TEXT_CASES) {
        std::string text = all_bytes() + '\0' + "aA";
        c.fold_text(text.data());
        EXPECT_EQ(text, (c.lower ? LOWER : UPPER) + '\0' + "aA") << c.name;
    }
}

TEST(GenFoldText, PassesOverNullAndTheEmptyText)
{
    for (TextCase const &c : TEXT_CASES) {
        c.fold_text(nullptr);
        char text[] = {'\0', 'a', 'A', '\0'};
        c.fold_text(text);
        EXPECT_EQ(std::string(text, sizeof text), std::string("\0aA\0", 4)) << c.name;
    }
}

TEST(GenFoldString, FoldsAfterEmbeddedZeros)
{
    for (TextCase const &c : TEXT_CASES) {
        std::string text = '\0' + all_bytes() + '\0' + "aA";
        c.fold_string(text);
        std::string const folded = c.lower ? LOWER : UPPER;
        EXPECT_EQ(text, '\0' + folded + '\0' + (c.lower ? "aa" : "AA")) << c.name;

        std::string empty;
        c.fold_string(empty);
        EXPECT_EQ(empty, "") << c.name;
    }
}

TEST(GenFoldAndReturn, FoldsInPlaceAndReturnsTheText)
{
    for (ReturnCase const &c : RETURN_CASES) {
        std::string text = all_bytes();
        EXPECT_EQ(c.fold(text.data()), text.data()) << c.name;
        EXPECT_EQ(text, c.lower ? LOWER : UPPER) << c.name;
        EXPECT_EQ(c.fold(nullptr), nullptr) << c.name;
    }
}
