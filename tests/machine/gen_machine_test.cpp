// The capture over machines that are played from dumps. The library's sources are compiled into this executable, so
// that each test can begin with an empty state.
#include "gen_machine_sys.h"

#include "gen/machine/gen_machine_capture.h"
#include "mem_sys.h"
#include "tests/support/internal_error.h"
#include "tests/support/played_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>
#include <thread>

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Replaces the function of zel_thr, since the waits are recorded among the calls.
void thr_sleep(unsigned milliseconds)
{
    gen_os_machine_fake_calls().push_back("sleep " + std::to_string(milliseconds));
}

namespace {

constexpr unsigned UNTOUCHED = 4711;
constexpr char SYSCONF_KEY[] = "cpu_core_count_using_sysconf";

// A configuration key that is on for the length of a scope.
class KeyOn
{
public:
    explicit KeyOn(char const *key) : m_key(key) { mem_cfg_set(key, "on"); }
    ~KeyOn() { mem_cfg_set(m_key, nullptr); }
    KeyOn(KeyOn const &) = delete;
    KeyOn &operator=(KeyOn const &) = delete;

private:
    char const *m_key;
};

RecordedMessage debug_message(char const *text)
{
    return {MEM_MSG_DEBUG, "GEN", text};
}

constexpr char OTHER_PROCESSORS[] = "This process can not utilize all logical processors";
constexpr char NO_VENDOR_CACHES[] = "Unable to query cache info from unsupported vendor";
constexpr char NO_CPUID[] = "cpuid function is not supported";
constexpr char NO_EXTENDED_CPUID[] = "cpuid extended function is not supported";

struct Count
{
    bool result;
    int value;

    bool operator==(Count const &other) const { return result == other.result && value == other.value; }
};
std::ostream &operator<<(std::ostream &out, Count const &count)
{
    return out << (count.result ? "true, " : "false, ") << count.value;
}

Count count_by(bool (*get)(int *))
{
    Count count{false, UNTOUCHED};
    count.result = get(&count.value);
    return count;
}

struct Mask
{
    bool result;
    std::uint64_t value;
};
Mask non_smt_mask()
{
    unsigned long low = UNTOUCHED;
    std::uint64_t whole = UNTOUCHED;
    bool const result = GEN_MACHINE_INFO::get_non_smt_affinity_mask(&low, &whole);
    EXPECT_EQ(low, whole);
    return {result, whole};
}

// All feature getters in turn, by the names of their features; each result has to be `result`.
std::string features(bool result)
{
    struct Getter
    {
        char const *name;
        std::function<bool(bool *)> get;
    };
    using MachineInfo = GEN_MACHINE_INFO;
    Getter const getters[] = {
        {"sse", [](bool *b) { return MachineInfo::sse_is_supported(1, b); }},
        {"sse2", [](bool *b) { return MachineInfo::sse_is_supported(2, b); }},
        {"sse3", [](bool *b) { return MachineInfo::sse_is_supported(3, b); }},
        {"ssse3", [](bool *b) { return MachineInfo::sse_is_supported(4, b); }},
        {"sse4_1", [](bool *b) { return MachineInfo::sse_is_supported(5, b); }},
        {"sse4_2", [](bool *b) { return MachineInfo::sse_is_supported(6, b); }},
        {"popcnt", [](bool *b) { return MachineInfo::popcnt_is_supported(b); }},
        {"avx", [](bool *b) { return MachineInfo::avx_is_supported(1, b); }},
        {"avx2", [](bool *b) { return MachineInfo::avx_is_supported(2, b); }},
        {"bmi1", [](bool *b) { return MachineInfo::bmi_is_supported(1, b); }},
        {"bmi2", [](bool *b) { return MachineInfo::bmi_is_supported(2, b); }},
        {"lzcnt", [](bool *b) { return MachineInfo::lzcnt_is_supported(b); }},
    };
    std::string names;
    for (bool const preset : {false, true}) {
        names.clear();
        for (Getter const &getter : getters) {
            bool supported = preset;
            EXPECT_EQ(getter.get(&supported), result) << getter.name;
            if (supported)
                names += (names.empty() ? "" : " ") + std::string(getter.name);
        }
    }
    return names;
}

// The results for every level and kind, as "1d 32/64": kilobytes, bytes of a line.
std::string caches(bool result)
{
    std::string text;
    for (int level = 1; level <= 3; ++level)
        for (unsigned char const type : {GEN_CACHE_DATA, GEN_CACHE_INST}) {
            unsigned size = UNTOUCHED;
            unsigned line_size = UNTOUCHED;
            EXPECT_EQ(GEN_MACHINE_INFO::get_cache_size(level, &size, &line_size, type), result) << level << ' ' << type;
            if (size == 0)
                EXPECT_EQ(line_size, 0U) << level << ' ' << type;
            else
                text += (text.empty() ? "" : ", ") + std::to_string(level) + (type == GEN_CACHE_DATA ? "d " : "i ") +
                        std::to_string(size) + '/' + std::to_string(line_size);
        }
    return text;
}

} // namespace

// Machines.

