#include "fio_sys.h"

#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> texts(std::list<FIO_PATH> const &paths)
{
    std::vector<std::string> result;
    for (FIO_PATH const &path : paths)
        result.push_back(path.fullpath());
    return result;
}

// The results below a directory, without it.
std::vector<std::string> texts_under(TempDir const &temp, std::list<FIO_PATH> const &paths)
{
    std::vector<std::string> result;
    std::string const start = temp.text() + '/';
    for (std::string const &text : texts(paths))
        result.push_back(text.compare(0, start.size(), start) == 0 ? text.substr(start.size()) : "elsewhere: " + text);
    return result;
}

std::vector<std::string> scan(FIO_FIND &find)
{
    std::vector<std::string> names;
    for (std::string name = find.find_first(); !name.empty(); name = find.find_next())
        names.push_back(name);
    return names;
}

// A link to what the target names from the link's own directory; false where links can't be made.
bool make_link(TempDir const &temp, std::string const &target, std::string const &link)
{
    std::error_code error;
    std::filesystem::create_symlink(target, temp.path() / link, error);
    return !error;
}

// Whether the file system under the directory distinguishes case.
bool distinguishes_case(TempDir const &temp)
{
    temp.write("case_probe", "");
    return !std::filesystem::exists(temp.path() / "CASE_PROBE");
}

struct ListCase
{
    char const *text;
    std::vector<std::string> paths;
};

std::vector<ListCase> const LIST_CASES = {
    {"", {}},
    {";", {}},
    {";;;", {}},
    {"c:/a", {"c:/a"}},
    {"c:\\a\\", {"c:/a/"}},
    {"c:/a;d:/b/", {"c:/a", "d:/b/"}},
    {";c:/a;;d:/b;", {"c:/a", "d:/b"}},
    {"b;a;b", {"b", "a", "b"}},
    {" a ;b c", {" a ", "b c"}},
    {".;..", {".", ".."}},
    {"//host/share;/x//y", {"//host/share", "/x/y"}},
    // a star is a pattern in the last component of a lone text only
    {"c:/a*/b", {"c:/a*/b"}},
    {"c:/a*/", {"c:/a*/"}},
    {"c:/a*;", {"c:/a*"}},
    {"a;b*", {"a", "b*"}},
    {"c:/*.ddb", {}},
    {"*", {}},
    {"c:/a/b?", {}},
    {"c:\\a\\?", {}},
};

TEST(FioFindList, IsReadFromTheText)
{
    FIO_FIND again("former;list");
    std::list<FIO_PATH> *const paths = again.get_paths();
    for (ListCase const &c : LIST_CASES) {
        FIO_FIND find(c.text);
        EXPECT_EQ(texts(*find.get_paths()), c.paths) << '"' << c.text << '"';
        again.init(c.text);
        EXPECT_EQ(again.get_paths(), paths);
        EXPECT_EQ(texts(*paths), c.paths) << '"' << c.text << '"';
    }
}

TEST(FioFindList, IsTakenUnchanged)
{
    std::list<FIO_PATH> const given = {FIO_PATH("b;c"), FIO_PATH("a*"), FIO_PATH("c:/x/")};
    FIO_FIND find(given);
    EXPECT_THAT(texts(*find.get_paths()), ElementsAre("b;c", "a*", "c:/x/"));
    EXPECT_EQ(find.find_first(), "");
}

class FioFindFirst : public testing::Test
{
protected:
    std::string find(std::string const &list, std::string const &path)
    {
        return FIO_FIND(list).find_first_relative_path(path).fullpath();
    }
    std::string at(std::string const &name) const { return m_temp.text(name); }

    TempDir m_temp;
};

TEST_F(FioFindFirst, GivesTheFirstHitInTheOrderOfTheList)
{
    m_temp.write("a/x.v", "");
    m_temp.write("b/x.v", "");
    m_temp.write("b/y.v", "");
    EXPECT_EQ(find(at("a") + ';' + at("b"), "x.v"), at("a/x.v"));
    EXPECT_EQ(find(at("b") + ';' + at("a"), "x.v"), at("b/x.v"));
    EXPECT_EQ(find(at("a") + ';' + at("b"), "y.v"), at("b/y.v"));
    EXPECT_EQ(find(at("a") + ';' + at("b"), "z.v"), "");
    EXPECT_EQ(find(at("none") + ';' + at("b"), "x.v"), at("b/x.v"));
    EXPECT_EQ(find("", "x.v"), "");
}

