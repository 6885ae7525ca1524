#include "gen_undo_redo_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Manager = GEN_UNDO_REDO_MGR;

constexpr char FILE_NAME[] = "undo_redo.txt";

// The bytes of the file after a script, and nothing else in its directory.
std::string written_by(std::function<void(Manager &)> const &script)
{
    TempDir const dir;
    Manager mgr;
    mgr.start_new_file(dir.text());
    script(mgr);
    mgr.commit_file();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), std::filesystem::directory_iterator()), 1);
    return dir.read(FILE_NAME);
}

// A section of one command.
void add_section(Manager &mgr, std::string const &name)
{
    mgr.begin_section(name);
    mgr.add_undo_command("undo " + name, "");
    mgr.end_section();
}

std::string text_of_section(std::string const &name)
{
    return name + "\n\n\tUndo Commands\n\t     1.\tundo " + name + "\n\n\n";
}

struct FileCase
{
    char const *what;
    std::function<void(Manager &)> script;
    std::string text;
};

std::vector<FileCase> file_cases()
{
    return {
        {"no section", [](Manager &) {}, ""},
        {"both kinds, mixed, with a description and a comment",
         [](Manager &mgr) {
             mgr.begin_section("section");
             mgr.add_description("what it is");
             mgr.add_redo_command("third command", "");
             mgr.add_undo_command("first command", "its comment");
             mgr.add_undo_command("second command", "");
             mgr.end_section();
         },
         "section\nwhat it is\n\n\tUndo Commands\n\t     1.\tfirst command\n\t\t\tits comment\n"
         "\t     2.\tsecond command\n\n\tRedo Commands\n\t     1.\tthird command\n\n\n"},
        {"undo commands only",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_undo_command("u", "");
             mgr.end_section();
         },
         "s\n\n\tUndo Commands\n\t     1.\tu\n\n\n"},
        {"redo commands only",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_redo_command("r", "comment");
             mgr.end_section();
         },
         "s\n\n\tRedo Commands\n\t     1.\tr\n\t\t\tcomment\n\n\n"},
        {"a description without commands",
         [](Manager &mgr) {
             mgr.begin_section("dropped");
             mgr.add_description("with a description");
             mgr.end_section();
         },
         ""},
        {"a name alone",
         [](Manager &mgr) {
             mgr.begin_section("dropped");
             mgr.end_section();
             add_section(mgr, "kept");
         },
         text_of_section("kept")},
        {"commands before any section",
         [](Manager &mgr) {
             mgr.add_undo_command("u", "");
             mgr.end_section();
         },
         ""},
        {"a section with an empty name",
         [](Manager &mgr) {
             mgr.begin_section("");
             mgr.add_undo_command("u", "");
             mgr.add_redo_command("r", "");
             mgr.end_section();
         },
         ""},
        {"a section that wasn't ended",
         [](Manager &mgr) {
             mgr.begin_section("lost");
             mgr.add_description("lost too");
             mgr.add_undo_command("u", "");
             mgr.add_redo_command("r", "");
             add_section(mgr, "kept");
             mgr.begin_section("lost at the end");
             mgr.add_undo_command("u", "");
         },
         text_of_section("kept")},
        {"sections in the order of their ends, each counted from 1",
         [](Manager &mgr) {
             for (char const *name : {"b", "a", "c"})
                 add_section(mgr, name);
         },
         text_of_section("b") + text_of_section("a") + text_of_section("c")},
        {"a section ended twice, with more commands the second time",
         [](Manager &mgr) {
             add_section(mgr, "s");
             mgr.add_undo_command("more", "");
             mgr.end_section();
         },
         text_of_section("s") + "s\n\n\tUndo Commands\n\t     1.\tundo s\n\t     2.\tmore\n\n\n"},
        {"a description replaced, and one made empty again",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_description("first");
             mgr.add_description("second");
             mgr.add_redo_command("r", "");
             mgr.end_section();
             mgr.add_description("");
             mgr.end_section();
         },
         "s\nsecond\n\n\tRedo Commands\n\t     1.\tr\n\n\ns\n\n\tRedo Commands\n\t     1.\tr\n\n\n"},
        {"empty commands, which use up no number",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_undo_command("", "dropped comment");
             mgr.add_undo_command("u", "");
             mgr.add_redo_command("", "dropped comment");
             mgr.add_redo_command("", "");
             mgr.add_redo_command("r", "");
             mgr.add_redo_command("", "dropped comment");
             mgr.add_redo_command("r", "");
             mgr.end_section();
         },
         "s\n\n\tUndo Commands\n\t     1.\tu\n\n\tRedo Commands\n\t     1.\tr\n\t     2.\tr\n\n\n"},
        {"empty commands alone",
         [](Manager &mgr) {
             mgr.begin_section("dropped");
             mgr.add_undo_command("", "comment");
             mgr.add_redo_command("", "comment");
             mgr.end_section();
         },
         ""},
        {"per-cent signs",
         [](Manager &mgr) {
             mgr.begin_section("100%n%s");
             mgr.add_description("%d%%");
             mgr.add_undo_command("%s%s%n 5%", "%s%n %");
             mgr.end_section();
         },
         "100%n%s\n%d%%\n\n\tUndo Commands\n\t     1.\t%s%s%n 5%\n\t\t\t%s%n %\n\n\n"},
        {"line ends inside texts",
         [](Manager &mgr) {
             mgr.begin_section("a\nb");
             mgr.add_redo_command("c\nd", "e\nf");
             mgr.end_section();
         },
         "a\nb\n\n\tRedo Commands\n\t     1.\tc\nd\n\t\t\te\nf\n\n\n"},
        {"characters 0, where commands and comments end",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_undo_command(std::string("u\0dropped", 9), std::string("c\0dropped", 9));
             mgr.end_section();
         },
         "s\n\n\tUndo Commands\n\t     1.\tu\n\t\t\tc\n\n\n"},
        {"long texts",
         [](Manager &mgr) {
             mgr.begin_section("s");
             mgr.add_undo_command(std::string(100000, 'u'), std::string(100000, 'c'));
             mgr.end_section();
         },
         "s\n\n\tUndo Commands\n\t     1.\t" + std::string(100000, 'u') + "\n\t\t\t" + std::string(100000, 'c') +
             "\n\n\n"},
        {"a second begin with the same name",
         [](Manager &mgr) {
             add_section(mgr, "s");
             mgr.add_description("of the first");
             add_section(mgr, "s");
         },
         text_of_section("s") + text_of_section("s")},
    };
}

} // namespace

