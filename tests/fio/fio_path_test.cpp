#include "fio_sys.h"

#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace {

// The path that a text is converted to.
struct TextCase
{
    char const *given;
    char const *fullpath;
};
constexpr TextCase TEXT_CASES[] = {
    {"", ""},
    {"a", "a"},
    {"a.v", "a.v"},
    {"a/b", "a/b"},
    {"a/b/", "a/b/"},
    {"/", "/"},
    {"/a", "/a"},
    {"c:/a", "c:/a"},
    {"c:", "c:"},
    {"c:a", "c:a"},
    // either separator
    {"a\\b", "a/b"},
    {"C:\\A\\b.V", "C:/A/b.V"},
    {"c:\\a/b\\", "c:/a/b/"},
    {"\\", "/"},
    {"\\\\host\\share\\a", "//host/share/a"},
    {"\\/host/a", "//host/a"},
    // a run counts as one, but for the two before a host
    {"a//b", "a/b"},
    {"a///b//", "a/b/"},
    {"c://a", "c:/a"},
    {"//host//a", "//host/a"},
    {"//", "/"},
    {"///", "/"},
    {"///a", "/a"},
    {"\\\\\\a", "/a"},
    {"a\\/\\b", "a/b"},
    // dots stay until they are simplified
    {"./a", "./a"},
    {"a/../b", "a/../b"},
    // nothing else is touched
    {" a b /c", " a b /c"},
    {"a;b", "a;b"},
    {"\xe4/\xff", "\xe4/\xff"},
};

TEST(FioPathText, HasForwardSlashesAndOneForARun)
{
    for (TextCase const &c : TEXT_CASES) {
        EXPECT_EQ(FIO_PATH(c.given).fullpath(), c.fullpath) << '"' << c.given << '"';
        EXPECT_EQ(FIO_PATH(std::string(c.given)).fullpath(), c.fullpath) << '"' << c.given << '"';
        FIO_PATH path("former/text");
        EXPECT_EQ((path = c.given).fullpath(), c.fullpath) << '"' << c.given << '"';
        path = "former/text";
        EXPECT_EQ((path = std::string(c.given)).fullpath(), c.fullpath) << '"' << c.given << '"';
        EXPECT_STREQ(path, c.fullpath) << '"' << c.given << '"';
    }
}

TEST(FioPathText, IsUnchangedByBeingTakenAgain)
{
    for (TextCase const &c : TEXT_CASES)
        EXPECT_EQ(FIO_PATH(FIO_PATH(c.given).fullpath()).fullpath(), c.fullpath) << '"' << c.given << '"';
}

TEST(FioPathText, IsEmptyForNullAndByDefault)
{
    char const *const null = nullptr;
    EXPECT_EQ(FIO_PATH().fullpath(), "");
    EXPECT_STREQ(FIO_PATH(), "");
    EXPECT_EQ(FIO_PATH(null).fullpath(), "");
    FIO_PATH path("a");
    path = null;
    EXPECT_EQ(path.fullpath(), "");
}

TEST(FioPathText, IsCopiedAndMoved)
{
    FIO_PATH const original("c:\\a\\b.v");
    FIO_PATH copy(original);
    EXPECT_EQ(copy.fullpath(), "c:/a/b.v");
    EXPECT_EQ(FIO_PATH(std::move(copy)).fullpath(), "c:/a/b.v");
    FIO_PATH assigned;
    assigned = original;
    EXPECT_EQ(assigned.fullpath(), "c:/a/b.v");
    FIO_PATH moved;
    moved = std::move(assigned);
    EXPECT_EQ(moved.fullpath(), "c:/a/b.v");
    EXPECT_EQ(original.fullpath(), "c:/a/b.v");
    FIO_PATH &same = moved;
    moved = same;
    EXPECT_EQ(moved.fullpath(), "c:/a/b.v");
    moved = static_cast<char const *>(same);
    EXPECT_EQ(moved.fullpath(), "c:/a/b.v");
    static_assert(std::is_nothrow_move_constructible_v<FIO_PATH>);
}