namespace {

struct MachineCase
{
    char const *dump;
    bool is_valid;
    int logical;
    int packages;
    int cores;
    std::uint64_t non_smt_mask;
    char const *features;
    char const *caches;
};
constexpr char UP_TO_LZCNT[] = "sse sse2 sse3 ssse3 sse4_1 sse4_2 popcnt avx avx2 bmi1 bmi2 lzcnt";
constexpr MachineCase MACHINES[] = {
    {"intel_desktop_smt", true, 8, 1, 4, 0x0f, UP_TO_LZCNT, ""},
    {"intel_two_packages_smt", true, 16, 2, 8, 0x00ff, "sse sse2 sse3 ssse3 sse4_1 sse4_2 popcnt", "1d 32/64"},
    {"intel_quad_core", true, 4, 1, 4, 0xf, "sse sse2 sse3 ssse3", "1d 32/64, 1i 32/64, 2d 4096/64"},
    {"intel_level_3_by_signature", true, 8, 2, 4, 0x55, "sse sse2 sse3", "1d 16/64, 1i 12/0, 2d 2048/64, 3d 4096/64"},
    {"intel_trace_cache", true, 2, 1, 1, 0x1, "sse sse2", "1d 8/64, 1i 12/0, 2d 512/64"},
    {"intel_no_multithreading", true, 2, 2, 2, 0x3, "sse", "1d 16/32, 1i 16/32, 2d 512/32"},
    {"intel_leaf_2_three_times", true, 1, 1, 1, 0x1, "sse", "1d 8/32, 1i 8/32, 2d 128/32, 3d 512/64"},
    {"intel_leaf_1_only", true, 1, 1, 1, 0x1, "", ""},
    {"intel_leaf_0_only", true, 1, 1, 1, 0x1, "", ""},
    {"intel_equal_ids", true, 2, 1, 1, 0x1, "sse sse2", ""},
    {"amd_smt", true, 8, 1, 8, 0xff, UP_TO_LZCNT, "1d 32/64, 1i 64/64, 2d 512/64, 3d 8192/64"},
    {"amd_two_packages", true, 4, 2, 4, 0xf, "sse sse2 sse3", "1d 64/64, 1i 64/64, 2d 1024/64"},
    {"amd_no_multithreading", true, 1, 1, 1, 0x1, "sse", "1d 64/64, 1i 64/64, 2d 256/64"},
    {"amd_level_1_caches", true, 1, 1, 1, 0x1, "", "1d 32/32, 1i 32/32"},
    {"amd_no_caches", true, 1, 1, 1, 0x1, "lzcnt", ""},
    {"amd_40_processors", true, 40, 1, 32, 0xffffffff, UP_TO_LZCNT, "1d 32/64, 1i 32/64, 2d 512/64, 3d 65536/64"},
    {"amd_virtual_machine", true, 2, 1, 2, 0x3, UP_TO_LZCNT, "1d 48/64, 1i 32/64, 2d 1024/64, 3d 393216/64"},
    {"other_vendor", false, 2, 1, 2, 0x3, "sse sse2 sse3 ssse3 sse4_1 popcnt", ""},
    {"no_cpuid", false, 3, 3, 3, 0x7, "", ""},
    {"extended_fault", true, 1, 1, 1, 0x1, "sse", "1d 16/32, 1i 16/32, 2d 512/32"},
    {"masks_fail", false, 4, 0, 0, 0, "", ""},
    {"masks_zero", true, 64, 0, 0, 0, "", ""},
};

} // namespace

TEST(GenMachine, IsRightForEachDump)
{
    for (MachineCase const &c : MACHINES) {
        SCOPED_TRACE(c.dump);
        PlayedMachine const machine(c.dump);
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{c.is_valid, c.packages}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_package_cpu_count), (Count{c.is_valid, c.packages}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{c.is_valid, c.cores}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_logical_cpu_count), (Count{true, c.logical}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_smt_cpu_count), (Count{true, c.logical}));
        Mask const mask = non_smt_mask();
        EXPECT_EQ(mask.result, c.is_valid);
        EXPECT_EQ(mask.value, c.non_smt_mask);
        EXPECT_EQ(features(c.is_valid), c.features);
        EXPECT_EQ(caches(c.is_valid), c.caches);
    }
}

TEST(GenMachine, ReturnsTheSameAfterAnotherCapture)
{
    for (MachineCase const &c : MACHINES) {
        SCOPED_TRACE(c.dump);
        PlayedMachine const machine(c.dump);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(GEN_MACHINE_INFO::recapture_cpu_info(), c.is_valid);
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{c.is_valid, c.packages}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{c.is_valid, c.cores}));
        EXPECT_EQ(non_smt_mask().value, c.non_smt_mask);
        EXPECT_EQ(features(c.is_valid), c.features);
        EXPECT_EQ(caches(c.is_valid), c.caches);
    }
}

TEST(GenMachine, MessagesNameWhatIsMissing)
{
    struct MessageCase
    {
        char const *dump;
        std::vector<RecordedMessage> messages;
    };
    RecordedMessage const no_cpuid = debug_message(NO_CPUID);
    RecordedMessage const no_extended_cpuid = debug_message(NO_EXTENDED_CPUID);
    RecordedMessage const no_caches = debug_message(NO_VENDOR_CACHES);
    RecordedMessage const other_vendor = debug_message("CPU info not supported on this platform: CentaurHauls");
    MessageCase const cases[] = {
        {"intel_desktop_smt", {}},
        {"intel_leaf_0_only", {}},
        {"amd_40_processors", {}},
        {"masks_fail", {}},
        {"masks_zero", {}},
        {"other_vendor",
         {other_vendor, no_caches, other_vendor}}, // the caches of one package, the vendor on each visit
        {"extended_fault", {no_extended_cpuid}},
        {"no_cpuid",
         {no_cpuid, no_extended_cpuid, no_caches, no_cpuid, no_extended_cpuid, no_caches, no_cpuid, no_extended_cpuid,
          no_caches}},
    };
    for (MessageCase const &c : cases) {
        PlayedMachine const machine(c.dump);
        features(GEN_MACHINE_INFO::recapture_cpu_info());
        EXPECT_THAT(machine.messages(), ElementsAreArray(c.messages)) << c.dump;
    }
}