TEST_F(FioFindFirst, TakesEveryFormOfDirectoryAndPath)
{
    m_temp.write("a/sub/x.v", "");
    m_temp.write("a/b c.v", "");
    for (std::string const &directory : {at("a"), at("a/"), at("a//"), at("a\\")}) {
        EXPECT_EQ(find(directory, "sub/x.v"), at("a/sub/x.v")) << directory;
        EXPECT_EQ(find(directory, "sub\\x.v"), at("a/sub/x.v")) << directory;
        EXPECT_EQ(find(directory, "b c.v"), at("a/b c.v")) << directory;
    }
    std::list<FIO_PATH> paths = {FIO_PATH(at("a"))};
    paths.front().path_separator('\\');
    FIO_FIND backwards(paths);
    EXPECT_EQ(backwards.find_first_relative_path("sub/x.v").fullpath(), at("a/sub/x.v"));
    EXPECT_EQ(backwards.find_first_relative_path(FIO_PATH("sub/x.v").path_separator('\\')).fullpath(), at("a/sub/x.v"));
}

TEST_F(FioFindFirst, TakesDirectoriesToo)
{
    m_temp.write("a/sub/x.v", "");
    EXPECT_EQ(find(at("a"), "sub"), at("a/sub"));
    EXPECT_EQ(find(at("a"), "sub/"), at("a/sub/"));
}

TEST_F(FioFindFirst, DoesNotLookForNothingOrForAnAbsolutePath)
{
    std::string const file = m_temp.write("a/x.v", "");
    EXPECT_EQ(find(at("a"), ""), "");
    EXPECT_EQ(find(at("a"), "/x.v"), "");
    EXPECT_EQ(find(at("a"), "//x.v"), "");
    EXPECT_EQ(find(at("a"), file), "");
    EXPECT_EQ(find(at("a/*"), "x.v"), "") << "a pattern has no list";
}

TEST_F(FioFindFirst, LeavesTheDotsOfAbsoluteDirectoriesAlone)
{
    m_temp.write("a/x.v", "");
    m_temp.write("b/y.v", "");
    EXPECT_EQ(find(at("a/../b"), "y.v"), at("a/../b/y.v"));
    EXPECT_EQ(find(at("a"), "../b/y.v"), at("a/../b/y.v"));
}

TEST_F(FioFindFirst, CountsRelativeDirectoriesFromTheCurrentOne)
{
    m_temp.write("p/lib/x.v", "");
    m_temp.write("q/lib/x.v", "");
    m_temp.write("q/.dot/x.v", "");
    FIO_FIND search("none;lib/");
    {
        CurrentDirectory const current(m_temp.path() / "p");
        EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("p/lib/x.v"));
        EXPECT_EQ(find(".", "lib/x.v"), at("p/lib/x.v"));
        EXPECT_EQ(find("..", "q/lib/x.v"), at("q/lib/x.v"));
        EXPECT_EQ(find("lib", "../lib/x.v"), at("p/lib/x.v"));
    }
    CurrentDirectory const current(m_temp.path() / "q");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("q/lib/x.v"));
    EXPECT_EQ(find(".dot", "x.v"), at("q/.dot/x.v"));
}

TEST_F(FioFindFirst, SimplifiesDotsWithinRelativeDirectoriesAndPaths)
{
    m_temp.write("a/s/x.v", "");
    std::filesystem::create_directory(m_temp.path() / "b");
    CurrentDirectory const current(m_temp.path());
    EXPECT_EQ(find("b/../a", "s/x.v"), at("a/s/x.v"));
    EXPECT_EQ(find("a", "s/./x.v"), at("a/s/x.v"));
    EXPECT_EQ(find("a", "s/../s/x.v"), at("a/s/x.v"));
}

