#include "gen_fstream_sys.h"

#include "fio_sys.h"
#include "gen_time_sys.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <type_traits>

namespace {

constexpr int SHARED = 0x40; // sharing for reading and writing

constexpr int OUT = std::ios::out;
constexpr int APP = std::ios::app;
constexpr int IN = std::ios::in;
constexpr int NO_BITS = 0;

std::string first_line(std::string const &path)
{
    std::brisel_ifstream in(path.c_str(), IN, SHARED);
    std::string line;
    std::getline(in, line);
    return line;
}

// A directory under `parent` in which any file has a path of more than 300 characters.
std::string make_deep_directory(std::string const &parent)
{
    std::string directory = parent;
    while (directory.size() < 300) {
        directory += "/" + std::string(50, 'd');
        EXPECT_TRUE(FIO_FILE_SYSTEM::create(directory)) << directory;
    }
    return directory;
}

} // namespace

static_assert(std::is_base_of_v<std::basic_ofstream<char>, std::brisel_ofstream>);
static_assert(std::is_base_of_v<std::basic_ifstream<char>, std::brisel_ifstream>);
static_assert(sizeof(std::brisel_ofstream) == sizeof(std::ofstream));
static_assert(sizeof(std::brisel_ifstream) == sizeof(std::ifstream));
static_assert(std::has_virtual_destructor_v<std::brisel_ofstream>);
static_assert(std::has_virtual_destructor_v<std::brisel_ifstream>);

TEST(BriselStreams, StartWithoutAFile)
{
    std::brisel_ofstream out;
    std::brisel_ifstream in;
    EXPECT_FALSE(out.is_open());
    EXPECT_TRUE(out.good());
    EXPECT_FALSE(in.is_open());
    EXPECT_TRUE(in.good());
}

TEST(BriselStreams, WriteAndReadAFile)
{
    TempDir const dir;
    std::string const path = dir.text("a.txt");
    {
        std::brisel_ofstream out(path.c_str(), OUT, SHARED);
        ASSERT_TRUE(out.good());
        out << "one " << 2;
    }
    EXPECT_EQ(first_line(path), "one 2");
}

TEST(BriselStreams, AddTheBitOfTheirDirection)
{
    TempDir const dir;
    std::string const path = dir.text("a.txt");
    {
        std::brisel_ofstream out(path.c_str(), NO_BITS, SHARED);
        ASSERT_TRUE(out.good());
        out << "text";
    }
    std::brisel_ifstream in(path.c_str(), NO_BITS, SHARED);
    std::string text;
    in >> text;
    EXPECT_EQ(text, "text");
}

TEST(BriselOfstream, TruncatesWithOutAndExtendsWithApp)
{
    struct ModeCase
    {
        int mode;
        char const *content;
    };
    constexpr ModeCase CASES[] = {
        {OUT, "new"},
        {APP, "oldnew"},
        {OUT | APP, "oldnew"},
    };
    for (ModeCase const &c : CASES) {
        TempDir const dir;
        std::string const path = dir.write("a.txt", "old");
        {
            std::brisel_ofstream out(path.c_str(), c.mode, SHARED);
            out << "new";
        }
        EXPECT_EQ(dir.read("a.txt"), c.content) << "mode " << c.mode;
    }
}

TEST(BriselOfstream, KeepsBytesInBinaryMode)
{
    TempDir const dir;
    std::string const path = dir.text("a.bin");
    std::string const bytes("\r\n\x1a\0\n\xff", 6);
    {
        std::brisel_ofstream out(path.c_str(), OUT | std::ios::binary, SHARED);
        out << bytes;
    }
    EXPECT_EQ(dir.read("a.bin"), bytes);
}

TEST(BriselOfstream, LeavesAnOpenFileAndItsStateAsTheyAre)
{
    TempDir const dir;
    std::brisel_ofstream out(dir.text("first").c_str(), OUT, SHARED);
    out << "one";
    out.open(dir.text("second").c_str(), OUT, SHARED);
    EXPECT_TRUE(out.good());
    out << " two";

    out.setstate(std::ios::failbit);
    out.open(dir.text("second").c_str(), OUT, SHARED);
    EXPECT_EQ(out.rdstate(), std::ios::failbit) << "a failed state is no more cleared than a good one is spoilt";
    out.clear();
    out.close();

    EXPECT_EQ(dir.read("first"), "one two");
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "second"));
}