TEST(GenMachine, VendorIsTwelveCharacters)
{
    struct VendorCase
    {
        char const *name; // in the order of its characters: EBX, EDX, ECX
        GEN_VENDOR vendor;
    };
    constexpr VendorCase CASES[] = {
        {"AuthenticAMD", GEN_VENDOR_AUTHENTIC_AMD}, {"GenuineIntel", GEN_VENDOR_GENUINE},
        {"genuineIntel", GEN_VENDOR_UNSUPPORTED},   {"GenuineInte\0", GEN_VENDOR_UNSUPPORTED},
        {"            ", GEN_VENDOR_UNSUPPORTED},   {"100%s%n%d%d%", GEN_VENDOR_UNSUPPORTED},
        {"HygonGenuine", GEN_VENDOR_UNSUPPORTED},   {"\0uthenticAMD", GEN_VENDOR_UNSUPPORTED},
    };
    for (VendorCase const &c : CASES) {
        MachineDump dump = load_machine_dump("intel_leaf_0_only");
        GEN_CPUID answer;
        std::memcpy(&answer.m_ebx, c.name, 4);
        std::memcpy(&answer.m_edx, c.name + 4, 4);
        std::memcpy(&answer.m_ecx, c.name + 8, 4);
        dump.processors[0][0] = {answer};
        PlayedMachine machine(dump);
        bool const is_known = c.vendor != GEN_VENDOR_UNSUPPORTED;
        EXPECT_EQ(GEN_MACHINE_INFO::recapture_cpu_info(), is_known) << c.name;
        EXPECT_EQ(machine.state().m_packages.begin()->m_vendor, c.vendor) << c.name;
        if (is_known)
            EXPECT_THAT(machine.messages(), IsEmpty()) << c.name;
        else
            EXPECT_EQ(machine.messages().front(),
                      debug_message((std::string("CPU info not supported on this platform: ") + c.name).c_str()));
    }
    EXPECT_EQ(GEN_VENDOR_AUTHENTIC_AMD, 0);
    EXPECT_EQ(GEN_VENDOR_GENUINE, 1);
    EXPECT_EQ(GEN_VENDOR_UNSUPPORTED, 2);
    EXPECT_EQ(GEN_VENDOR_UNSET, -1);
}

// The facts that are kept for a package.

TEST(GenMachine, KeepsTheFactsOfTheFirstProcessorOfAPackage)
{
    MachineDump dump = load_machine_dump("intel_desktop_smt");
    // The second processor reports less.
    dump.processors[1][0] = {GEN_CPUID{2, 0x756e6547, 0x6c65746e, 0x49656e69}};
    dump.processors[1][2] = {GEN_CPUID{1, 0x2c, 0, 0}};
    dump.processors[1][0x80000000] = {GEN_CPUID{0x80000004, 0, 0, 0}};
    dump.processors[1][1] = {GEN_CPUID{0x506e3, 2U << 24 | 16U << 16, 0, 1U << 28}};
    PlayedMachine machine(dump);
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    ASSERT_EQ(machine.state().m_packages.size(), 1U);
    GEN_PKG const &package = *machine.state().m_packages.begin();
    EXPECT_EQ(package.m_vendor, GEN_VENDOR_GENUINE);
    EXPECT_EQ(package.m_max_leaf, 0x16U);
    EXPECT_EQ(package.m_max_extended_leaf, 0x80000008U);
    EXPECT_TRUE(package.m_fma); // which no getter reads
    EXPECT_THAT(package.m_caches, IsEmpty());
    EXPECT_EQ(features(true), UP_TO_LZCNT);
}

TEST(GenMachine, OrdersPackagesCoresAndLogicalProcessorsByTheirIds)
{
    PlayedMachine machine("intel_two_packages_smt");
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    std::string tree;
    for (GEN_PKG const &package : machine.state().m_packages) {
        tree += std::to_string(package.m_package_id) + ':';
        for (GEN_CORE const &core : package.m_cores) {
            tree += ' ' + std::to_string(core.m_core_id) + '(';
            for (GEN_LOGICAL_CPU const &cpu : core.m_logical_cpus)
                tree += std::to_string(cpu.m_smt_id) + '@' + std::to_string(cpu.m_affinity_bit) + ' ';
            tree.back() = ')';
        }
        tree += '\n';
    }
    EXPECT_EQ(tree, "0: 0(0@1 1@256) 2(0@4 1@1024) 4(0@16 1@4096) 6(0@64 1@16384)\n"
                    "16: 0(0@2 1@512) 2(0@8 1@2048) 4(0@32 1@8192) 6(0@128 1@32768)\n");
}