// The parts of a path.
struct PartsCase
{
    char const *path;
    char const *full_directory;
    char const *filename;
    char const *base;
    char const *extension;
    int levels;
};
constexpr PartsCase PARTS_CASES[] = {
    {"", "", "", "", "", 0},
    {"a", "", "a", "a", "", 0},
    {"a.v", "", "a.v", "a", "v", 0},
    {"a/b.v", "a/", "b.v", "b", "v", 1},
    {"a/b/c.v", "a/b/", "c.v", "c", "v", 2},
    {"a/", "a/", "", "", "", 1},
    {"a/b/", "a/b/", "", "", "", 2},
    {"./a", "./", "a", "a", "", 1},
    {"../../a", "../../", "a", "a", "", 2},
    // roots
    {"/", "/", "", "", "", 0},
    {"/a.v", "/", "a.v", "a", "v", 0},
    {"/a/b.v", "/a/", "b.v", "b", "v", 1},
    {"c:/", "c:/", "", "", "", 0},
    {"c:/a.v", "c:/", "a.v", "a", "v", 0},
    {"C:\\a\\b\\c", "C:/a/b/", "c", "c", "", 2},
    {"c:", "c:", "", "", "", 0},
    {"c:a.v", "c:", "a.v", "a", "v", 0},
    {"c:a/b", "c:a/", "b", "b", "", 1},
    {"//host", "//host/", "", "", "", 0},
    {"//host/", "//host/", "", "", "", 0},
    {"//host.de", "//host.de/", "", "", "", 0},
    {"//host/share", "//host/", "share", "share", "", 0},
    {"//host/share/a.v", "//host/share/", "a.v", "a", "v", 1},
    // the last dot counts
    {"a.tar.gz", "", "a.tar.gz", "a.tar", "gz", 0},
    {"a.", "", "a.", "a", "", 0},
    {"a..", "", "a..", "a.", "", 0},
    {"a..v", "", "a..v", "a.", "v", 0},
    {"d.ir/a", "d.ir/", "a", "a", "", 1},
    {"d.ir/", "d.ir/", "", "", "", 1},
    // a leading dot does not
    {".profile", "", ".profile", ".profile", "", 0},
    {"d/.profile", "d/", ".profile", ".profile", "", 1},
    {"d/.a.v", "d/", ".a.v", ".a", "v", 1},
    {"c:.a", "c:", ".a", ".a", "", 0},
    {".", "", ".", ".", "", 0},
    {"..", "", "..", "..", "", 0},
    {"a/..", "a/", "..", "..", "", 1},
    {"...", "", "...", "..", "", 0},
};

TEST(FioPathParts, AreThoseAfterTheLastSeparatorAndTheLastDot)
{
    for (PartsCase const &c : PARTS_CASES) {
        FIO_PATH const path(c.path);
        EXPECT_EQ(path.full_directory(), c.full_directory) << '"' << c.path << '"';
        EXPECT_EQ(path.filename(), c.filename) << '"' << c.path << '"';
        EXPECT_EQ(path.base(), c.base) << '"' << c.path << '"';
        EXPECT_EQ(path.extension(), c.extension) << '"' << c.path << '"';
        EXPECT_EQ(path.levels(), c.levels) << '"' << c.path << '"';
    }
}

struct KindCase
{
    char const *path;
    bool absolute;
    bool relative;
    bool unc;
};
constexpr KindCase KIND_CASES[] = {
    {"", false, true, false},           {"a", false, true, false},
    {"a/b", false, true, false},        {"./a", false, true, false},
    {"..", false, true, false},         {"1:/a", false, true, false},
    {"ab:/a", false, true, false},      {":/a", false, true, false},
    {"/", true, false, false},          {"/a", true, false, false},
    {"\\a", true, false, false},        {"///a", true, false, false},
    {"//", true, false, false},         {"c:/", true, false, false},
    {"c:/a", true, false, false},       {"Z:\\a", true, false, false},
    {"c:", false, false, false},        {"c:a", false, false, false},
    {"//host", true, false, true},      {"//host/share/a", true, false, true},
    {"\\\\host\\a", true, false, true}, {"\\\\?\\C:\\a", true, false, true},
};