TEST_F(FioFindFirst, CountsRelativeDirectoriesFromTheOneThatWasSet)
{
    m_temp.write("p/lib/x.v", "");
    m_temp.write("q/lib/x.v", "");
    m_temp.write("q/y.v", "");
    m_temp.write("r/z.v", "");
    FIO_FIND search("lib;../q;" + at("r"));
    CurrentDirectory const current(m_temp.path());
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");

    for (std::string const &directory : {at("p"), at("p/"), at("p\\"), std::string("p"), std::string("./p/")}) {
        EXPECT_TRUE(search.set_directory_for_results_to_become_absolute_to(directory.c_str())) << directory;
        EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("p/lib/x.v")) << directory;
        EXPECT_EQ(search.find_first_relative_path("y.v").fullpath(), at("q/y.v")) << directory;
        EXPECT_EQ(search.find_first_relative_path("z.v").fullpath(), at("r/z.v")) << directory;
    }
    EXPECT_TRUE(search.set_directory_for_results_to_become_absolute_to(at("q").c_str()));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("q/lib/x.v"));

    search.init("lib");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("q/lib/x.v")) << "the directory stays";
    EXPECT_FALSE(search.set_directory_for_results_to_become_absolute_to(nullptr));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
    EXPECT_TRUE(search.set_directory_for_results_to_become_absolute_to(at("q").c_str()));
    EXPECT_FALSE(search.set_directory_for_results_to_become_absolute_to(""));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
}

TEST_F(FioFindFirst, FollowsEveryChangeOfTheLiveList)
{
    m_temp.write("a/x.v", "");
    m_temp.write("b/x.v", "");
    FIO_FIND search("");
    std::list<FIO_PATH> &paths = *search.get_paths();
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
    paths.emplace_back(at("b"));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("b/x.v"));
    paths.emplace_front(at("a"));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("a/x.v"));
    paths.front().cd("../b");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("b/x.v"));
    paths.front() = FIO_PATH();
    paths.back() = at("a");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("a/x.v")) << "an empty path is passed over";
    paths.clear();
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
}

TEST_F(FioFindFirst, SeesWhatIsThereAtTheMoment)
{
    FIO_FIND search(at(""));
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
    m_temp.write("x.v", "");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("x.v"));
    std::filesystem::remove(m_temp.path() / "x.v");
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), "");
}

// A result of one search does not change by the next one.
TEST_F(FioFindFirst, GivesResultsOfTheirOwn)
{
    m_temp.write("x.v", "");
    m_temp.write("a_longer_name_than_the_first_one.v", "");
    FIO_FIND search(at(""));
    FIO_PATH const first = search.find_first_relative_path("x.v");
    FIO_PATH const second = search.find_first_relative_path("a_longer_name_than_the_first_one.v");
    EXPECT_EQ(first.fullpath(), at("x.v"));
    EXPECT_EQ(second.fullpath(), at("a_longer_name_than_the_first_one.v"));
}

class FioFindAll : public testing::Test
{
protected:
    std::vector<std::string> find(std::string const &list, std::string const &name,
                                  std::vector<std::string> const &extensions, bool descend = false)
    {
        std::list<FIO_PATH> found;
        bool const any = FIO_FIND(list).find_all(name, extensions, &found, /*absolute=*/true, descend);
        EXPECT_EQ(any, !found.empty()) << list << ", " << name;
        return texts_under(m_temp, found);
    }
    std::string at(std::string const &name) const { return m_temp.text(name); }

    TempDir m_temp;
};

TEST_F(FioFindAll, GivesTheFilesInTheOrderOfTheListAndOfTheirNames)
{
    for (char const *name : {"b/x.vhd", "b/x.sv", "b/x.v", "a/x.v", "a/x.txt", "a/xx.v", "a/x", "a/sub/x.v"})
        m_temp.write(name, "");
    std::filesystem::create_directories(m_temp.path() / "a/x.sv");
    EXPECT_THAT(find(at("b") + ';' + at("a"), "x", {"v", "sv", "vhd"}),
                ElementsAre("b/x.sv", "b/x.v", "b/x.vhd", "a/x.v"));
    EXPECT_THAT(find(at("a") + ';' + at("none") + ';' + at("b/"), "x", {"vhd", "v"}),
                ElementsAre("a/x.v", "b/x.v", "b/x.vhd"));
    EXPECT_THAT(find(at("a"), "y", {"v"}), IsEmpty());
    EXPECT_THAT(find(at("a"), "x", {}), IsEmpty());
    EXPECT_THAT(find("", "x", {"v"}), IsEmpty());
}

