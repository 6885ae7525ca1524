#include "fio_sys.h"

namespace {

// Before <sys/stat.h>, whose macro st_mtime would change the name of the member here.
std::int64_t write_time(struct _stat64i32 const &record)
{
    return record.st_mtime;
}

} // namespace

#include <sys/stat.h>

#include "tests/fio/fio_file_system_fixture.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr unsigned MODE_OWNER_MAY_WRITE = 0200;

struct CloseFile
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// The path in the form that the standard library takes whatever its length: on Windows the common form has a limit of
// 260 characters.
std::filesystem::path any_length(FIO_PATH const &path)
{
    return ON_WINDOWS ? std::filesystem::path(fio_get_unc_full_path(path)) : std::filesystem::path(path.fullpath());
}

bool put(std::string const &path, char const *mode, char const *text)
{
    File const file(FIO_FILE_SYSTEM::fopen(path.c_str(), mode));
    return file && std::fputs(text, file.get()) >= 0;
}

TEST_F(FioFileSystem, ExistsIsTrueForFilesAndDirectories)
{
    std::string const file = m_temp.write("d/a b.v", "");
    for (std::string const &path : {file, at("d"), at("d/"), at("d/../d/a b.v"), std::string(".")}) {
        EXPECT_TRUE(FIO_FILE_SYSTEM::exists(path)) << path;
        EXPECT_TRUE(FIO_FILE_SYSTEM::exists(path.c_str())) << path;
    }
    for (std::string const &path :
         {at("d/none"), at("none/a b.v"), file + ".v", file + '/', file + "/x", std::string()}) {
        EXPECT_FALSE(FIO_FILE_SYSTEM::exists(path)) << path;
        EXPECT_FALSE(FIO_FILE_SYSTEM::exists(path.c_str())) << path;
    }
    EXPECT_FALSE(FIO_FILE_SYSTEM::exists(static_cast<char const *>(nullptr)));
    EXPECT_TRUE(FIO_FILE_SYSTEM::exists(FIO_PATH(file))) << "a path passes for its text";
}

TEST_F(FioFileSystem, ExistsCountsFromTheCurrentDirectory)
{
    m_temp.write("d/a.v", "");
    CurrentDirectory const current(m_temp.path());
    EXPECT_TRUE(FIO_FILE_SYSTEM::exists("d/a.v"));
    EXPECT_FALSE(FIO_FILE_SYSTEM::exists("a.v"));
}

TEST_F(FioFileSystem, StatusDistinguishesDirectoriesAndRegularFiles)
{
    m_temp.write("d/a.v", "12345");
    constexpr unsigned BOTH = MODE_DIRECTORY | MODE_REGULAR;
    EXPECT_EQ(mode(at("d")) & BOTH, MODE_DIRECTORY);
    EXPECT_EQ(mode(at("d/")) & BOTH, MODE_DIRECTORY);
    EXPECT_EQ(mode(at("d/a.v")) & BOTH, MODE_REGULAR);
    EXPECT_EQ(mode(at("d/../d/a.v")) & BOTH, MODE_REGULAR);
    EXPECT_EQ(mode(".") & BOTH, MODE_DIRECTORY);
    EXPECT_EQ(mode(ON_WINDOWS ? "NUL" : "/dev/null") & BOTH, 0u);
    EXPECT_EQ(mode(ON_WINDOWS ? "c:/" : "/") & BOTH, MODE_DIRECTORY);
}

TEST_F(FioFileSystem, StatusFillsTheRecord)
{
    std::string const file = m_temp.write("a.v", "12345");
    struct _stat64i32 record = {};
    ASSERT_TRUE(FIO_FILE_SYSTEM::status(file, &record));
    EXPECT_EQ(record.st_size, 5);
    EXPECT_EQ(record.st_nlink, 1);
    EXPECT_EQ(record.st_mode & MODE_OWNER_MAY_WRITE, MODE_OWNER_MAY_WRITE);
    EXPECT_EQ(record.st_mtime, write_time(record));

    struct stat system_record;
    ASSERT_EQ(::stat(file.c_str(), &system_record), 0);
    EXPECT_EQ(record.st_mtime, system_record.st_mtime);
    EXPECT_EQ(record.st_atime, system_record.st_atime);
    EXPECT_EQ(record.st_ctime, system_record.st_ctime);
}