TEST(FioPathKind, IsTheSameOnEveryPlatform)
{
    for (KindCase const &c : KIND_CASES) {
        FIO_PATH const path(c.path);
        EXPECT_EQ(path.absolute(), c.absolute) << '"' << c.path << '"';
        EXPECT_EQ(path.relative(), c.relative) << '"' << c.path << '"';
        EXPECT_EQ(path.unc(), c.unc) << '"' << c.path << '"';
    }
}

// One operation with a text.
struct SetCase
{
    char const *path;
    char const *argument;
    char const *result;
};

template <std::size_t N, typename Operation>
void expect_results(SetCase const (&cases)[N], Operation operation)
{
    for (SetCase const &c : cases) {
        FIO_PATH path(c.path);
        FIO_PATH const &returned = operation(path, std::string(c.argument));
        EXPECT_EQ(path.fullpath(), c.result) << '"' << c.path << "\", \"" << c.argument << '"';
        EXPECT_EQ(&returned, &path);
    }
}

constexpr SetCase FILENAME_CASES[] = {
    {"", "a.v", "a.v"},
    {"a.v", "b", "b"},
    {"c:/d/a.v", "b.sv", "c:/d/b.sv"},
    {"c:/d/", "b.sv", "c:/d/b.sv"},
    {"/", "a", "/a"},
    {"c:", "a", "c:a"},
    {"//host", "a", "//host/a"},
    {"//host/share/x", "a", "//host/share/a"},
    // only the directory is left
    {"c:/d/a.v", "", "c:/d/"},
    {"c:/d/", "", "c:/d/"},
    {"a.v", "", ""},
    {"/a", "", "/"},
    {"", "", ""},
    // further down
    {"c:/d/a.v", "e/f.v", "c:/d/e/f.v"},
    {"c:/d/a.v", "e\\f.v", "c:/d/e/f.v"},
    {"c:/d/", "/f.v", "c:/d/f.v"},
    {"/", "//f.v", "/f.v"},
    {"a", "x/", "x/"},
};

TEST(FioPathFilename, ReplacesTheFileName)
{
    expect_results(FILENAME_CASES,
                   [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.filename(text); });
}

constexpr SetCase BASE_CASES[] = {
    {"c:/d/a.v", "b", "c:/d/b.v"},
    {"a.v", "b", "b.v"},
    {"a", "b", "b"},
    {"a.tar.gz", "b", "b.gz"},
    {"", "b", "b"},
    {"c:/d/", "b", "c:/d/b"},
    {".profile", "b", "b"},
    {"d/.a.v", "b", "d/b.v"},
    {"a.", "b", "b."},
    {"d.ir/a", "b", "d.ir/b"},
    {"c:/d/a.v", "", "c:/d/.v"},
    {"c:/d/", "", "c:/d/"},
    // a dot in the base is part of it
    {"c:/d/", "b.1", "c:/d/b.1"},
    {"c:/d/a.v", "b.1", "c:/d/b.1.v"},
    // further down
    {"c:/root/", "common/devxml/cag", "c:/root/common/devxml/cag"},
    {"c:/root/", "common\\misc", "c:/root/common/misc"},
    {"c:/d/a.v", "e/b", "c:/d/e/b.v"},
    {"//host/share/", "b", "//host/share/b"},
    {"c:/d/", "Kalvern Suite Tool", "c:/d/Kalvern Suite Tool"},
};

TEST(FioPathBase, ReplacesTheTextBeforeTheExtension)
{
    expect_results(BASE_CASES, [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.base(text); });
}

constexpr SetCase DIRECTORY_CASES[] = {
    {"", "c:/d", "c:/d/"},
    {"", "c:/d/", "c:/d/"},
    {"a.v", "c:/d", "c:/d/a.v"},
    {"a.v", "c:/d/", "c:/d/a.v"},
    {"a.v", "c:\\d\\", "c:/d/a.v"},
    {"x/y/a.v", "d", "d/a.v"},
    {"x/y/", "d", "d/"},
    {"x/y/a.v", "", "a.v"},
    {"x/y/", "", ""},
    {"a", "/", "/a"},
    {"a", "c:", "c:/a"},
    {"a", "//host", "//host/a"},
    {"a", ".", "./a"},
    {"//host/share/a", "d", "d/a"},
    {"c:a", "d", "d/a"},
};

