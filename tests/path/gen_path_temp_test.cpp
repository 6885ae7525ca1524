// Temporary files and unique names as the system gives them.
#include "gen_path_sys.h"

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

std::string name_of(std::string const &path)
{
    return std::filesystem::path(path).filename().string();
}

bool is_empty_file(std::string const &path)
{
    return std::filesystem::is_regular_file(path) && std::filesystem::file_size(path) == 0;
}

// Directories in which nobody can make anything, not even an administrator.
std::vector<std::string> unusable_directories(TempDir const &dir)
{
    std::string const file = dir.write("plain file", "content");
    std::vector<std::string> directories = {
        dir.text("missing"),
        dir.text("missing/") + "deeper/",
        file,
        file + '/',
        dir.text(std::string(300, 'n')), // no file system has names of this length
        dir.text(std::string(5000, 'p')),
    };
    if (!ON_WINDOWS)
        directories.emplace_back("/proc");
    return directories;
}

} // namespace

TEST(GenTempFile, IsEmptyAndNewInItsDirectory)
{
    TempDir const dir;
    for (std::string const &directory : {dir.text(), dir.text() + '/', dir.text() + "\\"}) {
        std::string const path = gen_create_temp_file(directory, "netlist");
        EXPECT_THAT(path, StartsWith(dir.text() + "/net")) << directory;
        EXPECT_THAT(path, EndsWith(".tmp")) << directory;
        EXPECT_TRUE(is_empty_file(path)) << path;
        EXPECT_EQ(path, FIO_PATH(path).fullpath());
    }
    EXPECT_THAT(entry_names(dir.path()), SizeIs(3));
}

TEST(GenTempFile, BeginsWithThreeCharactersOfThePrefix)
{
    struct PrefixCase
    {
        char const *prefix;
        char const *start;
    };
    constexpr PrefixCase CASES[] = {
        {"", ""},        {"a", "a"},       {"ab", "ab"},    {"abc", "abc"},
        {"abcd", "abc"}, {"a b c", "a b"}, {"%s%n", "%s%"}, {"...", "..."},
    };
    TempDir const dir;
    for (PrefixCase const &c : CASES) {
        std::string const path = gen_create_temp_file(dir.text(), c.prefix);
        EXPECT_THAT(name_of(path), StartsWith(c.start)) << c.prefix;
        EXPECT_LE(name_of(path).size(), std::string(c.start).size() + std::string("123456.tmp").size()) << path;
        EXPECT_TRUE(is_empty_file(path)) << c.prefix;
    }
}

TEST(GenTempFile, IsNotMadeInADirectoryThatCannotHoldIt)
{
    TempDir const dir;
    for (std::string const &directory : unusable_directories(dir))
        EXPECT_EQ(gen_create_temp_file(directory, "net"), "") << directory;
    EXPECT_EQ(gen_create_temp_file("", "net"), "");
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("plain file"));
    EXPECT_EQ(dir.read("plain file"), "content");
}

TEST(GenTempFile, IsMadeInADirectoryOfBlanks)
{
    TempDir const dir;
    std::filesystem::create_directory(dir.path() / "a b  c");
    EXPECT_THAT(gen_create_temp_file(dir.text("a b  c"), "x y"), StartsWith(dir.text("a b  c/x y")));
}

TEST(GenTempFile, IsFoundFromTheCurrentDirectoryIfItsOwnIsRelative)
{
    TempDir const dir;
    std::filesystem::create_directory(dir.path() / "sub");
    CurrentDirectory const current(dir.path());
    for (char const *const directory : {".", "sub"}) {
        std::string const path = gen_create_temp_file(directory, "net");
        EXPECT_THAT(path, StartsWith(std::string(directory) + "/net"));
        EXPECT_TRUE(is_empty_file(path)) << path;
    }
}

TEST(GenTempFile, TakesDirectoriesUpToTheLimitOfTheSystem)
{
    TempDir const dir;
    std::size_t const above = dir.text().size() + 1;
    for (std::size_t const length : {std::size_t{246}, std::size_t{247}, std::size_t{259}, above + 255}) {
        std::string const directory = dir.text(std::string(length - above, 'l'));
        std::error_code failed;
        std::filesystem::create_directory(directory, failed);
        std::string const path = gen_create_temp_file(directory, "net");
        // Windows has 260 characters for a path, and keeps 14 for the name.
        bool const is_made = !ON_WINDOWS || length <= 246;
        EXPECT_EQ(path.empty(), !is_made) << length;
        EXPECT_EQ(is_empty_file(path), is_made) << length;
    }
}