TEST(GenMachine, ThreadsOfACoreAreAWholeQuotient)
{
    struct QuotientCase
    {
        std::uint32_t logical_per_package;
        std::uint32_t cores_per_package;
        int packages;
        int cores;
    };
    constexpr QuotientCase CASES[] = {
        {16, 8, 1, 4}, {12, 8, 1, 8}, // 1.5 count as 1
        {7, 2, 1, 2},                 // 3 need two bits
        {8, 16, 1, 8},                // 0 need none
        {4, 64, 2, 8}, {255, 1, 1, 1}, {2, 1, 4, 4}, {1, 1, 8, 8}, {0, 1, 8, 8},
    };
    for (QuotientCase const &c : CASES) {
        MachineDump dump = load_machine_dump("intel_desktop_smt"); // 8 processors with the ids from 0 to 7
        for (auto &[number, leaves] : dump.processors) {
            std::uint32_t &ebx = leaves[1].front()->m_ebx;
            ebx = (ebx & 0xff00ffff) | c.logical_per_package << 16;
            leaves[4].front()->m_eax = (c.cores_per_package - 1) << 26 | 0x03ffffff;
        }
        PlayedMachine const machine(dump);
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{true, c.packages}))
            << c.logical_per_package << " / " << c.cores_per_package;
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{true, c.cores}))
            << c.logical_per_package << " / " << c.cores_per_package;
    }
}

TEST(GenMachine, TheFirstPackageIsTheOneWithTheLowestId)
{
    MachineDump dump = load_machine_dump("amd_two_packages");
    std::swap(dump.processors[0], dump.processors[2]);
    std::swap(dump.processors[1], dump.processors[3]);
    dump.processors[2][1].front()->m_edx &= ~(1U << 26); // the first one visited of the package 0
    dump.processors[2][0x80000006] = {GEN_CPUID{0, 0, 0x00800140, 0}};
    PlayedMachine const machine(dump);
    EXPECT_EQ(features(true), "sse sse3");
    EXPECT_EQ(caches(true), "1d 64/64, 1i 64/64, 2d 128/64");
}

TEST(GenMachine, AvxNeedsOneOfTwoBits)
{
    for (unsigned const ecx : {0U, 1U << 26, 1U << 27, 1U << 28, 3U << 27, 1U << 29}) {
        MachineDump dump = load_machine_dump("amd_no_multithreading");
        dump.processors[0][1].front()->m_ecx = ecx;
        PlayedMachine const machine(dump);
        bool supported = false;
        EXPECT_TRUE(GEN_MACHINE_INFO::avx_is_supported(1, &supported));
        EXPECT_EQ(supported, (ecx & 3U << 27) != 0) << std::hex << ecx;
    }
}

TEST(GenMachine, EachFeatureIsOneBit)
{
    struct FeatureCase
    {
        std::uint32_t leaf;
        unsigned bit;
        std::uint32_t GEN_CPUID::*word;
        char const *feature;
    };
    constexpr FeatureCase CASES[] = {
        {1, 25, &GEN_CPUID::m_edx, "sse"},           {1, 26, &GEN_CPUID::m_edx, "sse2"},
        {1, 0, &GEN_CPUID::m_ecx, "sse3"},           {1, 9, &GEN_CPUID::m_ecx, "ssse3"},
        {1, 19, &GEN_CPUID::m_ecx, "sse4_1"},        {1, 20, &GEN_CPUID::m_ecx, "sse4_2"},
        {1, 23, &GEN_CPUID::m_ecx, "popcnt"},        {1, 27, &GEN_CPUID::m_ecx, "avx"},
        {1, 28, &GEN_CPUID::m_ecx, "avx"},           {7, 5, &GEN_CPUID::m_ebx, "avx2"},
        {7, 3, &GEN_CPUID::m_ebx, "bmi1"},           {7, 8, &GEN_CPUID::m_ebx, "bmi2"},
        {0x80000001, 5, &GEN_CPUID::m_ecx, "lzcnt"},
    };
    for (FeatureCase const &c : CASES)
        for (bool const is_set : {true, false}) {
            MachineDump dump = load_machine_dump("amd_no_multithreading");
            std::uint32_t const bit = std::uint32_t{1} << c.bit;
            for (std::uint32_t const leaf : {1U, 7U, 0x80000001U}) {
                GEN_CPUID answer;
                // All bits but this one, or this one alone.
                if (!is_set)
                    answer = {~0U, ~0U, ~0U, ~0U};
                if (leaf == c.leaf)
                    answer.*c.word = is_set ? bit : ~bit;
                // The other of the two bits of AVX; no multi-threading.
                if (leaf == 1 && !is_set && std::string(c.feature) == "avx")
                    answer.m_ecx &= ~(3U << 27);
                answer.m_edx &= ~(leaf == 1 ? 1U << 28 : 0);
                dump.processors[0][leaf] = {answer};
            }
            PlayedMachine const machine(dump);
            std::string const found = ' ' + features(true) + ' ';
            if (is_set)
                EXPECT_EQ(found, ' ' + std::string(c.feature) + ' ') << "bit " << c.bit;
            else
                EXPECT_THAT(found, Not(HasSubstr(' ' + std::string(c.feature) + ' '))) << "bit " << c.bit;
        }
}

TEST(GenMachine, FmaIsCapturedFromItsBit)
{
    for (std::uint32_t const ecx : {0U, ~(1U << 12), 1U << 12, ~0U}) {
        MachineDump dump = load_machine_dump("amd_no_multithreading");
        dump.processors[0][1].front()->m_ecx = ecx;
        PlayedMachine machine(dump);
        GEN_MACHINE_INFO::recapture_cpu_info();
        EXPECT_EQ(machine.state().m_packages.begin()->m_fma, (ecx & 1U << 12) != 0) << std::hex << ecx;
    }
}

// Levels.

