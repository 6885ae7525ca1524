// Source files of design units in an installation and a project on disk.
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"

#include "tests/support/platform.h"
#include "tests/support/search_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using SourceFiles = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;
using Texts = std::vector<std::string>;

using GenGetSourceFiles = SearchTest;
using GenGetSourceFilesFromLib = SearchTest;

// An entry as "tag path", the path under the world.
std::string tagged_path(GEN_LIBRARY_PATHS_ENUM tag, std::string const &path)
{
    std::string const start = SearchWorldEnvironment::world().text("");
    bool const is_in_world = path.compare(0, start.size(), start) == 0;
    return std::to_string(tag) + ' ' + (is_in_world ? path.substr(start.size()) : path);
}

Texts texts(SourceFiles const &files)
{
    Texts result;
    for (auto const &[tag, path] : files)
        result.push_back(tagged_path(tag, path.fullpath()));
    return result;
}

Texts source_files(std::string const &name)
{
    SourceFiles files;
    bool const is_any = gen_get_source_files(name, &files);
    EXPECT_EQ(is_any, !files.empty()) << name;
    return texts(files);
}

Texts library_files(std::string const &name)
{
    SourceFiles files;
    bool const is_any = gen_get_source_files_from_kalvern_lib(name, &files);
    EXPECT_EQ(is_any, !files.empty()) << name;
    return texts(files);
}

} // namespace

TEST(GenLibraryPathsEnum, HasItsNumbers)
{
    EXPECT_EQ(GEN_LIBRARY_PATHS_PROJECT_DIR, 1U);
    EXPECT_EQ(GEN_LIBRARY_PATHS_DB_DIR, 2U);
    EXPECT_EQ(GEN_LIBRARY_PATHS_PROJECT_LIBS, 3U);
    EXPECT_EQ(GEN_LIBRARY_PATHS_KALVERN_LIBS, 4U);
    EXPECT_EQ(GEN_LIBRARY_PATHS_USER_LIBS, 5U);
    EXPECT_EQ(GEN_LIBRARY_PATHS_ENV_LIBS, 6U);
}

TEST_F(GenGetSourceFiles, TheEarlierOfEachPairOfPlacesHasTheExtension)
{
    std::vector<SearchPlace> places = SearchWorld::places();
    places.erase(places.end() - 21, places.end() - 1); // of the general libraries the first two and the last
    for (std::size_t first = 0; first < places.size(); ++first)
        for (std::size_t second = first; second < places.size(); ++second) {
            std::string const unit = "unit_" + std::to_string(first) + '_' + std::to_string(second);
            for (SearchPlace const &place : {places[first], places[second]})
                world().put(place.directory + unit + ".v");
            std::string const other = world().put(places[second].directory + unit + ".vhd");

            Texts expected = {tagged_path(places[first].tag, world().text(places[first].directory + unit + ".v")),
                              tagged_path(places[second].tag, other)};
            EXPECT_EQ(source_files(unit), expected);
        }
}

TEST_F(GenGetSourceFiles, KnowsTheTenExtensions)
{
    for (char const *const extension : {"v", "sv", "vhd", "vhdl", "edf", "edif", "blif", "net", "vh", "svh"})
        world().put(std::string("elsewhere/ten.") + extension);
    for (char const *const extension : {"txt", "vv", "v.bak", "vqm", "tdf", ""})
        world().put(std::string("elsewhere/ten.") + extension);
    world().put("elsewhere/ten");
    world().put("elsewhere/ten_more.v");
    gen_set_user_library_paths(world().text("elsewhere"));
    EXPECT_THAT(source_files("ten"),
                ElementsAre("5 elsewhere/ten.blif", "5 elsewhere/ten.edf", "5 elsewhere/ten.edif",
                            "5 elsewhere/ten.net", "5 elsewhere/ten.sv", "5 elsewhere/ten.svh", "5 elsewhere/ten.v",
                            "5 elsewhere/ten.vh", "5 elsewhere/ten.vhd", "5 elsewhere/ten.vhdl"));
    // Once all are found, the later places give nothing.
    world().put("suite/libraries/ten.v");
    world().put("suite/libraries/ten.vhd");
    EXPECT_EQ(source_files("ten").size(), 10U);
}

TEST_F(GenGetSourceFiles, AStarTakesTheFirstFileOfEachExtension)
{
    std::filesystem::create_directories(world().dir().path() / "elsewhere" / "star");
    for (char const *const name : {"b.v", "a.V", "c.vhd", "notes.txt", "d", ".v"})
        world().put(std::string("elsewhere/star/") + name);
    gen_set_project_dir_path(world().text("elsewhere/star"));
    Texts found = source_files("*");
    found.resize(2); // other tests have put files into the later places
    EXPECT_THAT(found, ElementsAre("1 elsewhere/star/a.V", "1 elsewhere/star/c.vhd"));
}

TEST_F(GenGetSourceFiles, CaseCountsInAnExtensionIfTheFileSystemDistinguishesIt)
{
    world().put("project/capital.SV");
    EXPECT_EQ(source_files("capital").size(), ON_WINDOWS ? 1U : 0U);
    EXPECT_THAT(source_files("CAPITAL"), testing::SizeIs(ON_WINDOWS ? 1 : 0));
}

TEST_F(GenGetSourceFiles, AppendsToTheVector)
{
    SourceFiles files = {{GEN_LIBRARY_PATHS_USER_LIBS, FIO_PATH("/former.v")}};
    EXPECT_TRUE(gen_get_source_files("no_such_unit", &files)) << "an entry from before counts";
    EXPECT_THAT(texts(files), ElementsAre("5 /former.v"));
    EXPECT_TRUE(gen_get_source_files_from_kalvern_lib("no_such_unit", &files));
    EXPECT_THAT(texts(files), ElementsAre("5 /former.v"));

    world().put("project/appended.v");
    EXPECT_TRUE(gen_get_source_files("appended", &files));
    EXPECT_THAT(texts(files), ElementsAre("5 /former.v", "1 project/appended.v"));
    files.clear();
    EXPECT_FALSE(gen_get_source_files("no_such_unit", &files));
    EXPECT_FALSE(gen_get_source_files_from_kalvern_lib("no_such_unit", &files));
}