TEST_F(FioFindAll, TakesExtensionsWithOrWithoutADot)
{
    m_temp.write("a/x.v", "");
    m_temp.write("a/x", "");
    m_temp.write("a/x.tar.v", "");
    EXPECT_THAT(find(at("a"), "x", {".v"}), ElementsAre("a/x.v"));
    EXPECT_THAT(find(at("a"), "x", {"v", ".v", "v"}), ElementsAre("a/x.v")) << "each file once";
    EXPECT_THAT(find(at("a"), "x", {""}), ElementsAre("a/x"));
    EXPECT_THAT(find(at("a"), "x", {"."}), ElementsAre("a/x"));
    EXPECT_THAT(find(at("a"), "x.tar", {"v"}), ElementsAre("a/x.tar.v"));
    EXPECT_THAT(find(at("a"), "x", {"tar.v"}), ElementsAre("a/x.tar.v"));
}

TEST_F(FioFindAll, LooksAtCaseAsTheFileSystemDoes)
{
    bool const apart = distinguishes_case(m_temp);
    m_temp.write("a/x.v", "");
    std::size_t const folded = apart ? 0 : 1;
    EXPECT_EQ(find(at("a"), "x", {"V"}).size(), folded);
    EXPECT_EQ(find(at("a"), "X", {"v"}).size(), folded);
    EXPECT_EQ(find(at("a"), "x", {"V", "v"}).size(), 1u);
}

TEST_F(FioFindAll, TakesEveryFileForAStar)
{
    for (char const *name : {"b/z.v", "b/a.txt", "a/q", "a/.hidden", "a/B.v", "a/sub/x.v"})
        m_temp.write(name, "");
    EXPECT_THAT(find(at("a") + ';' + at("b"), "*", {"v"}),
                ElementsAre("a/.hidden", "a/B.v", "a/q", "b/a.txt", "b/z.v"));
    EXPECT_THAT(find(at("a"), "*", {}), ElementsAre("a/.hidden", "a/B.v", "a/q"));
    EXPECT_THAT(find(at("none"), "*", {}), IsEmpty());
    EXPECT_THAT(find(at("b"), "?", {"v"}), IsEmpty()) << "no other wild card";
    EXPECT_THAT(find(at("b"), "z*", {"v"}), IsEmpty()) << "no other wild card";
}

TEST_F(FioFindAll, GoesDownIntoDirectoriesWhenAsked)
{
    for (char const *name : {"a/x.v", "a/y.v", "a/s/x.v", "a/s/t/x.v", "a/b/x.v", "a/b/y.v"})
        m_temp.write(name, "");
    EXPECT_THAT(find(at("a"), "x", {"v"}, /*descend=*/true), ElementsAre("a/x.v", "a/b/x.v", "a/s/x.v", "a/s/t/x.v"));
    EXPECT_THAT(find(at("a"), "*", {}, /*descend=*/true),
                ElementsAre("a/x.v", "a/y.v", "a/b/x.v", "a/b/y.v", "a/s/x.v", "a/s/t/x.v"));
}

TEST_F(FioFindAll, TakesANameWithADirectory)
{
    m_temp.write("a/sub/x.v", "");
    EXPECT_THAT(find(at("a"), "sub/x", {"v"}), ElementsAre("a/sub/x.v"));
    EXPECT_THAT(find(at("none"), at("a/sub/x"), {"v"}), IsEmpty());
    EXPECT_THAT(find(at("a"), "", {"v"}), IsEmpty());
}