TEST(FioPathDirectory, ReplacesTheDirectoryWithOrWithoutSlash)
{
    expect_results(DIRECTORY_CASES,
                   [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.directory(text); });
}

TEST(FioPathDirectory, WithAFileNameMakesAPathOfTwoParts)
{
    for (char const *directory : {"c:/bin", "c:/bin/", "c:\\bin", "c:\\bin\\"}) {
        FIO_PATH path;
        path.directory(directory).filename("tool.exe");
        EXPECT_EQ(path.fullpath(), "c:/bin/tool.exe") << directory;
        path.directory("d").filename("e");
        EXPECT_EQ(path.fullpath(), "d/e") << directory;
    }
}

constexpr SetCase EXTENSION_CASES[] = {
    {"a.v", "sv", "a.sv"},
    {"a", "v", "a.v"},
    {"a.v", ".sv", "a.sv"},
    {"a.v", "..sv", "a..sv"},
    {"a.v", "", "a"},
    {"a.v", ".", "a"},
    {"a", "", "a"},
    {"a.", "v", "a.v"},
    {"a.", "", "a"},
    {"a.tar.gz", "xz", "a.tar.xz"},
    {".profile", "v", ".profile.v"},
    {"d.ir/a", "v", "d.ir/a.v"},
    {"c:/d/a b.c", "v", "c:/d/a b.v"},
    {"//host/share", "v", "//host/share.v"},
    // no file name
    {"", "v", ""},
    {"c:/d/", "v", "c:/d/"},
    {"//host", "v", "//host"},
    {"c:", "v", "c:"},
    {"..", "v", ".."},
    {"d/.", "v", "d/."},
};

TEST(FioPathExtension, ReplacesTheExtension)
{
    expect_results(EXTENSION_CASES,
                   [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.extension(text, ""); });
}

TEST(FioPathExtension, AppendsASecondOne)
{
    EXPECT_EQ(FIO_PATH("a.v").extension("sv", "gz").fullpath(), "a.sv.gz");
    EXPECT_EQ(FIO_PATH("a.v").extension(".sv", ".gz").fullpath(), "a.sv.gz");
    EXPECT_EQ(FIO_PATH("a.v").extension("", "gz").fullpath(), "a.gz");
    EXPECT_EQ(FIO_PATH("a.v").extension(FIO_EXTENSION_KRW, FIO_EXTENSION_KCS).fullpath(), "a.krw.kcs");
}

TEST(FioPathExtension, TakesTheTextOfANumber)
{
    struct NumberCase
    {
        int number;
        char const *extension;
    };
    constexpr NumberCase KNOWN[] = {{77, "kcs"}, {82, "kcp"}, {118, "krw"}, {243, "ktm"}, {246, "kta"}, {247, "ksv"}};
    auto const extended = [](int number) {
        FIO_PATH path("c:/d/a.v");
        return path.extension(static_cast<FIO_EXTENSION_TYPE>(number), static_cast<FIO_EXTENSION_TYPE>(-1)).fullpath();
    };
    for (int number = -2; number < 300; ++number) {
        std::string expected = "c:/d/a";
        for (NumberCase const &c : KNOWN)
            if (c.number == number)
                expected.append(1, '.').append(c.extension);
        EXPECT_EQ(extended(number), expected) << number;
    }
    EXPECT_EQ(extended(0x7fffffff), "c:/d/a");
}

TEST(FioDefaultExtension, IsKnownForTheKnownNumbersOnly)
{
    struct NumberCase
    {
        int number;
        char const *extension;
    };
    constexpr NumberCase KNOWN[] = {{13, "v"},   {12, "sv"},   {5, "vhd"},  {8, "vhdl"}, {9, "edf"},
                                    {7, "edif"}, {21, "blif"}, {20, "net"}, {14, "vh"},  {15, "svh"}};
    for (int number = -2; number < 300; ++number) {
        std::string expected;
        for (NumberCase const &c : KNOWN)
            if (c.number == number)
                expected = c.extension;
        EXPECT_EQ(fio_get_default_extension_string(static_cast<FIO_FILE_TYPE>(number)), expected) << number;
    }
}