TEST(GenUndoRedoMgr, WritesItsSectionsByteByByte)
{
    for (FileCase const &c : file_cases())
        EXPECT_EQ(written_by(c.script), in_text_mode(c.text)) << c.what;
}

TEST(GenUndoRedoMgr, PadsNumbersToSixColumnsAtLeast)
{
    std::string const text = written_by([](Manager &mgr) {
        mgr.begin_section("s");
        for (int i = 0; i < 1000000; ++i)
            mgr.add_undo_command("u", "");
        mgr.add_redo_command("r", "");
        mgr.end_section();
    });
    for (char const *line : {"\t     1.\tu\n", "\t    10.\tu\n", "\t   999.\tu\n", "\t 99999.\tu\n", "\t999999.\tu\n",
                             "\t1000000.\tu\n", "\t     1.\tr\n"})
        EXPECT_NE(text.find(in_text_mode(line)), std::string::npos) << line;
}

TEST(GenUndoRedoMgr, TouchesTheDiskAtACommitOnly)
{
    TempDir const dir;
    dir.write(FILE_NAME, "former");
    {
        Manager mgr;
        mgr.start_new_file(dir.text());
        add_section(mgr, "s");
        EXPECT_EQ(dir.read(FILE_NAME), "former");
    }
    EXPECT_EQ(dir.read(FILE_NAME), "former") << "what isn't committed is lost";

    Manager mgr;
    mgr.start_new_file(dir.text());
    mgr.commit_file();
    EXPECT_TRUE(std::filesystem::exists(dir.path() / FILE_NAME));
    EXPECT_EQ(dir.read(FILE_NAME), "") << "no section: there, and empty";
}

TEST(GenUndoRedoMgr, RewritesTheWholeFileAtEachCommit)
{
    TempDir const dir;
    Manager mgr;
    mgr.start_new_file(dir.text() + "/"); // a separator at the end makes no difference
    add_section(mgr, "a");
    add_section(mgr, "b");
    mgr.commit_file();
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("a") + text_of_section("b")));
    add_section(mgr, "c");
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("a") + text_of_section("b") + text_of_section("c")));
}