TEST_F(GenGetSourceFiles, FindsNamesOfAnyKind)
{
    std::string const longest(253, 'n');
    for (std::string const &name :
         {std::string("unit with blanks"), std::string("einh\xc3\xa4it"), std::string("dotted.name"), longest}) {
        world().put("user_lib/" + name + ".v");
        EXPECT_THAT(source_files(name), ElementsAre("5 user_lib/" + name + ".v"));
    }
    std::filesystem::create_directories(world().dir().path() / "user_lib" / "unit_dir" / "directory.v");
    world().put("user_lib/unit_dir/below.v");
    EXPECT_THAT(source_files("unit_dir/below"), ElementsAre("5 user_lib/unit_dir/below.v"));
    EXPECT_THAT(source_files("unit_dir/directory"), IsEmpty()) << "a directory is no source file";
    EXPECT_THAT(source_files("below"), IsEmpty()) << "subdirectories are not searched";
}

TEST_F(GenGetSourceFiles, FindsNothingForWhatCannotBeThere)
{
    std::string const file = world().put("elsewhere/source_file");
    world().put("project/bad.v");
    std::error_code error;
    std::filesystem::create_symlink("source_loop", world().dir().path() / "source_loop", error);
    gen_set_project_library_paths(world().text("missing") + ';' + file + ";;" + world().text("source_loop"));
    for (std::string const &name :
         {std::string(), std::string("/"), std::string(";"), std::string(".."), std::string("bad.v"),
          world().text("project/bad"), std::string(100000, 'x'), std::string("**"), std::string("ba?")}) {
        EXPECT_THAT(source_files(name), IsEmpty()) << name.substr(0, 100);
        EXPECT_THAT(library_files(name), IsEmpty()) << name.substr(0, 100);
    }
    EXPECT_THAT(source_files("bad"), ElementsAre("1 project/bad.v")) << "bad directories are passed over";
}

TEST_F(GenGetSourceFiles, RelativeDirectoriesCountFromTheProjectDirectoryOfTheMoment)
{
    for (char const *const project : {"project", "elsewhere"}) {
        std::filesystem::create_directories(world().dir().path() / project / "source_lib");
        gen_set_project_dir_path(world().text(project));
        gen_set_project_library_paths("source_lib");
        std::string const unit = std::string("source_of_") + project;
        world().put(std::string(project) + "/source_lib/" + unit + ".sv");
        EXPECT_THAT(source_files(unit), ElementsAre(std::string("3 ") + project + "/source_lib/" + unit + ".sv"));
    }
}

TEST_F(GenGetSourceFilesFromLib, LooksInTheGeneralLibrariesAlone)
{
    for (SearchPlace const &place : SearchWorld::places()) {
        std::string const path = world().put(place.directory + "general.net");
        bool const is_general = place.directory.compare(0, 6, "suite/") == 0;
        EXPECT_EQ(library_files("general"), is_general ? Texts{tagged_path(place.tag, path)} : Texts{})
            << place.directory;
        world().remove(place.directory + "general.net");
    }
    for (std::string const &directory : SearchWorld::eda_directories())
        world().put(directory + "general.net");
    EXPECT_THAT(library_files("general"), IsEmpty());
}

TEST_F(GenGetSourceFilesFromLib, AStarTakesEveryFile)
{
    std::list<FIO_PATH> &paths = *gen_get_default_lib_fio_paths();
    std::list<FIO_PATH> const former = paths;
    for (char const *const directory : {"star_1", "star_2"})
        std::filesystem::create_directories(world().dir().path() / directory);
    for (char const *const name : {"star_1/b.v", "star_1/a.v", "star_1/notes.txt", "star_1/bare", "star_2/a.v"})
        world().put(name);
    paths = {FIO_PATH(world().text("star_1")), FIO_PATH(world().text("star_2"))};
    EXPECT_THAT(library_files("*"),
                ElementsAre("4 star_1/a.v", "4 star_1/b.v", "4 star_1/bare", "4 star_1/notes.txt", "4 star_2/a.v"));
    EXPECT_THAT(library_files("a"), ElementsAre("4 star_1/a.v"));
    EXPECT_THAT(library_files("**"), IsEmpty()) << "no other name is a wild card";
    paths = former;
}

TEST_F(GenGetSourceFiles, HasAProfileBinOfItsOwn)
{
    GEN_PROFILE_BINS::initialize("Test", /*primary=*/false, /*debug_messages=*/false);
    SourceFiles files;
    gen_get_source_files_from_kalvern_lib("no_such_unit", &files);
    m_messages.clear();
    gen_get_source_files_from_kalvern_lib("no_such_unit", &files);
    EXPECT_THAT(m_messages.messages(), IsEmpty());

    gen_get_source_files("no_such_unit", &files);
    std::vector<RecordedMessage> const messages = m_messages.messages();
    EXPECT_THAT(messages, testing::Not(IsEmpty())) << "its flags announce it";
    for (RecordedMessage const &message : messages) {
        EXPECT_EQ(message.module, "GEN");
        EXPECT_THAT(message.text, testing::HasSubstr("gen_get_source_files"));
    }
    GEN_PROFILE_BINS::finalize("Test", /*close_root=*/true); // a bin left open would be an internal error
    m_messages.clear();
}