constexpr SetCase CD_CASES[] = {
    {"c:/root/", "x", "c:/root/x/"},
    {"c:/root", "x", "c:/root/x/"},
    {"c:/root/common", "tcl/apps", "c:/root/common/tcl/apps/"},
    {"c:/root/", "x/", "c:/root/x/"},
    {"c:/root/", "x\\y\\", "c:/root/x/y/"},
    {"c:/root/a.v", "x", "c:/root/a.v/x/"},
    {"a", "b", "a/b/"},
    // up
    {"c:/root/", "..", "c:/"},
    {"c:/root/", "../ksys/bin", "c:/ksys/bin/"},
    {"c:/tools/suite/", "../ksys/bin", "c:/tools/ksys/bin/"},
    {"c:/root", "../..", "c:/"},
    {"c:/root", "../../../x", "c:/x/"},
    {"/a", "../../x", "/x/"},
    {"//host/share", "../../..", "//host/"},
    {"a", "..", "./"},
    {"a", "../..", "../"},
    {"a", "../../b", "../b/"},
    {"../", "..", "../../"},
    {"c:a", "../../b", "c:../b/"},
    // a drive alone gets no root
    {"c:", "x", "c:x/"},
    {"c:a", "..", "c:./"},
    {"c:a/b/", "../../../x", "c:../x/"},
    {"c:", ".", "c:./"},
    {"c:/root/", "./x/.", "c:/root/x/"},
    {"c:/root/", "x/../y", "c:/root/y/"},
    {"c:/a/./b/../c", "x", "c:/a/c/x/"},
    // elsewhere
    {"c:/root/", "d:/y", "d:/y/"},
    {"c:/root/", "/y", "/y/"},
    {"c:/root/", "//host/share", "//host/share/"},
    {"c:/root/", "\\\\host\\share", "//host/share/"},
    {"c:/root/", "d:", "d:/"},
    {"c:/root/", "/", "/"},
    {"c:/root/", "d:/x/../y", "d:/x/../y/"},
    // nowhere
    {"c:/root/", "", "c:/root/"},
    {"c:/root", "", "c:/root"},
    {"", "", ""},
    // from an empty path
    {"", "x", "x/"},
    {"", "x/", "x/"},
    {"", "../x", "../x/"},
    {"", ".", "./"},
    {"", "c:/p", "c:/p/"},
    {"", "c:\\p\\\\q\\", "c:/p/q/"},
    {"", "/p", "/p/"},
};

TEST(FioPathCd, GoesThereAndEndsInASlash)
{
    expect_results(CD_CASES, [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.cd(text); });
}

TEST(FioPathCd, CanBeChained)
{
    EXPECT_EQ(FIO_PATH("c:/a").cd("b").cd("..").cd("c").filename("d.v").fullpath(), "c:/a/c/d.v");
}

constexpr SetCase BECOME_ABSOLUTE_CASES[] = {
    {"x", "c:/d", "c:/d/x"},
    {"x", "c:/d/", "c:/d/x"},
    {"x/", "c:/d", "c:/d/x/"},
    {"x/y.v", "c:\\d", "c:/d/x/y.v"},
    {"../x", "c:/d/e", "c:/d/x"},
    {"../../../x", "c:/d/e", "c:/x"},
    {"./x/../y", "/d", "/d/y"},
    {".", "/d", "/d/"},
    {"..", "/d/e", "/d/"},
    {"x", "/", "/x"},
    {"x", "//host/share", "//host/share/x"},
    {"x", "c:/d/../e", "c:/e/x"},
    {"", "c:/d", "c:/d/"},
    // what does not count from a directory stays
    {"/x/../y", "c:/d", "/x/../y"},
    {"c:/x", "d:/y", "c:/x"},
    {"//host/x", "d:/y", "//host/x"},
    {"c:x", "c:/d", "c:x"},
};

TEST(FioPathBecomeAbsolute, CountsFromTheDirectory)
{
    expect_results(BECOME_ABSOLUTE_CASES,
                   [](FIO_PATH &path, std::string const &text) -> FIO_PATH & { return path.become_absolute(text); });
}

