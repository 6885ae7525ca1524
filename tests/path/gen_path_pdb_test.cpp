#include "gen_path_sys.h"

#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(GenPdbFilename, LiesInTheDatabaseDirectoryUnlessAnotherIsGiven)
{
    // In order: a directory stays until the next one.
    struct PdbCase
    {
        char const *db_dir;
        char const *name;
        char const *extension;
        char const *directory;
        char const *path;
    };
    constexpr PdbCase CASES[] = {
        {nullptr, "a", "b", nullptr, "a.b"}, // no database directory yet
        {nullptr, "", "", nullptr, ""},
        {"c:/p/db/", "a", "b", nullptr, "c:/p/db/a.b"},
        {"c:/p/db/", "a", "", nullptr, "c:/p/db/a"},
        {"c:/p/db", "a", "b", nullptr, "c:/p/dba.b"}, // nothing is inserted between
        {"c:/p/db/", "a", "b", "c:\\q\\", "c:/q/a.b"},
        {"c:/p/db/", "a", "b", nullptr, "c:/q/a.b"},
        {"c:/p/other/", "a", "b", nullptr, "c:/q/a.b"},
        {"c:/p/db/", "a", "b", "r", "ra.b"},
        {"c:/p/db/", "a", "b", "", "c:/p/db/a.b"},
        {"c:/p/db/", "a", "b", nullptr, "c:/p/db/a.b"},
        // Texts are put together as they are.
        {"c:/p/db/", "d/a.x", ".b", nullptr, "c:/p/db/d/a.x..b"},
        {"c:/p/db/", "\\a b\xe4", "%s", nullptr, "c:/p/db/\\a b\xe4.%s"},
    };
    for (PdbCase const &c : CASES) {
        if (c.db_dir != nullptr)
            gen_set_db_dir_path(c.db_dir);
        std::string const directory = c.directory == nullptr ? "" : c.directory;
        EXPECT_EQ(gen_generate_pdb_filename(c.name, c.extension, c.directory == nullptr ? nullptr : &directory),
                  c.path);
    }
}

TEST(GenPdbFilename, ReportsADirectoryOtherThanTheDatabases)
{
    MessageRecorder const recorder;
    std::string const directory = "c:\\q\\%s";
    std::string const none;
    gen_generate_pdb_filename("a", "b", &none);
    gen_generate_pdb_filename("a", "b", nullptr);
    EXPECT_THAT(recorder.messages(), IsEmpty());

    gen_generate_pdb_filename("a", "b", &directory);
    gen_generate_pdb_filename("a", "b", nullptr);
    RecordedMessage const message{MEM_MSG_DEBUG, "GEN", "ALT path is c:/q/%s"};
    EXPECT_THAT(recorder.messages(), ElementsAre(message, message));

    gen_generate_pdb_filename("a", "b", &none);
    EXPECT_THAT(recorder.messages(), SizeIs(2));
}

TEST(GenPdbFilenameDeathTest, HasNoDirectoryOnceExitHasReleasedIt)
{
    // A library of Windows is released after the handlers of the program.
    char const *const late = ON_WINDOWS ? "[c:/late/a.b][c:/late/a.b]" : "[a.b][a.b]";
    EXPECT_EXIT(
        {
            std::atexit([] {
                std::string const directory = "c:/late/";
                for (std::string const *const given : {&directory, static_cast<std::string const *>(nullptr)})
                    std::fprintf(stderr, "[%s]", gen_generate_pdb_filename("a", "b", given).c_str());
            });
            std::string const directory = "c:/q/";
            gen_generate_pdb_filename("a", "b", &directory);
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr(late));
}
