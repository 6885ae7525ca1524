#include "gen_machine_sys.h"

#include "tests/support/gen_os_host_fake.h"

#include <gtest/gtest.h>

namespace {

using RamGetter = bool (*)(std::uint64_t *);
using TextGetter = bool (*)(std::string *);

class GenMachineFacts : public testing::Test
{
protected:
    GenMachineFacts() { gen_os_host_fake() = {}; }

    static std::string text(TextGetter getter)
    {
        std::string answer = "untouched";
        return getter(&answer) ? answer : "no answer: " + answer;
    }
};

} // namespace

TEST_F(GenMachineFacts, ReturnsTheMemoryByItsOddNames)
{
    gen_os_host_fake().memory = {1000, 1500, 700};
    struct Case
    {
        RamGetter getter;
        std::uint64_t bytes;
    };
    constexpr Case CASES[] = {
        {GEN_MACHINE_INFO::get_physical_ram, 1000}, {GEN_MACHINE_INFO::get_total_ram, 1500},
        {GEN_MACHINE_INFO::get_available_ram, 700}, {GEN_MACHINE_INFO::get_total_usage_ram, 800},
        {GEN_MACHINE_INFO::get_virtual_ram, 500},
    };
    for (Case const &c : CASES) {
        std::uint64_t bytes = 1;
        EXPECT_TRUE(c.getter(&bytes));
        EXPECT_EQ(bytes, c.bytes);
    }
}

TEST_F(GenMachineFacts, ReturnsZeroMemoryIfTheSystemHasNoFigure)
{
    for (RamGetter const getter :
         {GEN_MACHINE_INFO::get_physical_ram, GEN_MACHINE_INFO::get_total_ram, GEN_MACHINE_INFO::get_available_ram,
          GEN_MACHINE_INFO::get_total_usage_ram, GEN_MACHINE_INFO::get_virtual_ram}) {
        std::uint64_t bytes = 1;
        EXPECT_TRUE(getter(&bytes));
        EXPECT_EQ(bytes, 0u);
    }
}

TEST_F(GenMachineFacts, NamesASystemByItsVersion)
{
    struct Case
    {
        std::uint32_t major;
        std::uint32_t minor;
        char const *workstation;
        char const *server;
        char const *version;
    };
    constexpr Case CASES[] = {
        {0, 0, "Windows XP", "Windows XP", "0.0"},
        {5, 1, "Windows XP", "Windows XP", "5.1"},
        {5, 99, "Windows XP", "Windows XP", "5.99"},
        {6, 0, "Windows Vista", "Windows Vista", "6.0"},
        {6, 1, "Windows 7", "Windows 7", "6.1"},
        {6, 2, "Windows 8", "Windows Server 2012", "6.2"},
        {6, 3, "Windows 8.1", "Windows 8.1", "6.3"},
        {6, 4, "Windows 8.1", "Windows 8.1", "6.4"},
        {7, 0, "Windows 10", "Windows 10", "7.0"},
        {10, 0, "Windows 10", "Windows 10", "10.0"},
        {0xffffffff, 0xffffffff, "Windows 10", "Windows 10", "-1.-1"},
    };
    for (Case const &c : CASES) {
        gen_os_host_fake().version = {c.major, c.minor, /*is_workstation=*/true};
        EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_name), c.workstation) << c.major << '.' << c.minor;
        EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_version), c.version);
        gen_os_host_fake().version->is_workstation = false;
        EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_name), c.server) << c.major << '.' << c.minor;
    }
}

TEST_F(GenMachineFacts, NamesADistribution)
{
    gen_os_host_fake().distribution = {"Debian GNU/Linux", "12"};
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_name), "Debian GNU/Linux");
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_version), "12");
    // One that is renewed bit by bit has no versions.
    gen_os_host_fake().distribution = {"Rolling Linux", ""};
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_name), "Rolling Linux");
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_version), "no answer: untouched");
}

TEST_F(GenMachineFacts, HasNoNameForASystemThatReportsNone)
{
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_name), "no answer: untouched");
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_os_version), "no answer: untouched");
}

TEST_F(GenMachineFacts, NamesThePlatform)
{
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_platform_name), "fake");
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_platform_name_with_arch), "fake64");
    EXPECT_EQ(text(GEN_MACHINE_INFO::get_hw_name), "x86_64");
    EXPECT_TRUE(GEN_MACHINE_INFO::get_os_64_bit());
    EXPECT_TRUE(GEN_MACHINE_INFO::get_os_64_bit());
}

TEST_F(GenMachineFacts, ReturnsFalseForNull)
{
    gen_os_host_fake().distribution = {"Debian GNU/Linux", "12"};
    for (TextGetter const getter :
         {GEN_MACHINE_INFO::get_os_name, GEN_MACHINE_INFO::get_os_version, GEN_MACHINE_INFO::get_platform_name,
          GEN_MACHINE_INFO::get_platform_name_with_arch, GEN_MACHINE_INFO::get_hw_name})
        EXPECT_FALSE(getter(nullptr));
}