TEST(FioPathBecomeAbsolute, CountsFromTheCurrentDirectory)
{
    TempDir const temp;
    std::filesystem::create_directories(temp.path() / "p");
    CurrentDirectory const current(temp.path() / "p");
    EXPECT_EQ(FIO_PATH("x.v").become_absolute("").fullpath(), temp.text("p/x.v"));
    EXPECT_EQ(FIO_PATH("../x.v").become_absolute("").fullpath(), temp.text("x.v"));
    EXPECT_EQ(FIO_PATH("x/../y/").become_absolute("").fullpath(), temp.text("p/y/"));
    EXPECT_EQ(FIO_PATH("").become_absolute("").fullpath(), temp.text("p/"));
    EXPECT_EQ(FIO_PATH("x.v").become_absolute("q").fullpath(), temp.text("p/q/x.v"));
    EXPECT_EQ(FIO_PATH("x.v").become_absolute("../q/").fullpath(), temp.text("q/x.v"));
}

// The argument is not used.
constexpr SetCase SIMPLIFIED_CASES[] = {
    {"", "", ""},
    {"a", "", "a"},
    {"a/", "", "a/"},
    {"a/b/c.v", "", "a/b/c.v"},
    {"a/./b", "", "a/b"},
    {"./a", "", "a"},
    {"././a/./", "", "a/"},
    {"a/../b", "", "b"},
    {"a/b/../../c", "", "c"},
    {"a/b/../c/../d/", "", "a/d/"},
    {"a/./b/../c", "", "a/c"},
    // names that only look like them
    {"a/.../b", "", "a/.../b"},
    {".a/..b/c.", "", ".a/..b/c."},
    // a directory
    {"a/.", "", "a/"},
    {"a/b/..", "", "a/"},
    {"a/..", "", "./"},
    {"a/../", "", "./"},
    {".", "", "./"},
    {"./", "", "./"},
    {"./.", "", "./"},
    {"..", "", "../"},
    {"../..", "", "../../"},
    // before a relative path
    {"../a", "", "../a"},
    {"a/../../b", "", "../b"},
    {"../../a/../b", "", "../../b"},
    {"./../a", "", "../a"},
    // never above the root
    {"/..", "", "/"},
    {"/../a", "", "/a"},
    {"/a/../../b", "", "/b"},
    {"c:/..", "", "c:/"},
    {"c:/../../a", "", "c:/a"},
    {"c:/a/..", "", "c:/"},
    {"//host/..", "", "//host/"},
    {"//host/share/../../../a", "", "//host/a"},
    {"//host", "", "//host"},
    {"c:a/../b", "", "c:b"},
    {"c:../b", "", "c:../b"},
    {"c:a/..", "", "c:"},
    // a name that looks like a drive does not become one
    {"x/../c:/y", "", "./c:/y"},
    {"./c:y", "", "./c:y"},
    {"x/../c:", "", "./c:"},
    {"../c:/y", "", "../c:/y"},
    {"/x/../c:/y", "", "/c:/y"},
    {"c:x/../d:/y", "", "c:d:/y"},
};

TEST(FioPathBecomeSimplified, RemovesDots)
{
    expect_results(SIMPLIFIED_CASES,
                   [](FIO_PATH &path, std::string const &) -> FIO_PATH & { return path.become_simplified(); });
}

// Every path of up to five components, against moving through them one by one.
TEST(FioPathBecomeSimplified, AgreesWithAWalk)
{
    static constexpr char const *COMPONENTS[] = {"a", "b", ".", ".."};
    for (int length = 1; length <= 5; ++length)
        for (int code = 0; code < 1 << (2 * length); ++code) {
            std::string text = "c:";
            std::vector<std::string> walked;
            for (int i = 0; i < length; ++i) {
                std::string const component = COMPONENTS[code >> (2 * i) & 3];
                text += '/' + component;
                if (component == ".." && !walked.empty())
                    walked.pop_back();
                else if (component[0] != '.')
                    walked.push_back(component);
            }
            std::string expected = "c:/";
            for (std::string const &component : walked)
                expected += component + '/';
            EXPECT_EQ(FIO_PATH(text + '/').become_simplified().fullpath(), expected) << text;
            EXPECT_EQ(FIO_PATH("c:/").cd(text.substr(3)).fullpath(), expected) << text;
            FIO_PATH once(text);
            once.become_simplified();
            EXPECT_EQ(FIO_PATH(once).become_simplified().fullpath(), once.fullpath()) << text;
        }
}

