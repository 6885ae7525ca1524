// The project's list of library directories, edited.
#include "gen_path_sys.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> live_list()
{
    std::vector<std::string> texts;
    for (FIO_PATH const &path : *gen_project_lib_fio_paths())
        texts.push_back(path.fullpath());
    return texts;
}

struct EditCase
{
    char const *former;
    char const *paths;
    char const *text;
    std::vector<std::string> list;
};

void expect_edits(void (*edit)(std::string const &), std::vector<EditCase> const &cases)
{
    gen_set_project_library_paths("");
    std::list<FIO_PATH> const *const live = gen_project_lib_fio_paths();
    for (EditCase const &c : cases) {
        gen_set_project_library_paths(c.former);
        edit(c.paths);
        EXPECT_EQ(gen_get_project_library_paths(), c.text) << '"' << c.former << "\" and \"" << c.paths << '"';
        EXPECT_EQ(live_list(), c.list) << '"' << c.former << "\" and \"" << c.paths << '"';
        EXPECT_EQ(gen_project_lib_fio_paths(), live);
    }
}

std::string numbered_paths(int count)
{
    std::string paths;
    for (int i = 0; i < count; ++i)
        paths += "/libraries/Number_" + std::to_string(i) + ';';
    return paths;
}

} // namespace

TEST(GenAppendProjectLibraryPaths, AddsDirectoriesThatAreNotInTheList)
{
    expect_edits(
        gen_append_project_library_paths,
        {
            {"", "c:/a", "c:/a", {"c:/a"}},
            {"", "c:/b;c:/a", "c:/b;c:/a", {"c:/b", "c:/a"}},
            {"c:/a", "d:/b;C:/A", "c:/a;d:/b", {"c:/a", "d:/b"}},
            {"c:/a", "c:/a/;c:/a/b", "c:/a;c:/a/;c:/a/b", {"c:/a", "c:/a/", "c:/a/b"}}, // distinguished by text
            {"c:/a", "./a;../a;a", "c:/a;./a;../a;a", {"c:/a", "./a", "../a", "a"}},
            // each once, the first spelling
            {"", "x;X;y;x;Y", "x;y", {"x", "y"}},
            {"", "\xc3\xa4;\xc3\x84", "\xc3\xa4;\xc3\x84", {"\xc3\xa4", "\xc3\x84"}}, // only A to Z fold
            // the whole list is normalised with a change, and untouched without
            {"c:\\a\\;;x//y", "C:/A/;X/Y", "c:\\a\\;;x//y", {"c:/a/", "x/y"}},
            {"c:\\a\\;;x//y", "z", "c:/a/;x/y;z", {"c:/a/", "x/y", "z"}},
            {"a;b;", "A", "a;b;", {"a", "b"}},
            {"a;a", "b", "a;a;b", {"a", "a", "b"}}, // duplicates that are there stay
            // nothing to add
            {"a", "", "a", {"a"}},
            {"a;;", ";", "a;;", {"a"}},
            {"a", ";;;", "a", {"a"}},
            {"", ";", "", {}},
            {"", ";;a;;b;", "a;b", {"a", "b"}},
            {"", " a ; b", " a ; b", {" a ", " b"}},
            {"//host/share", "\\\\HOST\\share;\\x", "//host/share;/x", {"//host/share", "/x"}},
            // a text with a wild card and no ";" is no list
            {"a", "b*", "a", {"a"}},
            {"", "b*;c", "b*;c", {"b*", "c"}},
            {"*.v", "a", "a", {"a"}},
        });
}

TEST(GenRemoveProjectLibraryPaths, RemovesDirectoriesThatAreInTheList)
{
    expect_edits(gen_remove_project_library_paths, {
                                                       {"c:/a;d:/b", "C:\\A", "d:/b", {"d:/b"}},
                                                       {"a;b;c", "c;a", "b", {"b"}},
                                                       {"a;b;A;a", "a", "b", {"b"}}, // as often as it is there
                                                       {"a;b", "b;b;B", "a", {"a"}},
                                                       {"a", "a", "", {}},
                                                       {"a;b", "b;a", "", {}},
                                                       // the rest is normalised with a change, and untouched without
                                                       {"c:\\a;;x//y;b", "b", "c:/a;x/y", {"c:/a", "x/y"}},
                                                       {"c:\\a;;x//y", "b", "c:\\a;;x//y", {"c:/a", "x/y"}},
                                                       {"a/", "a", "a/", {"a/"}},
                                                       // nothing to remove
                                                       {"a;b", "", "a;b", {"a", "b"}},
                                                       {"a;b", ";;", "a;b", {"a", "b"}},
                                                       {"", "a", "", {}},
                                                       {"a;b", "a*", "a;b", {"a", "b"}},
                                                       {"a*;b", "a*;", "b", {"b"}},
                                                   });
}

TEST(GenProjectLibFioPaths, IsTheListThatTheSettersMakeAnew)
{
    gen_set_project_library_paths("a;b");
    std::list<FIO_PATH> *const live = gen_project_lib_fio_paths();
    live->emplace_back("C");
    EXPECT_EQ(gen_get_project_library_paths(), "a;b");
    gen_append_project_library_paths("c");
    EXPECT_EQ(gen_get_project_library_paths(), "a;b") << "an entry of the caller's counts";
    gen_append_project_library_paths("d");
    EXPECT_EQ(gen_get_project_library_paths(), "a;b;C;d");
    live->clear();
    gen_remove_project_library_paths("a");
    EXPECT_EQ(gen_get_project_library_paths(), "a;b;C;d") << "nothing was erased";
    live->emplace_front("a");
    gen_remove_project_library_paths("a");
    EXPECT_EQ(gen_get_project_library_paths(), "");
    live->emplace_front("a");
    gen_remove_project_library_paths("a");
    EXPECT_EQ(live_list(), std::vector<std::string>{"a"}) << "nothing is removed from an empty text";
    gen_set_project_library_paths("x");
    EXPECT_EQ(live_list(), std::vector<std::string>{"x"});
    EXPECT_EQ(gen_project_lib_fio_paths(), live);
}

TEST(GenAppendProjectLibraryPaths, TakesThousandsAtOnce)
{
    constexpr int COUNT = 10000;
    std::string const paths = numbered_paths(COUNT);
    gen_set_project_library_paths("");
    gen_append_project_library_paths(paths + paths);
    EXPECT_EQ(gen_get_project_library_paths(), paths.substr(0, paths.size() - 1));
    gen_append_project_library_paths("/LIBRARIES/NUMBER_77;/libraries/last");
    EXPECT_EQ(gen_get_project_library_paths(), paths + "/libraries/last");
    gen_remove_project_library_paths(paths);
    EXPECT_EQ(gen_get_project_library_paths(), "/libraries/last");
}