TEST(BriselIfstream, LeavesAnOpenFileAndItsStateAsTheyAre)
{
    TempDir const dir;
    std::string const first = dir.write("first", "one two");
    std::string const second = dir.write("second", "three");
    std::brisel_ifstream in(first.c_str(), IN, SHARED);
    std::string word;
    in >> word;
    in.open(second.c_str(), IN, SHARED);
    EXPECT_TRUE(in.good());
    in >> word;
    EXPECT_EQ(word, "two");
    EXPECT_TRUE(in.eof());
    in.open(second.c_str(), IN, SHARED);
    EXPECT_EQ(in.rdstate(), std::ios::eofbit);
}

TEST(BriselStreams, FailWithoutAnException)
{
    TempDir const dir;
    std::string const path = dir.text("missing/a.txt");
    std::brisel_ofstream out;
    EXPECT_NO_THROW(out.open(path.c_str(), OUT, SHARED));
    EXPECT_EQ(out.rdstate(), std::ios::failbit);
    EXPECT_FALSE(out.is_open());

    std::brisel_ifstream in;
    EXPECT_NO_THROW(in.open(dir.text("none.txt").c_str(), IN, SHARED));
    EXPECT_EQ(in.rdstate(), std::ios::failbit);
    EXPECT_FALSE(in.is_open());
}

TEST(BriselStreams, ClearTheirStateWhenALaterOpenSucceeds)
{
    TempDir const dir;
    std::brisel_ofstream out(dir.text("missing/a.txt").c_str(), OUT, SHARED);
    ASSERT_TRUE(out.fail());
    out.open(dir.text("a.txt").c_str(), OUT, SHARED);
    EXPECT_TRUE(out.good());
    out << "text";
    out.close();

    std::brisel_ifstream in(dir.text("none.txt").c_str(), IN, SHARED);
    ASSERT_TRUE(in.fail());
    in.open(dir.text("a.txt").c_str(), IN, SHARED);
    EXPECT_TRUE(in.good());
    std::string text;
    in >> text;
    EXPECT_EQ(text, "text");
}

TEST(BriselOfstream, CanBeReadWhileItIsOpen)
{
    TempDir const dir;
    std::string const path = dir.text("a.log");
    std::brisel_ofstream out(path.c_str(), OUT, SHARED);
    out << "so far" << std::flush;
    EXPECT_EQ(first_line(path), "so far");
    EXPECT_EQ(dir.read("a.log"), "so far") << "by the standard stream";
    EXPECT_TRUE(out.good());
}

// What others may do with the file while it is open, by the values of the Windows runtime (share.h).
TEST(BriselStreams, HoldTheFileAsTheirProtectionSays)
{
    struct ProtectionCase
    {
        int protection;
        bool is_readable;
        bool is_writable;
    };
    constexpr ProtectionCase CASES[] = {
        {0x10, false, false},
        {0x20, true, false},
        {0x30, false, true},
        {0x40, true, true},
    };
    TempDir const dir;
    std::string const path = dir.write("a.txt", "text");
    for (ProtectionCase const &c : CASES) {
        for (bool const is_output : {false, true}) {
            std::brisel_ofstream out;
            std::brisel_ifstream in;
            if (is_output)
                out.open(path.c_str(), APP, c.protection);
            else
                in.open(path.c_str(), IN, c.protection);
            ASSERT_NE(out.is_open(), in.is_open()) << "protection " << c.protection;
            std::brisel_ifstream const reader(path.c_str(), IN, SHARED);
            std::brisel_ofstream const writer(path.c_str(), APP, SHARED);
            EXPECT_EQ(reader.is_open(), c.is_readable || !ON_WINDOWS) << "protection " << c.protection;
            EXPECT_EQ(writer.is_open(), c.is_writable || !ON_WINDOWS) << "protection " << c.protection;
        }
    }
    for (int const unknown : {0, 1, 0x50, 0x80, -1}) {
        std::brisel_ofstream const out(path.c_str(), APP, unknown);
        EXPECT_EQ(out.good(), !ON_WINDOWS) << "protection " << unknown;
    }
    EXPECT_EQ(dir.read("a.txt"), "text");
}