TEST(FioPathSeparator, ChangesTheText)
{
    FIO_PATH path("c:/d/e.v");
    EXPECT_EQ(&path.path_separator('\\'), &path);
    EXPECT_EQ(path.fullpath(), "c:\\d\\e.v");
    EXPECT_STREQ(path, "c:\\d\\e.v");
    EXPECT_EQ(path.path_separator('\\').fullpath(), "c:\\d\\e.v");
    EXPECT_EQ(path.path_separator('/').fullpath(), "c:/d/e.v");
    EXPECT_EQ(FIO_PATH("//host/a").path_separator('\\').fullpath(), "\\\\host\\a");
    EXPECT_EQ(FIO_PATH("").path_separator('\\').fullpath(), "");
}

TEST(FioPathSeparator, IgnoresAnyOtherCharacter)
{
    for (int c = 0; c < 256; ++c) {
        char const separator = static_cast<char>(c);
        std::string const expected = separator == '\\' ? "a\\b" : "a/b";
        EXPECT_EQ(FIO_PATH("a/b").path_separator(separator).fullpath(), expected) << c;
    }
}

TEST(FioPathSeparator, StaysThroughTheOperations)
{
    auto const path = [](char const *text) { return FIO_PATH(text).path_separator('\\'); };
    EXPECT_EQ(path("c:/a/b/c.v").full_directory(), "c:\\a\\b\\");
    EXPECT_EQ(path("//host").full_directory(), "\\\\host\\");
    EXPECT_EQ(path("c:/a/b/c.v").filename(), "c.v");
    EXPECT_EQ(path("c:/a/b/c.v").base(), "c");
    EXPECT_EQ(path("c:/a/b/c.v").extension(), "v");
    EXPECT_EQ(path("c:/a/b/c.v").levels(), 2);
    EXPECT_TRUE(path("c:/a").absolute());
    EXPECT_TRUE(path("a/b").relative());
    EXPECT_TRUE(path("//host/a").unc());
    EXPECT_EQ(path("c:/a/").filename("x/y").fullpath(), "c:\\a\\x\\y");
    EXPECT_EQ(path("c:/a/").base("x/y").fullpath(), "c:\\a\\x\\y");
    EXPECT_EQ(path("c:/a/x").directory("d:/e/f").fullpath(), "d:\\e\\f\\x");
    EXPECT_EQ(path("c:/a/x").extension("v", "").fullpath(), "c:\\a\\x.v");
    EXPECT_EQ(path("c:/a").cd("../x/y").fullpath(), "c:\\x\\y\\");
    EXPECT_EQ(path("c:/a").cd("d:/x/y").fullpath(), "d:\\x\\y\\");
    EXPECT_EQ(path("c:/a/./b/../c").become_simplified().fullpath(), "c:\\a\\c");
    EXPECT_EQ(path("x/y").become_absolute("c:/d").fullpath(), "c:\\d\\x\\y");
    EXPECT_EQ(path("a/..").become_simplified().fullpath(), ".\\");
}

TEST(FioPathSeparator, GoesWithCopiesAndEndsWithANewText)
{
    FIO_PATH const original = FIO_PATH("a/b").path_separator('\\');
    FIO_PATH copy(original);
    EXPECT_EQ(copy.cd("c").fullpath(), "a\\b\\c\\");
    EXPECT_EQ((copy = "a/b").fullpath(), "a/b");
    copy = original;
    EXPECT_EQ((copy = std::string("a\\b")).cd("c").fullpath(), "a/b/c/");
}

TEST(FioPathSeparator, OfThePlatformIsThatOfItsCalls)
{
    std::string const separator = ON_WINDOWS ? "\\" : "/";
    FIO_PATH path("c:/d/e.v");
    path.change_path_separators_for_windows_api();
    EXPECT_EQ(path.fullpath(), "c:" + separator + "d" + separator + "e.v");
    FIO_PATH unc("//host/a/");
    unc.change_path_separators_for_windows_api();
    EXPECT_EQ(unc.fullpath(), separator + separator + "host" + separator + "a" + separator);
    FIO_PATH empty;
    empty.change_path_separators_for_windows_api();
    EXPECT_EQ(empty.fullpath(), "");
}

} // namespace