TEST(GenMachine, LevelsOutOfRangeAreNotSupported)
{
    constexpr int INT_LEAST = std::numeric_limits<int>::min();
    constexpr int INT_MOST = std::numeric_limits<int>::max();
    for (char const *const dump : {"amd_smt", "other_vendor", "masks_zero"}) {
        PlayedMachine const machine(dump);
        bool const is_valid = GEN_MACHINE_INFO::recapture_cpu_info();
        for (int const level : {INT_LEAST, -1, 0, 3, 7, 8, 256 + 1, INT_MOST}) {
            bool sse = true;
            bool avx = true;
            bool bmi = true;
            EXPECT_EQ(GEN_MACHINE_INFO::avx_is_supported(level, &avx), is_valid);
            EXPECT_EQ(GEN_MACHINE_INFO::bmi_is_supported(level, &bmi), is_valid);
            EXPECT_FALSE(avx) << dump << ' ' << level;
            EXPECT_FALSE(bmi) << dump << ' ' << level;
            if (level == 3)
                continue;
            EXPECT_EQ(GEN_MACHINE_INFO::sse_is_supported(level, &sse), is_valid);
            EXPECT_FALSE(sse) << dump << ' ' << level;
        }
    }
}

// The steps.

TEST(GenMachineSteps, VisitEachProcessorAndAskWhatTheyNeed)
{
    PlayedMachine machine("intel_trace_cache");
    GEN_MACHINE_INFO::recapture_cpu_info();
    EXPECT_THAT(machine.calls(), ElementsAre("masks", "move 1", "sleep 0", "cpuid 0", "cpuid 80000000", "cpuid 1",
                                             "cpuid 7", "cpuid 80000001", "cpuid 2", "move 2", "sleep 0", "cpuid 0",
                                             "cpuid 80000000", "cpuid 1", "release 3", "sleep 0"));
}

TEST(GenMachineSteps, AskEachLeafOnceForAPackage)
{
    struct StepCase
    {
        char const *dump;
        std::vector<std::string> leaves;
    };
    StepCase const cases[] = {
        {"intel_leaf_2_three_times", {"0", "80000000", "1", "7", "80000001", "2", "2", "2"}},
        {"intel_leaf_1_only", {"0", "80000000", "1", "7", "80000001"}},
        {"intel_leaf_0_only", {"0", "80000000"}},
        {"intel_equal_ids", {"0", "80000000", "1", "4", "7", "80000001", "2", "0", "80000000", "1", "4"}},
        {"amd_no_multithreading", {"0", "80000000", "1", "7", "80000001", "80000005", "80000006"}},
        {"amd_level_1_caches", {"0", "80000000", "1", "7", "80000001", "80000005"}},
        {"amd_no_caches", {"0", "80000000", "1", "7", "80000001"}},
        {"other_vendor", {"0", "80000000", "1", "7", "80000001", "0", "80000000", "1"}},
        {"no_cpuid", {"0", "80000000", "0", "80000000", "0", "80000000"}},
    };
    for (StepCase const &c : cases) {
        PlayedMachine machine(c.dump);
        GEN_MACHINE_INFO::recapture_cpu_info();
        std::vector<std::string> leaves;
        for (std::string const &call : machine.calls())
            if (call.rfind("cpuid ", 0) == 0)
                leaves.push_back(call.substr(6));
        EXPECT_THAT(leaves, ElementsAreArray(c.leaves)) << c.dump;
    }
}

TEST(GenMachineSteps, AreTakenOnce)
{
    PlayedMachine machine("intel_desktop_smt");
    features(true);
    std::size_t const count = machine.calls().size();
    features(true);
    caches(true);
    non_smt_mask();
    count_by(GEN_MACHINE_INFO::get_core_cpu_count);
    count_by(GEN_MACHINE_INFO::get_physical_cpu_count);
    EXPECT_EQ(machine.calls().size(), count);
    GEN_MACHINE_INFO::recapture_cpu_info();
    EXPECT_GT(machine.calls().size(), count);
}

TEST(GenMachineSteps, AreTakenByEachOperationOfTheCaptureAndByNoOther)
{
    struct OperationCase
    {
        char const *name;
        bool captures;
        std::function<void()> call;
    };
    using MachineInfo = GEN_MACHINE_INFO;
    static int number;
    static bool flag;
    static unsigned size;
    OperationCase const cases[] = {
        {"recapture", true, [] { MachineInfo::recapture_cpu_info(); }},
        {"logical", false, [] { MachineInfo::get_logical_cpu_count(&number); }},
        {"smt", false, [] { MachineInfo::get_smt_cpu_count(&number); }},
        {"physical", true, [] { MachineInfo::get_physical_cpu_count(&number); }},
        {"package", true, [] { MachineInfo::get_package_cpu_count(&number); }},
        {"core", true, [] { MachineInfo::get_core_cpu_count(&number); }},
        {"mask", true, [] { non_smt_mask(); }},
        {"sse", true, [] { MachineInfo::sse_is_supported(0, &flag); }},
        {"avx", true, [] { MachineInfo::avx_is_supported(0, &flag); }},
        {"bmi", true, [] { MachineInfo::bmi_is_supported(0, &flag); }},
        {"popcnt", true, [] { MachineInfo::popcnt_is_supported(&flag); }},
        {"lzcnt", true, [] { MachineInfo::lzcnt_is_supported(&flag); }},
        {"cache", true, [] { MachineInfo::get_cache_size(1, &size, nullptr, GEN_CACHE_DATA); }},
        {"frequency", false, [] { MachineInfo::get_cpu_frequency(&number); }},
    };
    for (OperationCase const &c : cases) {
        PlayedMachine machine("amd_two_packages");
        c.call();
        EXPECT_EQ(!machine.calls().empty(), c.captures) << c.name;
        EXPECT_EQ(machine.state().m_cpu_info_captured, c.captures) << c.name;
    }
}

