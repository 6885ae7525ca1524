#include "gen_machine_sys.h"

#include "tests/support/gen_os_host_fake.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

// The networks that the library was built with.
constexpr char const *SITE_NETWORKS[] = {ZEL_SITE_NETWORKS};

// A test whose system has only the values that the test sets.
class GenMachineHost : public testing::Test
{
protected:
    GenMachineHost() { gen_os_host_fake() = {}; }
};

bool runs_in_container_by(TempDir const &directory, std::string const &text)
{
    return gen_check_is_running_in_container_for_file(directory.write("cgroup", text));
}

} // namespace

TEST_F(GenMachineHost, ReturnsTheHostName)
{
    EXPECT_EQ(gen_get_host_name(), "");
    gen_os_host_fake().host_name = "builder";
    EXPECT_EQ(gen_get_host_name(), "builder");
}

TEST_F(GenMachineHost, ReturnsTheUserName)
{
    EXPECT_EQ(gen_get_user_name(), "");
    gen_os_host_fake().user_name = "ada";
    EXPECT_EQ(gen_get_user_name(), "ada");
}

TEST_F(GenMachineHost, JoinsAllAddresses)
{
    gen_os_host_fake().hosts = {
        {"one", {{192, 0, 2, 255}}},
        {"two", {{192, 0, 2, 1}, {0, 10, 200, 9}}},
        {"six", {{32, 1, 13, 184, 0, 0}}},
        {"none", {}},
    };
    EXPECT_EQ(gen_get_ip_addr("one"), "192.0.2.255");
    EXPECT_EQ(gen_get_ip_addr("two"), "192.0.2.1,0.10.200.9");
    EXPECT_EQ(gen_get_ip_addr("six"), "32.1.13.184.0.0");
    EXPECT_EQ(gen_get_ip_addr("none"), "");
    EXPECT_EQ(gen_get_ip_addr("unknown"), "");
}

TEST_F(GenMachineHost, KeepsTheAddressesOfThisHostAlone)
{
    GEN_OS_HOST_FAKE_SCRIPT &host = gen_os_host_fake();
    host.host_name = "here";
    EXPECT_EQ(gen_get_ip_addr(nullptr), "");
    EXPECT_EQ(gen_get_ip_addr(nullptr), ""); // a failed look-up is tried again
    host.hosts["here"] = {{10, 0, 0, 1}};
    EXPECT_EQ(gen_get_ip_addr("here"), "10.0.0.1"); // doesn't touch what is kept
    EXPECT_EQ(gen_get_ip_addr(nullptr), "10.0.0.1");
    host.hosts["here"] = {{10, 0, 0, 2}};
    EXPECT_EQ(gen_get_ip_addr(nullptr), "10.0.0.1");
    EXPECT_EQ(gen_get_ip_addr("here"), "10.0.0.2");
    EXPECT_THAT(host.look_ups, ElementsAre("here", "here", "here", "here", "here"));
}

TEST_F(GenMachineHost, ComparesTheFirstAddressWithTheSitesNetworks)
{
    GEN_OS_HOST_FAKE_SCRIPT &host = gen_os_host_fake();
    ASSERT_EQ(std::size(SITE_NETWORKS), 9u);
    for (std::string const network : SITE_NETWORKS) {
        std::size_t const point = network.find('.');
        ASSERT_EQ(network.find('.', point + 1), network.size() - 1) << network;
        auto const first = static_cast<unsigned char>(std::stoi(network));
        auto const second = static_cast<unsigned char>(std::stoi(network.substr(point + 1)));
        host.hosts["site"] = {{first, second, 3, 4}};
        EXPECT_TRUE(gen_is_brisel_ip_addr("site")) << network;
        host.hosts["site"] = {{first, second, 3, 4}, {127, 0, 0, 1}};
        EXPECT_TRUE(gen_is_brisel_ip_addr("site")) << network;
        host.hosts["site"] = {{127, 0, 0, 1}, {first, second, 3, 4}};
        EXPECT_FALSE(gen_is_brisel_ip_addr("site")) << network;
        host.hosts["site"] = {{1, first, second, 4}};
        EXPECT_FALSE(gen_is_brisel_ip_addr("site")) << network;
    }
    EXPECT_FALSE(gen_is_brisel_ip_addr("unknown"));
    EXPECT_FALSE(gen_is_brisel_ip_addr(nullptr));
}

TEST_F(GenMachineHost, LooksAtTheFirstCharacterOfTheBrowsersVersion)
{
    EXPECT_FALSE(gen_is_valid_web_browser());
    struct Case
    {
        char const *version;
        bool is_valid;
    };
    constexpr Case CASES[] = {
        {"9.11.19041.0", true},
        {"4.0", true},
        {"8", true},
        {"11.0", false},
        {"3.9", false},
        {"10.0", false},
        {"", false},
        {" 9", false},
        {"v9", true},
        {"\x80"
         "9",
         false}, // as a signed byte
    };
    for (Case const &c : CASES) {
        gen_os_host_fake().browser_version = c.version;
        EXPECT_EQ(gen_is_valid_web_browser(), c.is_valid) << c.version;
    }
}

TEST_F(GenMachineHost, FindsAContainerByTheLastLine)
{
    TempDir const directory;
    std::string const filler(1000, 'x');
    struct Case
    {
        std::string text;
        bool is_told;
    };
    Case const CASES[] = {
        {"", false},
        {"\n", false},
        {"0::/\n", false},
        {"1:name=systemd:/docker/0123\n", true},
        {"1:name=systemd:/lxc/box", true}, // no line end
        {"/docker\n/lxc\n", true},
        {"2:cpu:/docker/0123\n0::/\n", false}, // an earlier line
        {"2:cpu:/docker/0123\n\n", false},
        {"docker lxc\n", false},
        {"/Docker\n", false},
        // A long line counts by pieces of 1024 characters, and the last one decides.
        {std::string(1023, 'x') + "/docker", false},
        {std::string(1024, 'x') + "/docker", true},
        {"/docker" + std::string(1017, 'x'), true},
        {"/docker" + std::string(1018, 'x'), false},
        {std::string(100000, 'x') + '\n', false},
        {std::string(100000, 'x') + "\n/lxc", true},
    };
    for (Case const &c : CASES)
        EXPECT_EQ(runs_in_container_by(directory, c.text), c.is_told)
            << c.text.substr(0, 40) << " of " << c.text.size();
    EXPECT_FALSE(gen_check_is_running_in_container_for_file(directory.text("missing")));
    EXPECT_FALSE(gen_check_is_running_in_container_for_file(directory.text()));
    EXPECT_FALSE(gen_check_is_running_in_container_for_file(""));
}

TEST_F(GenMachineHost, AsksTheSystemsContainerFile)
{
    EXPECT_EQ(gen_is_running_in_container(), 0);
    TempDir const directory;
    gen_os_host_fake().container_file = directory.text("cgroup");
    EXPECT_EQ(gen_is_running_in_container(), 0);
    EXPECT_TRUE(runs_in_container_by(directory, "0::/docker/0123\n"));
    EXPECT_EQ(gen_is_running_in_container(), 1);
}