TEST_F(FioFindAll, ResolvesRelativeDirectories)
{
    m_temp.write("p/lib/x.v", "");
    m_temp.write("q/x.v", "");
    FIO_FIND search("lib/;../q;" + at("q"));
    CurrentDirectory const current(m_temp.path());
    EXPECT_TRUE(search.set_directory_for_results_to_become_absolute_to("p"));
    std::list<FIO_PATH> found;
    EXPECT_TRUE(search.find_all("x", {"v"}, &found, /*absolute=*/true, false));
    EXPECT_THAT(texts_under(m_temp, found), ElementsAre("p/lib/x.v", "q/x.v", "q/x.v"));
    found.clear();
    EXPECT_TRUE(search.find_all("x", {"v"}, &found, /*absolute=*/false, false));
    EXPECT_THAT(texts(found), ElementsAre("lib/x.v", "../q/x.v", at("q/x.v")));
    found.clear();
    EXPECT_TRUE(search.find_all("*", {}, &found, /*absolute=*/false, false));
    EXPECT_THAT(texts(found), ElementsAre("lib/x.v", "../q/x.v", at("q/x.v")));
    found.clear();
    search.set_directory_for_results_to_become_absolute_to("");
    EXPECT_TRUE(search.find_all("x", {"v"}, &found, /*absolute=*/true, false));
    EXPECT_THAT(texts_under(m_temp, found), ElementsAre("q/x.v"));
}

TEST_F(FioFindAll, AppendsToWhatIsThere)
{
    m_temp.write("a/x.v", "");
    std::list<FIO_PATH> found = {FIO_PATH("first")};
    FIO_FIND search(at("a"));
    EXPECT_TRUE(search.find_all("x", {"v"}, &found, true, false));
    EXPECT_FALSE(search.find_all("y", {"v"}, &found, true, false)) << "only what this search found counts";
    EXPECT_THAT(texts(found), ElementsAre("first", at("a/x.v")));
    EXPECT_FALSE(search.find_all("x", {"v"}, nullptr, true, false));
    EXPECT_TRUE(search.find_all("x", {"v"}, search.get_paths(), true, false)) << "its own list";
    EXPECT_THAT(texts(*search.get_paths()), ElementsAre(at("a"), at("a/x.v")));
}

TEST_F(FioFindAll, TakesLinksToFilesAndStaysOutOfLinkedDirectories)
{
    m_temp.write("a/real.v", "");
    m_temp.write("a/sub/x.v", "");
    bool const file_link = make_link(m_temp, "real.v", "a/x.v");
    bool const directory_link = make_link(m_temp, ".", "a/loop");
    std::vector<std::string> by_name = {"a/sub/x.v"};
    std::vector<std::string> all = {"a/real.v", "a/sub/x.v"};
    if (file_link) {
        by_name.insert(by_name.begin(), "a/x.v");
        all.insert(all.begin() + 1, "a/x.v");
    }
    EXPECT_EQ(find(at("a"), "x", {"v"}, /*descend=*/true), by_name) << directory_link;
    EXPECT_EQ(find(at("a"), "*", {}, /*descend=*/true), all) << directory_link;
}

class FioFindScan : public testing::Test
{
protected:
    std::vector<std::string> find(std::string const &pattern)
    {
        FIO_FIND search(m_temp.text(pattern));
        return scan(search);
    }

    TempDir m_temp;
};

TEST_F(FioFindScan, GivesBareNamesInByteOrder)
{
    for (char const *name : {"c.ddb", "a.ddb", "B.ddb", "a.ddbx", "ddb", ".ddb", "a b.ddb", "sub/z.ddb"})
        m_temp.write(name, "");
    std::filesystem::create_directory(m_temp.path() / "directory.ddb");
    EXPECT_THAT(find("*.ddb"), ElementsAre(".ddb", "B.ddb", "a b.ddb", "a.ddb", "c.ddb"));
    EXPECT_THAT(find("sub/*"), ElementsAre("z.ddb"));
    EXPECT_THAT(find("sub\\?.ddb"), ElementsAre("z.ddb"));
    EXPECT_THAT(find("*.*"), ElementsAre(".ddb", "B.ddb", "a b.ddb", "a.ddb", "a.ddbx", "c.ddb", "ddb"));
    EXPECT_THAT(find("*.none"), IsEmpty());
    EXPECT_THAT(find("none/*"), IsEmpty());
}

