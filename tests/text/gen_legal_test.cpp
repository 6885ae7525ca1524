#include "gen_legal_sys.h"

#include "tests/support/texts.h"
#include "ver_sys.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Each;
using testing::ElementsAreArray;
using testing::Ge;
using testing::Le;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

using Lines = std::vector<std::string>;

struct Table
{
    char const *name;
    Lines rows;
    int size; // as exported
    int expected_size;
    std::size_t row_count;
    std::size_t shortest;
    std::size_t longest;
};

template <std::size_t ROWS>
Lines rows_of(char const *const (&rows)[ROWS])
{
    return Lines(rows, rows + ROWS);
}

std::vector<Table> const TABLES = {
    {"banner", rows_of(GEN_LEGAL_BANNER_ARRAY), GEN_LEGAL_BANNER_ARRAY_SIZE, 13, 13, 36, 66},
    {"encryption", rows_of(GEN_LEGAL_BSTRM_ENC_ARRAY), GEN_LEGAL_BSTRM_ENC_ARRAY_SIZE, 51, 51, 16, 65},
    // The size is wrong and stays so.
    {"trademark", rows_of(GEN_LEGAL_TRADEMARK_ARRAY), GEN_LEGAL_TRADEMARK_ARRAY_SIZE, 9, 7, 35, 66},
    {"warning", rows_of(GEN_COPYRIGHT_WARNING_ARRAY), GEN_COPYRIGHT_WARNING_ARRAY_SIZE, 5, 5, 45, 63},
};

// The row as it appears in a text for reading: at most one of its trailing blanks is left.
std::string trimmed(std::string row)
{
    while (row.size() > 1 && row[row.size() - 1] == ' ' && row[row.size() - 2] == ' ')
        row.pop_back();
    return row;
}

Lines trimmed(Lines rows)
{
    for (std::string &row : rows)
        row = trimmed(row);
    return rows;
}

Lines prefixed(std::string const &prefix, Lines rows)
{
    for (std::string &row : rows)
        row.insert(0, prefix);
    return rows;
}

Lines banner_with_copyright()
{
    Lines lines = rows_of(GEN_LEGAL_BANNER_ARRAY);
    lines.insert(lines.begin(), ver_get_copyright_string());
    return lines;
}

bool is_blank(std::string const &row)
{
    return row.find_first_not_of(' ') == std::string::npos;
}

TEST(GenLegalTables, HaveTheirRowsAndWidths)
{
    for (Table const &table : TABLES) {
        SCOPED_TRACE(table.name);
        EXPECT_EQ(table.size, table.expected_size);
        EXPECT_EQ(table.rows.size(), table.row_count);
        std::vector<std::size_t> widths;
        for (std::string const &row : table.rows)
            widths.push_back(row.size());
        EXPECT_EQ(*std::min_element(widths.begin(), widths.end()), table.shortest);
        EXPECT_EQ(*std::max_element(widths.begin(), widths.end()), table.longest);
    }
}

TEST(GenLegalTables, HoldPrintableCharactersAlone)
{
    for (Table const &table : TABLES)
        for (std::string const &row : table.rows)
            for (char c : row)
                EXPECT_TRUE(c >= ' ' && c <= '~') << table.name << ": " << row;
}

TEST(GenLegalTables, TheDisclaimerHasATitleAnUnderlineAndBlankRows)
{
    Lines const rows = rows_of(GEN_LEGAL_BSTRM_ENC_ARRAY);
    EXPECT_FALSE(is_blank(rows[0]));
    EXPECT_EQ(rows[1], std::string(rows[0].size(), '='));

    std::size_t blank_rows = 0;
    for (std::string const &row : rows)
        if (is_blank(row)) {
            ++blank_rows;
            EXPECT_THAT(row, SizeIs(62));
        }
    EXPECT_GE(blank_rows, 2u);
    EXPECT_TRUE(is_blank(rows[2]));
    EXPECT_FALSE(is_blank(rows[50]));

    auto const is_padded = [](std::string const &row) { return row.size() == 62; };
    EXPECT_GT(std::count_if(rows.begin(), rows.end(), is_padded), 51 / 2) << "most rows have 62 characters";
}