TEST(GenMachineSteps, WithoutMasksVisitNothingAndAreNotTriedAgain)
{
    PlayedMachine machine("masks_fail");
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), ElementsAre("masks", "release 0", "sleep 0"));
    machine.calls().clear();
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), ElementsAre("release 0", "sleep 0"));
    gen_os_machine_fake_play(load_machine_dump("amd_smt"));
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), ElementsAre("release 0", "sleep 0"));
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{false, 0}));
}

TEST(GenMachineSteps, OfAnUnknownVendorAreNotTakenAgainEither)
{
    PlayedMachine machine("other_vendor");
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), testing::Contains("release 3"));
    machine.calls().clear();
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), ElementsAre("release 0", "sleep 0"));
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{false, 2}));
}

TEST(GenMachineSteps, WithMasksOfZeroVisitNothing)
{
    PlayedMachine machine("masks_zero");
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), ElementsAre("masks", "release 0", "sleep 0"));
}

TEST(GenMachineSteps, EndWithTheLastExistingProcessorOrThe32nd)
{
    struct WalkCase
    {
        std::uint64_t system_mask;
        std::size_t moves;
    };
    constexpr WalkCase CASES[] = {
        {0, 0},
        {1, 1},
        {2, 2}, // the first processor is tried although it isn't there
        {3, 2},
        {4, 3},
        {0x80000000, 32},
        {0xffffffff, 32},
        {0x100000000, 32},
        {0x8000000000000000, 32},
        {0xffffffffffffffff, 32},
    };
    for (WalkCase const &c : CASES) {
        MachineDump dump = load_machine_dump("amd_40_processors");
        dump.system_mask = c.system_mask;
        dump.process_mask = 0;
        PlayedMachine machine(dump);
        EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
        std::vector<std::string> expected{"masks"};
        for (std::size_t i = 0; i < c.moves; ++i) {
            char move[20];
            std::snprintf(move, sizeof move, "move %x", 1U << i);
            expected.emplace_back(move);
        }
        expected.insert(expected.end(), {"release 0", "sleep 0"});
        EXPECT_THAT(machine.calls(), ElementsAreArray(expected)) << std::hex << c.system_mask;
    }
}

TEST(GenMachineSteps, OfARestrictedProcessPassOverTheOtherProcessors)
{
    struct RestrictedCase
    {
        std::uint64_t process_mask;
        int packages;
        int cores;
        std::uint64_t non_smt_mask;
        std::string last_move;
    };
    RestrictedCase const cases[] = {
        {0xffff, 2, 8, 0x00ff, "release ffff"}, {0x0001, 1, 1, 0x0001, "release 1"},
        {0x0300, 2, 2, 0x0300, "release 300"}, // the second threads alone
        {0x0555, 1, 4, 0x0055, "release 555"}, // one package
        {0x8001, 2, 2, 0x8001, "release 8001"},
    };
    for (RestrictedCase const &c : cases) {
        MachineDump dump = load_machine_dump("intel_two_packages_smt");
        dump.process_mask = c.process_mask;
        PlayedMachine machine(dump);
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{true, c.packages}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{true, c.cores}));
        EXPECT_EQ(non_smt_mask().value, c.non_smt_mask);
        EXPECT_EQ(*(machine.calls().end() - 2), c.last_move);
        if (c.process_mask == 0xffff)
            EXPECT_THAT(machine.messages(), IsEmpty());
        else
            EXPECT_THAT(machine.messages(), ElementsAre(debug_message(OTHER_PROCESSORS)));
    }
}

TEST(GenMachineSteps, NumberProcessorsWithoutTheMultiThreadingFlagByTheirVisits)
{
    MachineDump dump = load_machine_dump("intel_no_multithreading");
    dump.processors[5] = dump.processors[1];
    dump.processors[6] = dump.processors[1];
    dump.system_mask = 0x7f;
    dump.process_mask = 0x62; // the processors 1, 5 and 6
    PlayedMachine machine(dump);
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{true, 3}));
    std::string packages;
    for (GEN_PKG const &package : machine.state().m_packages) {
        ASSERT_EQ(package.m_cores.size(), 1U);
        GEN_CORE const &core = *package.m_cores.begin();
        EXPECT_EQ(core.m_core_id, 0);
        ASSERT_EQ(core.m_logical_cpus.size(), 1U);
        EXPECT_EQ(core.m_logical_cpus.begin()->m_smt_id, 0);
        packages += std::to_string(package.m_package_id) + '@' +
                    std::to_string(core.m_logical_cpus.begin()->m_affinity_bit) + ' ';
    }
    EXPECT_EQ(packages, "0@2 1@32 2@64 ");
}

// A second capture.

TEST(GenMachineRecapture, AddsWhatHasAppeared)
{
    MachineDump dump = load_machine_dump("intel_two_packages_smt");
    dump.process_mask = 0x0001;
    PlayedMachine machine(dump);
    struct GrowthCase
    {
        std::uint64_t process_mask;
        int packages;
        int cores;
        std::size_t threads_of_first_core;
        std::uint64_t non_smt_mask;
    };
    constexpr GrowthCase CASES[] = {
        {0x0001, 1, 1, 1, 0x0001}, {0x0100, 1, 1, 2, 0x0001}, // a second thread; the first is no longer there and stays
        {0x0400, 1, 2, 2, 0x0401},                            // a core, by its second thread
        {0x0004, 1, 2, 2, 0x0005},                            // its first thread
        {0x0200, 2, 3, 2, 0x0205},                            // a package
        {0xffff, 2, 8, 2, 0x00ff}, {0x0001, 2, 8, 2, 0x00ff},
    };
    for (GrowthCase const &c : CASES) {
        SCOPED_TRACE(testing::Message() << std::hex << c.process_mask);
        dump.process_mask = c.process_mask;
        gen_os_machine_fake_play(dump);
        EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{true, c.packages}));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{true, c.cores}));
        EXPECT_EQ(machine.state().m_packages.begin()->m_cores.begin()->m_logical_cpus.size(), c.threads_of_first_core);
        EXPECT_EQ(non_smt_mask().value, c.non_smt_mask);
    }
}