#ifndef _WIN32
TEST(GenTempFile, TakesBytesAsTheyAreAndCharactersWhole)
{
    TempDir const dir;
    std::string const directory = dir.text("\xe4\xff\x80");
    std::filesystem::create_directory(directory);
    struct PrefixCase
    {
        char const *prefix;
        char const *start;
    };
    constexpr PrefixCase CASES[] = {
        {"\xe4\xf6\xfc\xdf", "\xe4\xf6\xfc"},                             // Latin-1
        {"\xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f", "\xc3\xa4\xc3\xb6\xc3\xbc"}, // UTF-8
        {"a\xe2\x82\xac\xf0\x9f\x99\x82zz", "a\xe2\x82\xac\xf0\x9f\x99\x82"},
    };
    for (PrefixCase const &c : CASES) {
        std::string const path = gen_create_temp_file(directory, c.prefix);
        EXPECT_THAT(path, StartsWith(directory + '/' + c.start));
        EXPECT_EQ(name_of(path).size(), std::string(c.start).size() + std::string("123456.tmp").size());
        EXPECT_TRUE(is_empty_file(path));
    }
}

TEST(GenTempFile, APrefixLeadsNowhereElse)
{
    TempDir const dir;
    std::filesystem::create_directory(dir.path() / "d");
    for (char const *const prefix : {"../x", "a/b", "/", "a\\b"})
        EXPECT_EQ(gen_create_temp_file(dir.text("d"), prefix), "") << prefix;
    EXPECT_THAT(gen_create_temp_file(dir.text("d"), "abc/d"), StartsWith(dir.text("d/abc")));
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("d"));
}
#endif

TEST(GenTempFile, IsItsOwnForEachOfSixteenProcesses)
{
    constexpr std::size_t PROCESSES = 16;
    constexpr std::size_t FILES_EACH = 8; // so that they meet
    TempDir const dir;
    std::string const child = gen_get_module_path() + (ON_WINDOWS ? "gen_path_temp_child.exe" : "gen_path_temp_child");
    std::vector<ChildProcess> children;
    for (std::size_t i = 0; i < PROCESSES; ++i)
        children.emplace_back(child, '"' + dir.text() + "\" net " + std::to_string(FILES_EACH));
    std::set<std::string> printed;
    for (ChildProcess &process : children) {
        ChildResult const result = process.wait();
        EXPECT_EQ(result.status, 0) << result.output;
        std::istringstream lines(result.output);
        for (std::string path; std::getline(lines, path);)
            printed.insert(name_of(path));
    }
    EXPECT_THAT(printed, SizeIs(PROCESSES * FILES_EACH));
    EXPECT_EQ(entry_names(dir.path()), printed);
}

TEST(GenTempFileWithExtension, OfTheTemporaryFileItselfLeavesOneFile)
{
    for (char const *const extension : {"tmp", ".tmp"}) {
        TempDir const dir;
        std::string const path = gen_create_temp_file_with_extension(dir.text(), "net", extension);
        EXPECT_THAT(path, EndsWith(".tmp")) << extension;
        EXPECT_THAT(entry_names(dir.path()), ElementsAre(name_of(path))) << extension;
        EXPECT_TRUE(is_empty_file(path)) << extension;
    }
}

TEST(GenTempFileWithExtension, OfAnotherKindLeavesTheTemporaryFileToo)
{
    struct ExtensionCase
    {
        char const *extension;
        char const *end;
    };
    constexpr ExtensionCase CASES[] = {
        {"vlog", ".vlog"}, {".vlog", ".vlog"}, {"tar.gz", ".tar.gz"}, {"a b", ".a b"}, {"", ""}};
    for (ExtensionCase const &c : CASES) {
        TempDir const dir;
        std::string const path = gen_create_temp_file_with_extension(dir.text(), "net", c.extension);
        std::string const stem = path.substr(0, path.size() - std::string(c.end).size());
        EXPECT_EQ(path, stem + c.end);
        EXPECT_EQ(entry_names(dir.path()), (std::set<std::string>{name_of(stem + ".tmp"), name_of(path)}))
            << c.extension;
        EXPECT_TRUE(is_empty_file(path)) << path;
        EXPECT_TRUE(is_empty_file(stem + ".tmp")) << path;
    }
}

TEST(GenTempFileWithExtension, IsEmptyWithoutAUsableDirectory)
{
    TempDir const dir;
    for (std::string const &directory : unusable_directories(dir))
        for (char const *const extension : {"v", "tmp", ""})
            EXPECT_EQ(gen_create_temp_file_with_extension(directory, "net", extension), "") << directory;
    EXPECT_EQ(gen_create_temp_file_with_extension("", "net", "v"), "");
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("plain file"));
}

TEST(GenTempFileWithExtension, IsTheFifthPathIfNoneCanBeOpened)
{
    TempDir const dir;
    std::string const extension(300, 'x'); // longer than any name
    std::string const path = gen_create_temp_file_with_extension(dir.text(), "net", extension);
    EXPECT_THAT(path, StartsWith(dir.text("net")));
    EXPECT_THAT(path, EndsWith('.' + extension));
    EXPECT_THAT(entry_names(dir.path()), SizeIs(5));
    EXPECT_THAT(entry_names(dir.path()), Each(EndsWith(".tmp")));
}

