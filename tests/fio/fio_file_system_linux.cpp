// What only the Linux file system does: names of any bytes, pipes, sockets and links, and removed directories.
#include "fio_sys.h"

#include "tests/fio/fio_file_system_fixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include <dirent.h>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// Whether directories give no types of their entries, as some file systems do.
bool l_hides_types = false;

} // namespace

// In place of the C library's, also for the libraries.
extern "C" __attribute__((visibility("default"))) dirent *readdir(DIR *stream)
{
    static auto const s_readdir = reinterpret_cast<dirent *(*)(DIR *)>(dlsym(RTLD_NEXT, "readdir"));
    dirent *const entry = s_readdir(stream);
    if (entry != nullptr && l_hides_types)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

namespace {

using testing::ElementsAre;

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

TEST_F(FioFileSystem, FindsFilesAlsoWhereDirectoriesGiveNoTypes)
{
    m_temp.write("d/a.v", "");
    m_temp.write("d/e/b.v", "");
    std::filesystem::create_symlink("a.v", m_temp.path() / "d/to_file.v");
    std::filesystem::create_symlink("e", m_temp.path() / "d/to_directory.v");
    std::filesystem::create_symlink("none", m_temp.path() / "d/to_none.v");
    ASSERT_EQ(mkfifo(at("d/pipe.v").c_str(), 0600), 0);
    for (bool const hides_types : {false, true}) {
        l_hides_types = hides_types;
        std::list<FIO_PATH> found;
        FIO_FIND(at("d")).find_all("*", {}, &found, /*absolute=*/true, /*descend=*/true);
        l_hides_types = false;
        std::vector<std::string> names;
        for (FIO_PATH const &path : found)
            names.push_back(path.fullpath().substr(m_temp.text().size()));
        EXPECT_THAT(names, ElementsAre("/d/a.v", "/d/to_file.v", "/d/e/b.v")) << hides_types;
    }
}

TEST_F(FioFileScan, WritesTheLongestNameAndNothingAfterTheRecord)
{
    std::string const longest(255, 'n');
    m_temp.write(longest, "");
    struct
    {
        struct _finddata64i32_t data;
        char after[8];
    } record;
    std::memset(&record, 'x', sizeof record);
    std::intptr_t const scan = FIO_FILE_SYSTEM::findfirst(at("n*").c_str(), &record.data);
    ASSERT_NE(scan, -1);
    EXPECT_EQ(FIO_FILE_SYSTEM::findclose(scan), 0);
    EXPECT_EQ(record.data.name, longest);
    EXPECT_EQ(std::string(record.after, sizeof record.after), std::string(sizeof record.after, 'x'));
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

} // namespace