TEST(GenMachineRecapture, ReadsAKnownPackageNoMore)
{
    PlayedMachine machine("amd_smt");
    std::string const first_features = features(true);
    std::string const first_caches = caches(true);
    MachineDump changed = load_machine_dump("amd_smt");
    for (auto &[number, leaves] : changed.processors) {
        leaves[7] = leaves[0x80000005] = {GEN_CPUID()};
        leaves[1].front()->m_ecx = 0;
    }
    gen_os_machine_fake_play(changed);
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(machine.calls(), Not(testing::Contains("cpuid 7")));
    EXPECT_EQ(features(true), first_features);
    EXPECT_EQ(caches(true), first_caches);
}

TEST(GenMachineRecapture, FailsForGoodWhenTheMasksFail)
{
    PlayedMachine const machine("amd_smt");
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    gen_os_machine_fake_play(load_machine_dump("masks_fail"));
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    gen_os_machine_fake_play(load_machine_dump("amd_smt"));
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{false, 8})); // what there was stays
    EXPECT_EQ(features(false), UP_TO_LZCNT);
}

// The configuration key.

TEST(GenMachineKey, OfTheSystemsCountLeavesOutTheCaptureForCoresAlone)
{
    for (char const *const dump : {"amd_40_processors", "other_vendor", "masks_fail"}) {
        SCOPED_TRACE(dump);
        MachineDump const machine_dump = load_machine_dump(dump);
        PlayedMachine machine(machine_dump);
        KeyOn const key(SYSCONF_KEY);
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{true, machine_dump.online_count}));
        EXPECT_THAT(machine.calls(), IsEmpty());
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{true, machine_dump.online_count}));
        EXPECT_THAT(machine.calls(), Not(IsEmpty()));
        EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_package_cpu_count), (Count{true, machine_dump.online_count}));
    }
}

// Frequency.

TEST(GenMachineFrequency, IsTheSystemsOrNone)
{
    int mhz = UNTOUCHED;
    EXPECT_FALSE(GEN_MACHINE_INFO::get_cpu_frequency(&mhz));
    EXPECT_EQ(mhz, static_cast<int>(UNTOUCHED));
    gen_os_machine_fake_set_mhz(2400);
    EXPECT_TRUE(GEN_MACHINE_INFO::get_cpu_frequency(&mhz));
    EXPECT_EQ(mhz, 2400);
    gen_os_machine_fake_set_mhz({});
}

// Preconditions, which come before the capture.

TEST(GenMachineDeathTest, NullIsAnInternalError)
{
    using MachineInfo = GEN_MACHINE_INFO;
    unsigned long mask;
    std::uint64_t mask_qword;
    struct NullCase
    {
        std::function<void()> call;
        char const *text;
    };
    NullCase const cases[] = {
        {[] { MachineInfo::get_logical_cpu_count(nullptr); }, "cpu_count != 0"},
        {[] { MachineInfo::get_smt_cpu_count(nullptr); }, "cpu_count != 0"},
        {[] { MachineInfo::get_physical_cpu_count(nullptr); }, "cpu_count != 0"},
        {[] { MachineInfo::get_package_cpu_count(nullptr); }, "cpu_count != 0"},
        {[] { MachineInfo::get_core_cpu_count(nullptr); }, "cpu_count != 0"},
        {[&] { MachineInfo::get_non_smt_affinity_mask(nullptr, &mask_qword); }, "affinity_mask != 0"},
        {[&] { MachineInfo::get_non_smt_affinity_mask(&mask, nullptr); }, "affinity_mask_qword != 0"},
        {[] { MachineInfo::get_non_smt_affinity_mask(nullptr, nullptr); }, "affinity_mask != 0"},
        {[] { MachineInfo::sse_is_supported(1, nullptr); }, "supported != 0"},
        {[] { MachineInfo::avx_is_supported(9, nullptr); }, "supported != 0"},
        {[] { MachineInfo::bmi_is_supported(1, nullptr); }, "supported != 0"},
        {[] { MachineInfo::popcnt_is_supported(nullptr); }, "supported != 0"},
        {[] { MachineInfo::lzcnt_is_supported(nullptr); }, "supported != 0"},
    };
    PlayedMachine machine("amd_smt");
    for (NullCase const &c : cases)
        EXPECT_EXIT(c.call(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(c.text, "gen_machine"));
    KeyOn const key(SYSCONF_KEY);
    EXPECT_EXIT(MachineInfo::get_core_cpu_count(nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("cpu_count != 0", "gen_machine"));
    EXPECT_THAT(machine.calls(), IsEmpty());
}

// Outside the life of the state, as in exit handlers that run after the library's release.

TEST(GenMachineState, WithoutItNothingIsFoundAndNothingVisited)
{
    gen_os_machine_fake_play(load_machine_dump("amd_smt"));
    EXPECT_EQ(gen_machine_state(), nullptr);
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{false, 0}));
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_core_cpu_count), (Count{false, 0}));
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_logical_cpu_count), (Count{true, 8}));
    EXPECT_FALSE(non_smt_mask().result);
    EXPECT_EQ(features(false), "");
    EXPECT_EQ(caches(false), "");
    EXPECT_THAT(gen_os_machine_fake_calls(), IsEmpty());
}