TEST(BriselStreams, TakeEveryModeOfAFileBuffer)
{
    struct ModeCase
    {
        std::ios_base::openmode mode;
        char const *content; // after "new" was written over "oldtext"; null if the open fails
    };
    using std::ios;
    ModeCase const CASES[] = {
        {ios::out, "new"},
        {ios::out | ios::trunc, "new"},
        {ios::app, "oldtextnew"},
        {ios::out | ios::ate, "new"},
        {ios::in | ios::out, "newtext"},
        {ios::in | ios::out | ios::ate, "oldtextnew"},
        {ios::in | ios::out | ios::trunc, "new"},
        {ios::in | ios::out | ios::app, "oldtextnew"},
        {ios::in | ios::out | ios::binary, "newtext"},
        {ios::app | ios::trunc, nullptr},
    };
    for (ModeCase const &c : CASES) {
        TempDir const dir;
        std::string const path = dir.write("a.txt", "oldtext");
        std::brisel_ofstream out(path.c_str(), c.mode, SHARED);
        EXPECT_EQ(out.good(), c.content != nullptr) << c.mode;
        out << "new";
        out.close();
        EXPECT_EQ(dir.read("a.txt"), c.content != nullptr ? c.content : "oldtext") << c.mode;
    }
    TempDir const dir;
    std::brisel_ofstream const missing(dir.text("none").c_str(), ios::in | ios::out, SHARED);
    EXPECT_FALSE(missing.is_open());
}

TEST(BriselStreams, KeepTheirLocale)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    TempDir const dir;
    std::brisel_ofstream out;
    out.imbue(std::locale(std::locale::classic(), new Comma));
    out.open(dir.text("a.txt").c_str(), OUT, SHARED);
    EXPECT_TRUE(out.rdbuf()->getloc() == out.getloc());
}

// A colon there would name a stream of the file, which no listing shows.
TEST(BriselStreams, MakeNoFileForANameWithAColonOnWindows)
{
    TempDir const dir;
    std::brisel_ofstream out(dir.text("mem_a:b.log").c_str(), OUT, SHARED);
    EXPECT_EQ(out.good(), !ON_WINDOWS);
    EXPECT_EQ(entry_names(dir.path()).size(), ON_WINDOWS ? 0U : 1U);
}

TEST(BriselStreams, OpenPathsBeyondTheUsualLimit)
{
    TempDir const dir;
    std::string const deep = make_deep_directory(dir.text());
    std::string const path = deep + "/a.txt";
    ASSERT_GT(path.size(), 260U);
    {
        std::brisel_ofstream out(path.c_str(), OUT, SHARED);
        ASSERT_TRUE(out.good()) << path;
        out << "deep";
    }
    EXPECT_TRUE(FIO_FILE_SYSTEM::exists(path)) << path;
    EXPECT_EQ(first_line(path), "deep") << path;
}

TEST(BriselStreams, OpenRelativePathsFromTheCurrentDirectory)
{
    TempDir const dir;
    CurrentDirectory const current(dir.path());
    {
        std::brisel_ofstream out("a.txt", OUT, SHARED);
        out << "here";
    }
    EXPECT_EQ(dir.read("a.txt"), "here");
}

TEST(GenPrintLocalTime, WritesTheDateAndALineEnd)
{
    TempDir const dir;
    std::string const path = dir.text("a.txt");
    std::string const before = gen_get_current_date_and_time() + '\n';
    {
        std::brisel_ofstream out(path.c_str(), OUT | std::ios::binary, SHARED);
        gen_print_local_time(&out);
        EXPECT_TRUE(out.good());
    }
    std::string const after = gen_get_current_date_and_time() + '\n';
    std::string const text = dir.read("a.txt");
    EXPECT_EQ(text.size(), 25U); // "Sat Nov 14 19:03:47 2026\n"
    EXPECT_TRUE(text == before || text == after) << text << before << after;
}
