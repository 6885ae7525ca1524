// The live machine, compared with the reports of the system's own tools.
#include "gen_machine_sys.h"

#include "tests/support/host_facts.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AnyOf;
using testing::MatchesRegex;
using testing::StartsWith;

TEST(GenMachineHostLive, ReturnsHostAndUser)
{
    ASSERT_NE(host_facts_host_name(), "");
    ASSERT_NE(host_facts_user_name(), "");
    EXPECT_EQ(gen_get_host_name(), host_facts_host_name());
    EXPECT_EQ(gen_get_user_name(), host_facts_user_name());
}

TEST(GenMachineHostLive, ReturnsTheMemory)
{
    std::uint64_t physical = 0;
    std::uint64_t total = 0;
    std::uint64_t available = 0;
    std::uint64_t swap = 0;
    EXPECT_TRUE(GEN_MACHINE_INFO::get_physical_ram(&physical));
    EXPECT_TRUE(GEN_MACHINE_INFO::get_total_ram(&total));
    EXPECT_TRUE(GEN_MACHINE_INFO::get_available_ram(&available));
    EXPECT_TRUE(GEN_MACHINE_INFO::get_virtual_ram(&swap));
    EXPECT_EQ(physical, host_facts_physical_memory());
    EXPECT_EQ(total, physical + swap);
    EXPECT_GT(available, 0u);
    EXPECT_LT(available, total);
}

TEST(GenMachineHostLive, NamesTheSystem)
{
    std::string name;
    std::string version;
    std::string platform;
    ASSERT_TRUE(GEN_MACHINE_INFO::get_os_name(&name));
    bool const has_version = GEN_MACHINE_INFO::get_os_version(&version);
    ASSERT_TRUE(GEN_MACHINE_INFO::get_platform_name_with_arch(&platform));
    EXPECT_EQ(platform, ON_WINDOWS ? "windows64" : "linux64");
    if (ON_WINDOWS) {
        EXPECT_TRUE(has_version);
        EXPECT_THAT(name, StartsWith("Windows "));
        EXPECT_THAT(version, MatchesRegex("\\d+\\.\\d+"));
    } else {
        EXPECT_EQ(name, host_facts_distribution_name());
        EXPECT_EQ(version, host_facts_distribution_version());
        EXPECT_EQ(has_version, !version.empty());
    }
}

TEST(GenMachineHostLive, ResolvesTheLoopback)
{
    EXPECT_THAT(gen_get_ip_addr("localhost"), AnyOf("127.0.0.1", StartsWith("127.0.0.1,")));
    EXPECT_THAT(gen_get_ip_addr("127.0.0.1"), "127.0.0.1");
    EXPECT_EQ(gen_get_ip_addr("no such host.invalid"), "");
    EXPECT_FALSE(gen_is_brisel_ip_addr("no such host.invalid"));
}

TEST(GenMachineHostLive, LooksForABrowserAndAContainer)
{
    std::string const browser = host_facts_browser_version();
    EXPECT_EQ(gen_is_valid_web_browser(), !browser.empty() && browser.front() >= '4') << browser;
    int const in_container = gen_is_running_in_container();
    EXPECT_EQ(in_container, !ON_WINDOWS && gen_check_is_running_in_container_for_file("/proc/1/cgroup") ? 1 : 0);
}