// Threads.

TEST(GenMachineThreads, ThatAskFirstTogetherCaptureOnce)
{
    PlayedMachine machine("intel_two_packages_smt");
    constexpr int THREADS = 8;
    Count counts[THREADS] = {};
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&counts, i] { counts[i] = count_by(GEN_MACHINE_INFO::get_core_cpu_count); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(counts, Each(Count{true, 8}));
    std::size_t walks = 0;
    for (std::string const &call : machine.calls())
        walks += call == "masks" ? 1 : 0;
    EXPECT_EQ(walks, 1U);
}

TEST(GenMachineThreads, AMessagesReceiverMayAskFromWithin)
{
    struct Asked
    {
        std::vector<Count> packages;
    };
    Asked asked;
    PlayedMachine machine("no_cpuid");
    mem_msg_redirect(
        [](MEM_MSG_KIND, char const *, char const *text, void *context) {
            if (std::string(text) == NO_VENDOR_CACHES)
                static_cast<Asked *>(context)->packages.push_back(count_by(GEN_MACHINE_INFO::get_physical_cpu_count));
        },
        &asked);
    EXPECT_FALSE(GEN_MACHINE_INFO::recapture_cpu_info());
    EXPECT_THAT(asked.packages, ElementsAre(Count{true, 0}, Count{false, 1}, Count{false, 2}));
    std::size_t walks = 0;
    for (std::string const &call : machine.calls())
        walks += call == "masks" ? 1 : 0;
    EXPECT_EQ(walks, 1U);
}

// The contract of receivers forbids it. The next query captures anew, on any thread.
TEST(GenMachineThreads, AMessagesReceiverThatThrowsLeavesNoThreadMarked)
{
    PlayedMachine machine("no_cpuid");
    mem_msg_redirect([](MEM_MSG_KIND, char const *, char const *text, void *) { throw std::runtime_error(text); },
                     nullptr);
    EXPECT_THROW(GEN_MACHINE_INFO::recapture_cpu_info(), std::runtime_error);
    EXPECT_EQ(gen_machine_state()->m_capturing_thread, 0);
    EXPECT_THAT(machine.calls().back(), "sleep 0");
    EXPECT_THAT(machine.calls()[machine.calls().size() - 2], HasSubstr("release"));
    mem_msg_redirect([](MEM_MSG_KIND, char const *, char const *, void *) {}, nullptr);
    EXPECT_EQ(count_by(GEN_MACHINE_INFO::get_physical_cpu_count), (Count{false, 3}));
}

// APIC ids.

TEST(GenSplitApicId, CutsFieldsThatAddUpToTheId)
{
    for (unsigned logical = 0; logical < 256; ++logical)
        for (unsigned const smt : {0U, 1U, 2U, 3U, 4U, 8U, 255U}) {
            if (smt > logical && smt > 1)
                continue;
            unsigned package_step = 1; // the least power of two that holds the package
            while (package_step < logical)
                package_step *= 2;
            unsigned core_step = 1;
            while (core_step < smt)
                core_step *= 2;
            for (unsigned id = 0; id < 256; ++id) {
                GEN_CPU_IDS const ids = gen_split_apic_id(static_cast<std::uint8_t>(id), logical, smt);
                ASSERT_EQ(ids.m_package_id, id / package_step * package_step) << id << ' ' << logical << ' ' << smt;
                ASSERT_EQ(ids.m_core_id, id % package_step / core_step * core_step)
                    << id << ' ' << logical << ' ' << smt;
                ASSERT_EQ(ids.m_smt_id, id % core_step) << id << ' ' << logical << ' ' << smt;
            }
        }
}

TEST(GenSplitApicId, MayCallForMoreThreadsThanThereAreLogicalProcessors)
{
    GEN_CPU_IDS const ids = gen_split_apic_id(0xff, 1, 1U << 20);
    EXPECT_EQ(ids.m_package_id, 0xff);
    EXPECT_EQ(ids.m_core_id, 0xff); // all of the SMT field's bits, which are no part of a package
    EXPECT_EQ(ids.m_smt_id, 0xff);
}

// Dumps.

TEST(MachineDumpText, FaultsAreReported)
{
    struct LineCase
    {
        char const *text;
        int error;
    };
    constexpr LineCase CASES[] = {
        {"", 0},
        {"# comment\n\n  all # and more\n00000000 = 1 2 3 4\n", 0},
        {"cpu 0\n00000000 = fault\n", 0},
        {"00000000 = 1 2 3 4\n", 1}, // of which processor?
        {"all\n00000000 = 1 2 3\n", 2},
        {"all\n00000000 = 1 2 3 4 5\n", 2},
        {"all\n0 = 1 2 3 4\n", 2},
        {"all\n0000000g = 1 2 3 4\n", 2},
        {"all\n00000000 1 2 3 4\n", 2},
        {"all\n00000000 = 1 2 3 x\n", 2},
        {"system\n", 1},
        {"system x\n", 1},
        {"\nonline many\n", 2},
        {"masks\n", 1},
        {"cpu\n", 1},
        {"cpu 64\n", 1},
        {"cpus 1\n", 1},
    };
    for (LineCase const &c : CASES) {
        int error = -1;
        read_machine_dump(c.text, error);
        EXPECT_EQ(error, c.error) << c.text;
    }
}