TEST(GenUndoRedoMgr, ForgetsFinishedSectionsForANewFile)
{
    TempDir const first, second;
    Manager mgr;
    mgr.start_new_file(first.text());
    add_section(mgr, "a");
    mgr.commit_file();
    mgr.start_new_file(second.text());
    add_section(mgr, "b");
    mgr.commit_file();
    EXPECT_EQ(first.read(FILE_NAME), in_text_mode(text_of_section("a")));
    EXPECT_EQ(second.read(FILE_NAME), in_text_mode(text_of_section("b")));
}

TEST(GenUndoRedoMgr, KeepsTheCurrentSectionForANewFile)
{
    TempDir const dir;
    Manager mgr;
    mgr.begin_section("current");
    mgr.add_undo_command("undo current", "");
    mgr.start_new_file(dir.text());
    mgr.end_section();
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("current")));
}

TEST(GenUndoRedoMgr, MakesTheLastFinishedSectionCurrentAtACommit)
{
    TempDir const dir;
    Manager mgr;
    mgr.start_new_file(dir.text());
    add_section(mgr, "a");
    add_section(mgr, "b");
    mgr.begin_section("overwritten");
    mgr.add_undo_command("u", "");
    mgr.commit_file();

    mgr.add_undo_command("more", "");
    mgr.end_section();
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("a") + text_of_section("b") +
                                                "b\n\n\tUndo Commands\n\t     1.\tundo b\n\t     2.\tmore\n\n\n"));
}

TEST(GenUndoRedoMgr, KeepsTheCurrentSectionWhenNothingIsFinished)
{
    TempDir const dir;
    Manager mgr;
    mgr.start_new_file(dir.text());
    mgr.begin_section("s");
    mgr.add_undo_command("undo s", "");
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), "");
    mgr.end_section();
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("s")));
}

TEST(GenUndoRedoMgr, TakesAnEmptyDirectoryForTheCurrentOne)
{
    TempDir const dir;
    CurrentDirectory const current(dir.path());
    Manager mgr;
    mgr.start_new_file("");
    add_section(mgr, "s");
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("s")));
}

TEST(GenUndoRedoMgr, CopiesShareNothing)
{
    TempDir const dir;
    Manager mgr;
    mgr.start_new_file(dir.text());
    add_section(mgr, "a");
    Manager const copy(mgr);
    add_section(mgr, "b");
    mgr = copy;
    mgr.commit_file();
    EXPECT_EQ(dir.read(FILE_NAME), in_text_mode(text_of_section("a")));
}

// Failures of the file system: nothing is reported, nothing is thrown, and nothing is changed.

namespace {

class GenUndoRedoMgrSilence : public testing::Test
{
protected:
    GenUndoRedoMgrSilence() : m_current(m_dir.path()) {}

    // Commits a finished section under a current one, which a commit that opens its file overwrites.
    void commit()
    {
        add_section(m_mgr, "finished");
        m_mgr.begin_section("current");
        m_mgr.add_undo_command("undo current", "");
        CapturedOutput output(StandardStream::OUTPUT);
        CapturedOutput errors(StandardStream::ERROR_OUTPUT);
        EXPECT_NO_THROW(m_mgr.commit_file());
        EXPECT_EQ(output.text(), "");
        EXPECT_EQ(errors.text(), "");
    }
    void expect_the_current_section_kept()
    {
        m_mgr.start_new_file("");
        m_mgr.end_section();
        m_mgr.commit_file();
        EXPECT_EQ(m_dir.read(FILE_NAME), in_text_mode(text_of_section("current")));
    }

    TempDir const m_dir;
    CurrentDirectory const m_current;
    Manager m_mgr;
};

} // namespace

TEST_F(GenUndoRedoMgrSilence, CommitsNothingBeforeAFileIsStarted)
{
    commit();
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
    expect_the_current_section_kept();
}

TEST_F(GenUndoRedoMgrSilence, CommitsNothingInADirectoryThatIsMissing)
{
    m_mgr.start_new_file(m_dir.text("missing"));
    commit();
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
    expect_the_current_section_kept();
}

TEST_F(GenUndoRedoMgrSilence, CommitsNothingWhereADirectoryHasTheName)
{
    m_mgr.start_new_file(m_dir.text("sub"));
    std::filesystem::create_directories(m_dir.path() / "sub" / FILE_NAME);
    commit();
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path() / "sub" / FILE_NAME));
    expect_the_current_section_kept();
}
