#include "fio_sys.h"

namespace {

// Included before any header of the system makes a macro of the name.
std::int64_t write_time(struct _stat64i32 const &record)
{
    return record.st_mtime;
}

} // namespace

#include <sys/stat.h>

#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr unsigned MODE_DIRECTORY = 0x4000;
constexpr unsigned MODE_REGULAR = 0x8000;
constexpr unsigned MODE_OWNER_MAY_WRITE = 0200;

constexpr unsigned ATTRIBUTE_DIRECTORY = 0x10;
#ifndef _WIN32
constexpr unsigned ATTRIBUTE_READ_ONLY = 0x01;
constexpr unsigned ATTRIBUTE_HIDDEN = 0x02;
constexpr unsigned ATTRIBUTE_LINK = 0x400;
#endif

struct CloseFile
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// The path for calls that take no more than 260 characters in the common form.
std::filesystem::path any_length(FIO_PATH const &path)
{
#ifdef _WIN32
    return fio_get_unc_full_path(path);
#else
    return path.fullpath();
#endif
}

bool put(std::string const &path, char const *mode, char const *text)
{
    File const file(FIO_FILE_SYSTEM::fopen(path.c_str(), mode));
    return file && std::fputs(text, file.get()) >= 0;
}

class FioFileSystem : public testing::Test
{
protected:
    std::string at(std::string const &name) const { return m_temp.text(name); }

    unsigned mode(std::string const &path) const
    {
        struct _stat64i32 record = {};
        EXPECT_TRUE(FIO_FILE_SYSTEM::status(path, &record)) << path;
        return record.st_mode;
    }

    TempDir m_temp;
};

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
#ifdef _WIN32
    EXPECT_EQ(mode("NUL") & BOTH, 0u);
    EXPECT_EQ(mode("c:/") & BOTH, MODE_DIRECTORY);
#else
    EXPECT_EQ(mode("/dev/null") & BOTH, 0u);
    EXPECT_EQ(mode("/") & BOTH, MODE_DIRECTORY);
#endif
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

class FioFileScan : public FioFileSystem
{
protected:
    // The records of a whole scan.
    std::vector<struct _finddata64i32_t> scan(std::string const &pattern)
    {
        std::vector<struct _finddata64i32_t> records;
        struct _finddata64i32_t data = {};
        std::intptr_t const handle = FIO_FILE_SYSTEM::findfirst(at(pattern).c_str(), &data);
        if (handle == -1)
            return records;
        do
            records.push_back(data);
        while (FIO_FILE_SYSTEM::findnext(handle, &data) == 0);
        EXPECT_EQ(errno, ENOENT) << pattern;
        EXPECT_EQ(FIO_FILE_SYSTEM::findnext(handle, &data), -1) << "it has ended: " << pattern;
        EXPECT_EQ(FIO_FILE_SYSTEM::findclose(handle), 0) << pattern;
        return records;
    }
    std::vector<std::string> names(std::string const &pattern)
    {
        std::vector<std::string> result;
        for (struct _finddata64i32_t const &record : scan(pattern))
            result.emplace_back(record.name);
        return result;
    }
};

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

#ifdef _WIN32

std::wstring native(std::filesystem::path path)
{
    return path.make_preferred().wstring();
}

TEST_F(FioFileSystem, UncFullPathIsTheLongForm)
{
    CurrentDirectory const current(m_temp.path());
    std::wstring const here = L"\\\\?\\" + native(m_temp.path());
    EXPECT_EQ(fio_get_unc_full_path("a.v"), here + L"\\a.v");
    EXPECT_EQ(fio_get_unc_full_path("d/../e/./a.v"), here + L"\\e\\a.v");
    EXPECT_EQ(fio_get_unc_full_path(at("a.v").c_str()), here + L"\\a.v");

    struct PathCase
    {
        char const *path;
        wchar_t const *full;
    };
    constexpr PathCase CASES[] = {
        {"", L""},
        {"C:/a/b.v", L"\\\\?\\C:\\a\\b.v"},
        {"C:\\a\\..\\b.v", L"\\\\?\\C:\\b.v"},
        {"C:/", L"\\\\?\\C:\\"},
        {"C:/a//b/", L"\\\\?\\C:\\a\\b\\"},
        {"//host/share/a.v", L"\\\\?\\UNC\\host\\share\\a.v"},
        {"\\\\host\\share\\d\\..\\a.v", L"\\\\?\\UNC\\host\\share\\a.v"},
        {"\\\\?\\C:\\a.v", L"\\\\?\\C:\\a.v"},
        {"//?/C:/a.v", L"\\\\?\\C:\\a.v"},
        {"NUL", L"\\\\.\\NUL"},
    };
    for (PathCase const &c : CASES)
        EXPECT_EQ(fio_get_unc_full_path(c.path), c.full) << c.path;
    EXPECT_EQ(fio_get_unc_full_path(nullptr), L"");
}

#else

TEST_F(FioFileSystem, UncFullPathIsTheAbsolutePathWidened)
{
    CurrentDirectory const current(m_temp.path());
    std::wstring here;
    for (char c : m_temp.text())
        here += static_cast<wchar_t>(static_cast<unsigned char>(c));
    EXPECT_EQ(fio_get_unc_full_path("a.v"), here + L"/a.v");
    EXPECT_EQ(fio_get_unc_full_path("d/../a.v"), here + L"/d/../a.v");
    EXPECT_EQ(fio_get_unc_full_path("/d/a.v"), L"/d/a.v");
    EXPECT_EQ(fio_get_unc_full_path("/"), L"/");
    EXPECT_EQ(fio_get_unc_full_path(""), L"");
    EXPECT_EQ(fio_get_unc_full_path(nullptr), L"");
}