TEST(GenUniquePath, IsAFileNameOfHexadecimalDigits)
{
    for (char const *const ignored : {static_cast<char const *>(nullptr), "", "/some/where"}) {
        std::string const name = gen_unique_path(ignored);
        EXPECT_THAT(name, EndsWith(".tmp"));
        EXPECT_EQ(name.find_first_not_of("0123456789abcdef"), name.size() - 4) << name;
    }
}

// The generator has one state for all threads: a thread doesn't begin the sequence again.
TEST(GenUniquePath, IsAnotherOneOnEveryThread)
{
    std::set<std::string> names;
    for (int i = 0; i < 8; ++i)
        std::thread([&] { names.insert(gen_unique_path(nullptr)); }).join();
    EXPECT_THAT(names, SizeIs(8));
}

TEST(GenUniqueDir, IsANameOnlyUnlessItIsToBeMade)
{
    TempDir const dir;
    std::string out = "former";
    EXPECT_TRUE(gen_create_unique_dir(dir.text("missing"), out, /*create=*/false));
    EXPECT_THAT(out, StartsWith(dir.text("missing/")));
    EXPECT_THAT(out, EndsWith(".tmp"));
    EXPECT_THAT(entry_names(dir.path()), IsEmpty());
}

TEST(GenUniqueDir, IsMadeUnderItsBase)
{
    TempDir const dir;
    std::vector<std::string> names = {"a b  c", "%s"};
    if (!ON_WINDOWS) {
        names.emplace_back("\xe4\xff");
        names.emplace_back(255, 'l');
    }
    for (std::string const &name : names)
        for (std::string const &base : {dir.text(name), dir.text(name) + '/'}) {
            std::filesystem::create_directory(dir.text(name));
            std::string out;
            EXPECT_TRUE(gen_create_unique_dir(base, out, /*create=*/true)) << base;
            EXPECT_EQ(out, dir.text(name) + '/' + name_of(out));
            EXPECT_TRUE(std::filesystem::is_directory(out)) << out;
        }
}

TEST(GenUniqueDir, GetsOneSlashAfterItsBase)
{
    struct BaseCase
    {
        char const *base;
        char const *start;
    };
    constexpr BaseCase CASES[] = {
        {"/", "/"},      {"//", "//"},      {"c:/p", "c:/p/"}, {"c:\\p\\", "c:\\p\\/"},
        {"a b", "a b/"}, {"\xe4", "\xe4/"}, {"", "/"},
    };
    for (BaseCase const &c : CASES) {
        std::string out;
        EXPECT_TRUE(gen_create_unique_dir(c.base, out, /*create=*/false));
        EXPECT_EQ(out.rfind('/') + 1, std::string(c.start).size()) << out;
        EXPECT_THAT(out, StartsWith(c.start));
    }
}

TEST(GenUniqueDir, MayBeWrittenOverItsBase)
{
    TempDir const dir;
    std::string base = dir.text();
    EXPECT_TRUE(gen_create_unique_dir(base, base, /*create=*/true));
    EXPECT_EQ(base, dir.text(name_of(base)));
    EXPECT_TRUE(std::filesystem::is_directory(base));
}

TEST(GenUniqueDir, IsEmptyIfItCannotBeMade)
{
    TempDir const dir;
    for (std::string const &base : unusable_directories(dir)) {
        std::string out = "former";
        EXPECT_FALSE(gen_create_unique_dir(base, out, /*create=*/true)) << base;
        EXPECT_EQ(out, "") << base;
    }
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("plain file"));
}

#ifdef _WIN32
TEST(GenTempPath, EndsInBothSeparators)
{
    TempDir const dir;
    Environment const temp("TMP", dir.path().string().c_str());
    EXPECT_EQ(gen_get_temp_path(), dir.path().string() + "\\/");
}
#else
TEST(GenTempPath, IsThatOfTheEnvironment)
{
    struct TempCase
    {
        char const *value;
        char const *path;
    };
    constexpr TempCase CASES[] = {
        {nullptr, "/tmp/"}, {"", "/tmp/"},    {"/", "/"},      {"/var/scratch", "/var/scratch/"},
        {"/s/", "/s/"},     {"/s//", "/s//"}, {"rel", "rel/"}, {"/missing/a b", "/missing/a b/"},
        {"/s\\", "/s\\/"},
    };
    for (TempCase const &c : CASES) {
        Environment const temp("TMPDIR", c.value);
        EXPECT_EQ(gen_get_temp_path(), c.path);
    }
}
#endif

TEST(GenTempPath, HoldsTemporaryFiles)
{
    std::string const path = gen_create_temp_file(gen_get_temp_path(), "gen");
    EXPECT_TRUE(is_empty_file(path)) << path;
    std::filesystem::remove(path);
}
