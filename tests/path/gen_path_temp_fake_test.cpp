// Temporary files and unique names over a scripted system, which gives the names that a test wants to meet.
#include "gen_path_sys.h"

#include "tests/support/gen_os_fake.h"
#include "tests/support/internal_error.h"
#include "tests/support/mem_recorder.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

using testing::ElementsAre;
using testing::ExitedWithCode;

namespace {

// Makes the numbers of the process repeatable.
void seed(unsigned number)
{
    std::srand(number);
}

std::size_t attempts()
{
    std::string const requests = gen_os_fake_temp_file_requests();
    return static_cast<std::size_t>(std::count(requests.begin(), requests.end(), '\n'));
}

} // namespace

TEST(GenTempFileRequest, IsPutInTheSystemsSeparators)
{
    struct RequestCase
    {
        char const *dir;
        char const *linux_dir;
    };
    constexpr RequestCase CASES[] = {
        {"c:/a b/c", "c:/a b/c"},
        {"c:\\a/c\\", "c:/a/c/"},
        {"/", "/"},
        {"///", "/"},
        {"\\\\host\\share\\", "//host/share/"},
        {"\xe4", "\xe4"},
    };
    gen_os_fake_set_temp_file_names("");
    std::string expected;
    for (RequestCase const &c : CASES) {
        EXPECT_EQ(gen_create_temp_file(c.dir, "pre%s"), "") << c.dir;
        FIO_PATH native(c.linux_dir);
        native.change_path_separators_for_windows_api();
        expected += native.fullpath() + "|pre%s\n";
    }
    EXPECT_EQ(gen_os_fake_temp_file_requests(), expected);
}

TEST(GenTempFileAttempts, EndWithTheFirstSuccess)
{
    TempDir const dir;
    gen_os_fake_set_temp_file_names("a.tmp\nb.tmp\n");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "v"), dir.text("a.v"));
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("a.tmp", "a.v"));
    EXPECT_EQ(attempts(), 1U);
}

TEST(GenTempFileAttempts, AreFiveWithoutATemporaryFile)
{
    gen_os_fake_set_temp_file_names("");
    EXPECT_EQ(gen_create_temp_file_with_extension("/missing", "pre", "v"), "");
    EXPECT_EQ(attempts(), 5U);
}

TEST(GenTempFileAttempts, GoOnAfterAFailure)
{
    TempDir const dir;
    gen_os_fake_set_temp_file_names("\n\nc.tmp\n");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "v"), dir.text("c.v"));
    EXPECT_EQ(attempts(), 3U);
}

TEST(GenTempFileAttempts, EmptyAFileThatIsInTheWay)
{
    TempDir const dir;
    dir.write("a.zq", "content");
    gen_os_fake_set_temp_file_names("a.tmp\nb.tmp\n");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "zq"), dir.text("b.zq"));
    EXPECT_THAT(entry_names(dir.path()), ElementsAre("a.tmp", "a.zq", "b.tmp", "b.zq"));
    EXPECT_EQ(dir.read("a.zq"), "");
}

TEST(GenTempFileAttempts, EndAtTheFifthCollisionWithItsPath)
{
    TempDir const dir;
    gen_os_fake_set_temp_file_names("a.tmp\nb.tmp\nc.tmp\nd.tmp\ne.tmp\nf.tmp\n");
    for (char const *const name : {"a.zq", "b.zq", "c.zq", "d.zq", "e.zq"})
        dir.write(name, "content");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "zq"), dir.text("e.zq"));
    EXPECT_EQ(attempts(), 5U);
    EXPECT_EQ(dir.read("e.zq"), "");
}

TEST(GenTempFileAttempts, GoOnWhenTheTargetCannotBeOpened)
{
    TempDir const dir;
    // Directories in the place of the targets; the name of the second holds the extension.
    for (char const *const name : {"a.zq", "b.zq.zq"})
        std::filesystem::create_directory(dir.path() / name);
    gen_os_fake_set_temp_file_names("a.tmp\nb.zq.tmp\nc.tmp\n");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "zq"), dir.text("c.zq"));
    EXPECT_EQ(attempts(), 3U);
}

TEST(GenTempFileAttempts, TakeAnExtensionAnywhereInThePathForTheFilesOwn)
{
    TempDir const dir;
    dir.write("x.zq/a.zq", "content");
    dir.write("b.zq.zq", "content");
    dir.write("czq.ZQ", "content");
    gen_os_fake_set_temp_file_names("a.tmp\nb.zq.tmp\nczq.tmp\nd.tmp\n");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text("x.zq"), "pre", "zq"), dir.text("x.zq/a.zq"));
    EXPECT_EQ(dir.read("x.zq/a.zq"), "");
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "zq"), dir.text("b.zq.zq"));
    EXPECT_EQ(dir.read("b.zq.zq"), "");
    EXPECT_EQ(attempts(), 2U);
    // With case.
    EXPECT_EQ(gen_create_temp_file_with_extension(dir.text(), "pre", "ZQ"), dir.text("d.ZQ"));
    EXPECT_EQ(dir.read("czq.ZQ"), "");
    EXPECT_EQ(attempts(), 4U);
}

TEST(GenUniquePathName, IsTheTimeAndANumberOfTheGenerator)
{
    struct NameCase
    {
        std::int64_t seconds;
        std::uint32_t low_bits;
    };
    constexpr NameCase CASES[] = {
        {0, 0}, {1, 1}, {0x65535353, 0x65535353}, {0xFFFFFFFF, 0xFFFFFFFF}, {0x100000002, 2},
    };
    for (NameCase const &c : CASES) {
        gen_os_fake_set_calendar_msec(c.seconds * 1000 + 999);
        seed(7);
        int const number = std::rand(); // NOLINT(cert-msc30-c,cert-msc50-cpp)
        seed(7);
        char expected[32];
        std::snprintf(expected, sizeof expected, "%x%x.tmp", c.low_bits, static_cast<unsigned>(number));
        EXPECT_EQ(gen_unique_path(nullptr), expected);
    }
}

TEST(GenUniquePathName, IsUsedForADirectoryOnce)
{
    TempDir const dir;
    std::string first;
    std::string second = "former";
    seed(7);
    EXPECT_TRUE(gen_create_unique_dir(dir.text(), first, /*create=*/true));
    seed(7);
    EXPECT_FALSE(gen_create_unique_dir(dir.text(), second, /*create=*/true));
    EXPECT_EQ(second, "");
    EXPECT_THAT(entry_names(dir.path()), ElementsAre(first.substr(dir.text().size() + 1)));
}

TEST(GenUniquePathNameDeathTest, ThatIsEmptyIsAnInternalError)
{
    EXPECT_EXIT(
        {
            mem_record().formats = false;
            gen_unique_path(nullptr);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with("Couldn't get unique path name!", "gen_path*"));
}

TEST(GenTempPathText, EndsInASlash)
{
    struct PathCase
    {
        char const *system;
        char const *path;
    };
    constexpr PathCase CASES[] = {
        {"", "/"}, // the system gives none
        {"C:\\Users\\me\\Temp\\", "C:\\Users\\me\\Temp\\/"},
        {"/tmp", "/tmp/"},
        {"/tmp/", "/tmp/"},
        {"\xe4", "\xe4/"},
    };
    for (PathCase const &c : CASES) {
        gen_os_fake_set_temp_directory(c.system);
        EXPECT_EQ(gen_get_temp_path(), c.path);
    }
}
