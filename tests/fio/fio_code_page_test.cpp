// The file system in code page 932, in which a character may have two bytes. Run in a Japanese environment.
#include "fio_sys.h"

#include "gen_fstream_sys.h"
#include "gen_path_sys.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <string>

#include <windows.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Characters whose second bytes have the codes of "\", "A" and "a".
constexpr char const *SO = "\x83\x5c";
constexpr char const *A = "\x83\x41";
constexpr char const *DI = "\x83\x61";

class CodePage932 : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(GetACP(), 932U); }

    std::string at(std::string const &name) const { return m_temp.text() + '/' + name; }

    TempDir m_temp;
};

void write(std::string const &path)
{
    std::brisel_ofstream out(path.c_str(), std::ios::out, GEN_SHARE_ALL);
    EXPECT_TRUE(out.good()) << path;
}

TEST_F(CodePage932, FilesAreMadeAndFound)
{
    std::string const directory = at(SO);
    std::string const name = std::string(SO) + ".v";
    ASSERT_TRUE(FIO_FILE_SYSTEM::create(directory));
    write(directory + '\\' + name);
    EXPECT_TRUE(std::filesystem::is_regular_file(m_temp.path() / L"\u30bd" / L"\u30bd.v"));

    EXPECT_TRUE(FIO_FILE_SYSTEM::exists(directory + '/' + name));
    FIO_FIND find(directory);
    EXPECT_EQ(find.find_first_relative_path(name).fullpath(), directory + '/' + name);
    std::list<FIO_PATH> found;
    FIO_FIND above(m_temp.text());
    EXPECT_TRUE(above.find_all("*", {}, &found, /*absolute=*/true, /*descend=*/true));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().fullpath(), directory + '/' + name);
    FIO_FIND scan(directory + "/*.v");
    EXPECT_EQ(scan.find_first(), name);

    CurrentDirectory const current(m_temp.path() / L"\u30bd");
    EXPECT_EQ(FIO_FILE_SYSTEM::get_current_directory(), directory);
    EXPECT_EQ(FIO_PATH(name).become_absolute("").fullpath(), directory + '/' + name);
    EXPECT_EQ(gen_create_temp_file(directory, "p").rfind(directory + "/p", 0), 0U);
}

TEST_F(CodePage932, LettersAreFoldedAsCharacters)
{
    write(at(std::string(A) + ".v"));
    write(at(std::string(DI) + ".v"));
    FIO_FIND scan(at(std::string(A) + "*.V"));
    EXPECT_EQ(scan.find_first(), std::string(A) + ".v");
    EXPECT_EQ(scan.find_next(), "");
}

TEST_F(CodePage932, FilesOutsideTheCodePageAreNoResults)
{
    std::ofstream(m_temp.path() / L"\u00e4.v") << "similar to a.v";
    FIO_FIND scan(at("*"));
    EXPECT_EQ(scan.find_first(), "");
}

} // namespace