TEST(GenLegalTables, HaveARowWithThreeBlanksAtItsEnd)
{
    Lines const rows = rows_of(GEN_LEGAL_BANNER_ARRAY);
    EXPECT_THAT(rows.back(), testing::EndsWith("   "));
    EXPECT_THAT(rows.back(), Not(testing::EndsWith("    ")));
}

struct TrimmedCase
{
    char const *name;
    std::string (*text)();
    Lines rows;
};

TEST(GenLegalText, OfATableLeavesOneBlankAtTheEndOfALine)
{
    TrimmedCase const cases[] = {
        {"banner", gen_get_legal_banner, rows_of(GEN_LEGAL_BANNER_ARRAY)},
        {"trademark", gen_get_legal_trademark_text, rows_of(GEN_LEGAL_TRADEMARK_ARRAY)},
        {"warning", gen_get_legal_warning_text, rows_of(GEN_COPYRIGHT_WARNING_ARRAY)},
        {"encryption", gen_get_bitstream_encryption_legal_text, rows_of(GEN_LEGAL_BSTRM_ENC_ARRAY)},
    };
    for (TrimmedCase const &c : cases)
        EXPECT_THAT(lines_of(c.text()), ElementsAreArray(trimmed(c.rows))) << c.name;
}

TEST(GenLegalText, OfTheDisclaimerHasSingleBlanksForBlankRows)
{
    Lines const rows = rows_of(GEN_LEGAL_BSTRM_ENC_ARRAY);
    Lines const lines = lines_of(gen_get_bitstream_encryption_legal_text());
    ASSERT_THAT(lines, SizeIs(51));
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i] == " ", is_blank(rows[i])) << "line " << i;
}

TEST(GenLegalText, OfARowWithoutBlanksAtItsEndIsTheRow)
{
    Lines const rows = rows_of(GEN_LEGAL_BANNER_ARRAY);
    Lines const lines = lines_of(gen_get_legal_banner());
    ASSERT_THAT(lines, SizeIs(13));
    EXPECT_EQ(lines[0], rows[0]);
    EXPECT_EQ(lines[12] + "  ", rows[12]);
}

TEST(GenLegalText, OfTheTrademarkNoticeHasSevenLines)
{
    EXPECT_THAT(lines_of(gen_get_legal_trademark_text()), SizeIs(7));
}

constexpr char const *PREFIXES[] = {"", "// ", "--", " \t", "%s\n"};

TEST(GenLegalHeading, PutsThePrefixBeforeEveryLine)
{
    for (std::string const prefix : PREFIXES) {
        std::string expected;
        for (std::string const &line : prefixed(prefix, banner_with_copyright()))
            expected += line + '\n';
        EXPECT_EQ(gen_get_legal_text(prefix.c_str()), expected) << "prefix \"" << prefix << '"';
    }
}

TEST(GenLegalHeading, HasNoPrefixForNull)
{
    Lines const lines = lines_of(gen_get_legal_text(nullptr));
    EXPECT_THAT(lines, SizeIs(14));
    EXPECT_THAT(lines, ElementsAreArray(banner_with_copyright()));
}

TEST(GenLegalHeading, KeepsBlanksAtTheEndOfALine)
{
    EXPECT_THAT(gen_get_legal_text("# "), testing::EndsWith("   \n"));
}

TEST(GenDoNotEditText, HasThreeLinesOfItsWidths)
{
    Lines const lines = lines_of(gen_get_do_not_edit_text(nullptr));
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_THAT(lines, Each(SizeIs(testing::AllOf(Ge(58u), Le(70u)))));
    EXPECT_THAT(lines, testing::Contains(SizeIs(58)));
    EXPECT_THAT(lines, testing::Contains(SizeIs(70)));
}

TEST(GenDoNotEditText, PutsThePrefixBeforeEveryLine)
{
    Lines const bare = lines_of(gen_get_do_not_edit_text(nullptr));
    for (char const *prefix : {"", "// ", "--"}) {
        Lines const lines = lines_of(gen_get_do_not_edit_text(prefix));
        EXPECT_THAT(lines, ElementsAreArray(prefixed(prefix, bare))) << "prefix \"" << prefix << '"';
        EXPECT_THAT(lines, Each(StartsWith(prefix)));
    }
}

} // namespace