TEST_F(FioFindScan, ScansTheCurrentDirectoryForABarePattern)
{
    m_temp.write("a.ddb", "");
    CurrentDirectory const current(m_temp.path());
    FIO_FIND search("*.ddb");
    EXPECT_THAT(scan(search), ElementsAre("a.ddb"));
}

TEST_F(FioFindScan, BeginsAnewAndEndsForGood)
{
    m_temp.write("a.v", "");
    FIO_FIND search(m_temp.text("*.v"));
    EXPECT_EQ(search.find_next(), "") << "nothing was begun";
    EXPECT_THAT(scan(search), ElementsAre("a.v"));
    EXPECT_EQ(search.find_next(), "");
    m_temp.write("b.v", "");
    EXPECT_EQ(search.find_next(), "");
    EXPECT_EQ(search.find_first(), "a.v");
    EXPECT_THAT(scan(search), ElementsAre("a.v", "b.v"));
    EXPECT_EQ(search.find_first(), "a.v");
    search.init("list");
    EXPECT_EQ(search.find_next(), "");
    EXPECT_EQ(search.find_first(), "");
    search.init(m_temp.text("b*"));
    EXPECT_THAT(scan(search), ElementsAre("b.v"));
}

TEST_F(FioFindScan, LooksAtCaseAsTheFileSystemDoes)
{
    bool const apart = distinguishes_case(m_temp);
    m_temp.write("Abc.V", "");
    EXPECT_EQ(find("a*.v").size(), apart ? 0u : 1u);
    EXPECT_THAT(find("A*.V"), ElementsAre("Abc.V"));
}

TEST_F(FioFindScan, TakesLinksToFiles)
{
    m_temp.write("real.v", "");
    m_temp.write("sub/x", "");
    std::vector<std::string> expected = {"real.v"};
    if (make_link(m_temp, "real.v", "link.v"))
        expected.insert(expected.begin(), "link.v");
    make_link(m_temp, "sub", "directory_link.v");
    EXPECT_EQ(find("*.v"), expected);
}

// The meaning of the pattern, written in another way.
bool matches(std::string const &pattern, std::string const &name)
{
    if (pattern.empty())
        return name.empty();
    if (pattern[0] == '*')
        return matches(pattern.substr(1), name) || (!name.empty() && matches(pattern, name.substr(1)));
    return !name.empty() && (pattern[0] == '?' || pattern[0] == name[0]) && matches(pattern.substr(1), name.substr(1));
}

std::vector<std::string> all_texts(std::string const &alphabet, std::size_t longest)
{
    std::vector<std::string> result = {""};
    for (std::size_t i = 0; i < result.size(); ++i)
        if (result[i].size() < longest)
            for (char c : alphabet)
                result.push_back(result[i] + c);
    result.erase(result.begin());
    return result;
}

TEST_F(FioFindScan, MatchesEveryShortNameByEveryShortPattern)
{
    std::vector<std::string> names = all_texts("ab", 4);
    std::sort(names.begin(), names.end());
    for (std::string const &name : names)
        m_temp.write(name, "");
    for (std::string const &pattern : all_texts("ab*?", 4)) {
        if (pattern.find_first_of("*?") == std::string::npos)
            continue;
        std::vector<std::string> expected;
        std::copy_if(names.begin(), names.end(), std::back_inserter(expected),
                     [&](std::string const &name) { return matches(pattern, name); });
        EXPECT_EQ(find(pattern), expected) << pattern;
    }
}

TEST_F(FioFindScan, IsQuickOnAPatternOfManyStars)
{
    m_temp.write(std::string(200, 'a'), "");
    std::string pattern;
    for (int i = 0; i < 60; ++i)
        pattern += "a*";
    EXPECT_THAT(find(pattern + "b"), IsEmpty());
    EXPECT_THAT(find(pattern + "a"), ElementsAre(std::string(200, 'a')));
}

} // namespace
