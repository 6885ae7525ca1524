#include "gen/base/gen_host_text.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t KIB = 1024;

struct MeminfoCase
{
    char const *text;
    bool is_told;
    GEN_HOST_MEMORY memory;
};
MeminfoCase const MEMINFO_CASES[] = {
    {"MemTotal:       1000 kB\nMemFree:         100 kB\nMemAvailable:    300 kB\nSwapCached:       5 kB\n"
     "SwapTotal:       50 kB\nSwapFree:        20 kB\n",
     true,
     {1000 * KIB, 1050 * KIB, 320 * KIB}},
    // Without swap space, without a line end, with other blanks.
    {"MemAvailable:\t7 kB\nMemTotal: 9 kB", true, {9 * KIB, 9 * KIB, 7 * KIB}},
    {"MemTotal: 25769803776 kB\nMemAvailable: 0 kB\n", true, {25769803776 * KIB, 25769803776 * KIB, 0}},
    // Of the two that are needed one is missing or no number.
    {"", false, {}},
    {"MemTotal: 9 kB\n", false, {}},
    {"MemAvailable: 7 kB\n", false, {}},
    {"MemTotal: many\nMemAvailable: 7 kB\n", false, {}},
    {"MemTotal:\nMemAvailable: 7 kB\n", false, {}},
    {" MemTotal: 9 kB\nMemAvailable: 7 kB\n", false, {}},
};

struct ReleaseCase
{
    char const *text;
    bool is_told;
    char const *name;
    char const *version;
};
constexpr ReleaseCase RELEASE_CASES[] = {
    {"PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n", true,
     "Debian GNU/Linux", "12"},
    {"NAME=Fedora\nVERSION_ID=39", true, "Fedora", "39"},
    {"NAME='A \"B\"'\n", true, "A \"B\"", ""},
    {"NAME=\"a\\\"b\\$c\"\nVERSION_ID=\n", true, "a\"b$c", ""},
    {"NAME=a\\\nVERSION_ID=1\\", true, "a\\", "1\\"}, // a backslash without a next character
    {"NAME=\n", true, "", ""},
    {"", false, "", ""},
    {"VERSION_ID=12\n", false, "", ""},
    {"#NAME=x\nPRETTY_NAME=y", false, "", ""},
};

} // namespace

TEST(GenReadMeminfo, ReadsItsLines)
{
    for (MeminfoCase const &c : MEMINFO_CASES) {
        GEN_HOST_MEMORY memory;
        EXPECT_EQ(gen_read_meminfo(c.text, memory), c.is_told) << c.text;
        EXPECT_EQ(memory.m_physical, c.memory.m_physical) << c.text;
        EXPECT_EQ(memory.m_total, c.memory.m_total) << c.text;
        EXPECT_EQ(memory.m_available, c.memory.m_available) << c.text;
    }
}

TEST(GenReadOsRelease, ReadsItsLines)
{
    for (ReleaseCase const &c : RELEASE_CASES) {
        GEN_HOST_DISTRIBUTION distribution;
        EXPECT_EQ(gen_read_os_release(c.text, distribution), c.is_told) << c.text;
        EXPECT_EQ(distribution.m_name, c.name) << c.text;
        EXPECT_EQ(distribution.m_version, c.version) << c.text;
    }
}

TEST(GenHostText, LeavesTheOutputAloneIfTheSystemFails)
{
    GEN_HOST_MEMORY memory{1, 2, 3};
    GEN_HOST_DISTRIBUTION distribution{"name", "version"};
    EXPECT_FALSE(gen_read_meminfo("MemTotal: 9 kB\n", memory));
    EXPECT_FALSE(gen_read_os_release("VERSION_ID=12\n", distribution));
    EXPECT_EQ(memory.m_physical, 1u);
    EXPECT_EQ(memory.m_available, 3u);
    EXPECT_EQ(distribution.m_name, "name");
    EXPECT_EQ(distribution.m_version, "version");
}