TEST_F(FioFileSystem, StatusShowsThePermissionToWrite)
{
    std::string const file = m_temp.write("a.v", "");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    EXPECT_EQ(mode(file) & MODE_OWNER_MAY_WRITE, 0u);
    EXPECT_EQ(mode(file) & MODE_REGULAR, MODE_REGULAR);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

TEST_F(FioFileSystem, StatusFailsAndLeavesTheRecord)
{
    std::string const file = m_temp.write("a.v", "");
    for (std::string const &path : {std::string(), at("none"), at("none/"), at("none/a.v"), file + '/', file + "/x"}) {
        struct _stat64i32 record = {};
        record.st_size = 77;
        EXPECT_FALSE(FIO_FILE_SYSTEM::status(path, &record)) << path;
        EXPECT_EQ(record.st_size, 77) << path;
    }
    EXPECT_FALSE(FIO_FILE_SYSTEM::status(file, nullptr));
}

TEST_F(FioFileSystem, CreateMakesOneDirectory)
{
    EXPECT_TRUE(FIO_FILE_SYSTEM::create(at("d")));
    EXPECT_TRUE(std::filesystem::is_directory(m_temp.path() / "d"));
    EXPECT_TRUE(FIO_FILE_SYSTEM::create(at("d/e/")));
    EXPECT_TRUE(std::filesystem::is_directory(m_temp.path() / "d/e"));
    EXPECT_FALSE(FIO_FILE_SYSTEM::create(at("d"))) << "it is there already";
    EXPECT_FALSE(FIO_FILE_SYSTEM::create(at("x/y"))) << "the parent is missing";
    EXPECT_FALSE(std::filesystem::exists(m_temp.path() / "x"));
    EXPECT_FALSE(FIO_FILE_SYSTEM::create(m_temp.write("a.v", "kept")));
    EXPECT_EQ(m_temp.read("a.v"), "kept");
    EXPECT_FALSE(FIO_FILE_SYSTEM::create(""));
}

TEST_F(FioFileSystem, FopenWritesAppendsAndReads)
{
    std::string const path = at("a b.txt");
    ASSERT_TRUE(put(path, "wb", "one"));
    ASSERT_TRUE(put(path, "ab", "two"));
    char buffer[16] = {};
    File const file(FIO_FILE_SYSTEM::fopen(path.c_str(), "r"));
    ASSERT_TRUE(file);
    EXPECT_STREQ(std::fgets(buffer, sizeof buffer, file.get()), "onetwo");
}

TEST_F(FioFileSystem, FopenGivesNullOnFailure)
{
    std::string const path = at("none");
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(path.c_str(), "r"), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(at("none/a").c_str(), "w"), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(m_temp.text().c_str(), "w"), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(nullptr, "w"), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen("", "w"), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(path.c_str(), nullptr), nullptr);
    EXPECT_EQ(FIO_FILE_SYSTEM::fopen(path.c_str(), ""), nullptr);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(FioFileSystem, ReturnsTheCurrentDirectoryWithForwardSlashes)
{
    std::filesystem::create_directories(m_temp.path() / "d e");
    CurrentDirectory const current(m_temp.path() / "d e");
    EXPECT_EQ(FIO_FILE_SYSTEM::get_current_directory(), at("d e"));
}

TEST_F(FioFileScan, GivesEveryNameThatMatches)
{
    for (char const *name : {"a.dll", "bc.dll", "b.dat", "dll", "sub/x.dll"})
        m_temp.write(name, "");
    std::filesystem::create_directory(m_temp.path() / "d.dll");
    EXPECT_THAT(names("*.dll"), UnorderedElementsAre("a.dll", "bc.dll", "d.dll"));
    EXPECT_THAT(names("b*"), UnorderedElementsAre("b.dat", "bc.dll"));
    EXPECT_THAT(names("?.dll"), UnorderedElementsAre("a.dll", "d.dll"));
    EXPECT_THAT(names("a.dll"), ElementsAre("a.dll"));
    EXPECT_THAT(names("sub/*.dll"), ElementsAre("x.dll"));
    EXPECT_THAT(names("sub/*"), UnorderedElementsAre(".", "..", "x.dll"));
    EXPECT_THAT(names("sub/*.*"), UnorderedElementsAre(".", "..", "x.dll"));
}

TEST_F(FioFileScan, ReportsSizesAndDirectories)
{
    m_temp.write("a.dll", "12345");
    m_temp.write("b.dll", "");
    std::filesystem::create_directory(m_temp.path() / "d.dll");
    struct _stat64i32 status = {};
    ASSERT_TRUE(FIO_FILE_SYSTEM::status(at("a.dll"), &status));
    std::size_t count = 0;
    for (struct _finddata64i32_t const &record : scan("*.dll")) {
        std::string const name = record.name;
        bool const directory = name == "d.dll";
        EXPECT_EQ((record.attrib & ATTRIBUTE_DIRECTORY) != 0, directory) << name;
        if (!directory) {
            EXPECT_EQ(record.size, name == "a.dll" ? 5u : 0u) << name;
        }
        if (name == "a.dll") {
            EXPECT_EQ(record.time_write, status.st_mtime);
        }
        ++count;
    }
    EXPECT_EQ(count, 3u);
}

TEST_F(FioFileScan, FailsWithoutAMatch)
{
    m_temp.write("a.dll", "");
    struct _finddata64i32_t data = {};
    for (std::string const &pattern : {at("*.exe"), at("none"), at("none/*"), std::string()}) {
        errno = 0;
        EXPECT_EQ(FIO_FILE_SYSTEM::findfirst(pattern.c_str(), &data), -1) << pattern;
        EXPECT_EQ(errno, ENOENT) << pattern;
    }
    EXPECT_EQ(FIO_FILE_SYSTEM::findfirst(nullptr, &data), -1);
    EXPECT_EQ(FIO_FILE_SYSTEM::findfirst(at("*").c_str(), nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(FioFileScan, RefusesAHandleThatIsNone)
{
    struct _finddata64i32_t data = {};
    errno = 0;
    EXPECT_EQ(FIO_FILE_SYSTEM::findnext(-1, &data), -1);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(FIO_FILE_SYSTEM::findclose(-1), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(FioFileScan, RunsAtTheSameTimeAsAnother)
{
    m_temp.write("a/1", "");
    m_temp.write("a/2", "");
    m_temp.write("b/3", "");
    struct _finddata64i32_t outer = {};
    struct _finddata64i32_t inner = {};
    std::intptr_t const first = FIO_FILE_SYSTEM::findfirst(at("a/?").c_str(), &outer);
    std::intptr_t const second = FIO_FILE_SYSTEM::findfirst(at("b/3").c_str(), &inner);
    ASSERT_NE(first, -1);
    ASSERT_NE(second, -1);
    EXPECT_EQ(FIO_FILE_SYSTEM::findnext(second, &inner), -1);
    EXPECT_EQ(FIO_FILE_SYSTEM::findclose(second), 0);
    EXPECT_EQ(FIO_FILE_SYSTEM::findclose(first), 0) << "before its end";
}

// A directory whose path is longer than the 260 characters of the platform's narrow calls.
TEST_F(FioFileSystem, TakesPathsOfAnyLength)
{
    std::string directory = m_temp.text();
    for (int i = 0; i < 8; ++i) {
        directory += '/' + std::string(60, static_cast<char>('a' + i));
        ASSERT_TRUE(FIO_FILE_SYSTEM::create(directory)) << directory;
    }
    ASSERT_GT(directory.size(), 260u);
    std::string const path = directory + "/file.v";
    EXPECT_FALSE(FIO_FILE_SYSTEM::exists(path));
    ASSERT_TRUE(put(path, "w", "123"));
    EXPECT_TRUE(FIO_FILE_SYSTEM::exists(path));
    EXPECT_TRUE(FIO_FILE_SYSTEM::exists(directory));
    struct _stat64i32 record = {};
    EXPECT_TRUE(FIO_FILE_SYSTEM::status(path, &record));
    EXPECT_EQ(record.st_size, 3);
    EXPECT_EQ(mode(directory + '/') & MODE_DIRECTORY, MODE_DIRECTORY);
    EXPECT_EQ(FIO_FIND(directory).find_first_relative_path("file.v").fullpath(), path);
    EXPECT_EQ(FIO_FIND(directory + "/*").find_first(), "file.v");
    std::list<FIO_PATH> found;
    EXPECT_TRUE(FIO_FIND(directory).find_all("file", {"v"}, &found, true, false));
    EXPECT_EQ(found.size(), 1u);

    // From within: the whole tree at once would go through calls that end at 260 characters.
    for (FIO_PATH gone(path); gone.fullpath().size() > m_temp.text().size(); gone = directory) {
        EXPECT_TRUE(std::filesystem::remove(any_length(gone))) << gone;
        EXPECT_FALSE(FIO_FILE_SYSTEM::exists(gone)) << gone;
        directory = gone.full_directory();
        directory.pop_back();
    }
}

} // namespace