TEST_F(FioFileSystem, UncFullPathKeepsEveryByte)
{
    for (int byte = 1; byte < 256; ++byte) {
        std::string const path = std::string("/") + static_cast<char>(byte);
        std::wstring const expected = {L'/', static_cast<wchar_t>(byte)};
        EXPECT_EQ(fio_get_unc_full_path(path.c_str()), expected) << byte;
    }
}

TEST_F(FioFileSystem, StatusRecognisesPipesSocketsAndLinks)
{
    constexpr unsigned BOTH = MODE_DIRECTORY | MODE_REGULAR;
    std::string const pipe = at("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(mode(pipe) & BOTH, 0u);

    CurrentDirectory const current(m_temp.path());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "socket");
    int const socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0) << std::strerror(errno);
    EXPECT_EQ(mode("socket") & BOTH, 0u);
    close(socket);

    m_temp.write("d/a.v", "");
    std::filesystem::create_symlink("d", "directory_link");
    std::filesystem::create_symlink("d/a.v", "file_link");
    std::filesystem::create_symlink("none", "broken_link");
    EXPECT_EQ(mode("directory_link") & BOTH, MODE_DIRECTORY);
    EXPECT_EQ(mode("file_link") & BOTH, MODE_REGULAR);
    struct _stat64i32 record = {};
    EXPECT_FALSE(FIO_FILE_SYSTEM::status("broken_link", &record));
    EXPECT_FALSE(FIO_FILE_SYSTEM::exists("broken_link"));
}

TEST_F(FioFileSystem, FilesThatAreNotRegularAreNoResults)
{
    ASSERT_EQ(mkfifo(at("x.v").c_str(), 0600), 0);
    std::filesystem::create_symlink("none", m_temp.path() / "y.v");
    std::filesystem::create_symlink("x.v", m_temp.path() / "z.v");
    FIO_FIND scan(at("*"));
    EXPECT_EQ(scan.find_first(), "");
    FIO_FIND search(at(""));
    std::list<FIO_PATH> found;
    for (char const *name : {"x", "y", "z", "*"})
        EXPECT_FALSE(search.find_all(name, {"v"}, &found, true, false)) << name;
    EXPECT_EQ(search.find_first_relative_path("x.v").fullpath(), at("x.v")) << "this one takes whatever exists";
    EXPECT_EQ(search.find_first_relative_path("y.v").fullpath(), "");
}

TEST_F(FioFileScan, MarksLinksAndDescribesTheirTargets)
{
    m_temp.write("a.so", "12345");
    m_temp.write(".b.so", "");
    std::filesystem::create_directory(m_temp.path() / "d.so");
    std::filesystem::create_symlink("a.so", m_temp.path() / "e.so");
    std::filesystem::create_symlink("d.so", m_temp.path() / "f.so");
    std::filesystem::create_symlink("none", m_temp.path() / "g.so");
    m_temp.write("h.so", "");
    std::filesystem::permissions(m_temp.path() / "h.so", std::filesystem::perms::owner_read);

    std::vector<std::pair<std::string, unsigned>> attributes;
    for (struct _finddata64i32_t const &record : scan("*.so")) {
        attributes.emplace_back(record.name, record.attrib);
        if (record.name == std::string("e.so")) {
            EXPECT_EQ(record.size, 5u);
        }
    }
    using testing::Pair;
    EXPECT_THAT(attributes,
                ElementsAre(Pair(".b.so", ATTRIBUTE_HIDDEN), Pair("a.so", 0u), Pair("d.so", ATTRIBUTE_DIRECTORY),
                            Pair("e.so", ATTRIBUTE_LINK), Pair("f.so", ATTRIBUTE_LINK | ATTRIBUTE_DIRECTORY),
                            Pair("g.so", ATTRIBUTE_LINK), Pair("h.so", ATTRIBUTE_READ_ONLY)));
}

TEST_F(FioFileScan, PassesOverWhatHasGoneSince)
{
    for (char const *name : {"1", "2", "3"})
        m_temp.write(name, "");
    struct _finddata64i32_t data = {};
    std::intptr_t const handle = FIO_FILE_SYSTEM::findfirst(at("*[!]*").c_str(), &data);
    EXPECT_EQ(handle, -1) << "brackets are characters like any other";
    std::intptr_t const scan = FIO_FILE_SYSTEM::findfirst(at("?").c_str(), &data);
    ASSERT_NE(scan, -1);
    std::string const first = data.name;
    std::filesystem::remove(m_temp.path() / "2");
    std::vector<std::string> rest;
    while (FIO_FILE_SYSTEM::findnext(scan, &data) == 0)
        rest.emplace_back(data.name);
    EXPECT_EQ(FIO_FILE_SYSTEM::findclose(scan), 0);
    EXPECT_EQ(first, ".");
    EXPECT_THAT(rest, ElementsAre("1", "3"));
}

TEST_F(FioFileSystem, ARemovedCurrentDirectoryIsReturnedAsEmpty)
{
    std::filesystem::create_directory(m_temp.path() / "d");
    CurrentDirectory const current(m_temp.path() / "d");
    std::filesystem::remove(m_temp.path() / "d");
    EXPECT_EQ(FIO_FILE_SYSTEM::get_current_directory(), "");
    EXPECT_EQ(FIO_PATH("a.v").become_absolute("").fullpath(), "a.v");
    EXPECT_EQ(FIO_PATH("a.v").become_absolute("/d").fullpath(), "/d/a.v");
}

#endif

} // namespace
