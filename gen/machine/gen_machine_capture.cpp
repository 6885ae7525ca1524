// The CPUID instruction describes the processor that executes it. So one thread visits all processors, by its affinity,
// and executes it on each. The walk on a system with processors 0 to 2, where the process may run on 0 and 2 only:
//
//     read the masks      process 101, system 111: they differ, which is a debug message
//     bit 001  move, CPUID      number 0, bit 001
//     bit 010  can't move       no number; the walk goes on
//     bit 100  move, CPUID      number 1, bit 100
//     bit 1000 is above the system mask: the walk ends; it also ends after the 32nd bit
//     allow the thread all processors of the process again
//
// CPUID gives the APIC id of a processor, which contains its place. On a package of 4 cores with 2 hardware threads
// each, 8 logical processors take 3 bits and the 2 threads of a core take 1 bit. The id 0x0d = 0000'1101 is split into
//
//     package id  0000'1000    the bits above the 3
//     core id     0000'0100    the 3 bits without the lowest one
//     SMT id      0000'0001    the lowest bit
//
// Processors with the same package id are one package, and those in it with the same core id are one core. The ids are
// only compared, so the fields stay at their positions. A processor whose CPUID has no multi-threading flag is a
// package of its own, and its number in the walk takes the place of the APIC id.
#include "gen/machine/gen_machine_capture.h"

#include "gen/base/gen_debug_message.h"
#include "gen/machine/gen_machine_cache.h"
#include "gen/machine/gen_machine_cpuid.h"

#include <cstring>

namespace {

// Leaves of CPUID, bits and fields: from the manuals of the processor vendors.
constexpr std::uint32_t LEAF_VENDOR = 0;
constexpr std::uint32_t LEAF_FEATURES = 1;
constexpr std::uint32_t LEAF_CORES = 4;
constexpr std::uint32_t LEAF_MORE_FEATURES = 7;
constexpr std::uint32_t LEAF_EXTENDED = 0x80000000;
constexpr std::uint32_t LEAF_EXTENDED_FEATURES = 0x80000001;

constexpr std::uint32_t bit(unsigned number)
{
    return std::uint32_t{1} << number;
}

constexpr std::uint32_t MULTI_THREADING = bit(28);

// A flag of a package is set if any of the bits is set in a register.
struct Feature
{
    bool GEN_PKG::*flag;
    std::uint32_t GEN_CPUID::*word;
    std::uint32_t bits;
};
constexpr Feature FEATURES[] = {
    {&GEN_PKG::m_sse, &GEN_CPUID::m_edx, bit(25)},
    {&GEN_PKG::m_sse2, &GEN_CPUID::m_edx, bit(26)},
    {&GEN_PKG::m_sse3, &GEN_CPUID::m_ecx, bit(0)},
    {&GEN_PKG::m_ssse3, &GEN_CPUID::m_ecx, bit(9)},
    {&GEN_PKG::m_sse4_1, &GEN_CPUID::m_ecx, bit(19)},
    {&GEN_PKG::m_sse4_2, &GEN_CPUID::m_ecx, bit(20)},
    {&GEN_PKG::m_popcnt, &GEN_CPUID::m_ecx, bit(23)},
    {&GEN_PKG::m_avx, &GEN_CPUID::m_ecx, bit(27) | bit(28)}, // the saving of its state is enough
    {&GEN_PKG::m_fma, &GEN_CPUID::m_ecx, bit(12)},
};
constexpr Feature MORE_FEATURES[] = {
    {&GEN_PKG::m_avx2, &GEN_CPUID::m_ebx, bit(5)},
    {&GEN_PKG::m_bmi1, &GEN_CPUID::m_ebx, bit(3)},
    {&GEN_PKG::m_bmi2, &GEN_CPUID::m_ebx, bit(8)},
};
constexpr Feature EXTENDED_FEATURES[] = {
    {&GEN_PKG::m_lzcnt, &GEN_CPUID::m_ecx, bit(5)},
};

template <std::size_t COUNT>
void set_flags(GEN_PKG &package, Feature const (&features)[COUNT], GEN_CPUID const &leaf)
{
    for (Feature const &feature : features)
        package.*feature.flag = (leaf.*feature.word & feature.bits) != 0;
}

// The description of a logical processor and its package by CPUID.
struct Processor
{
    GEN_VENDOR vendor = GEN_VENDOR_UNSET;
    std::uint32_t max_leaf = 0;
    std::uint32_t max_extended_leaf = 0;
    GEN_CPUID leaf_1; // all 0 if there is none
};

GEN_VENDOR vendor_of(GEN_CPUID const &leaf_0)
{
    char name[13] = {};
    std::memcpy(name, &leaf_0.m_ebx, 4);
    std::memcpy(name + 4, &leaf_0.m_edx, 4);
    std::memcpy(name + 8, &leaf_0.m_ecx, 4);
    if (std::strcmp(name, "AuthenticAMD") == 0)
        return GEN_VENDOR_AUTHENTIC_AMD;
    if (std::strcmp(name, "GenuineIntel") == 0)
        return GEN_VENDOR_GENUINE;
    gen_debug_message("CPU info not supported on this platform: %s", static_cast<char const *>(name));
    return GEN_VENDOR_UNSUPPORTED;
}

Processor read_processor()
{
    Processor processor;
    GEN_CPUID query;
    query.m_eax = LEAF_VENDOR;
    if (gen_os_cpuid(query)) {
        processor.max_leaf = query.m_eax;
        processor.vendor = vendor_of(query);
    } else
        gen_debug_message("cpuid function is not supported");
    query = {};
    query.m_eax = LEAF_EXTENDED;
    if (gen_os_cpuid(query))
        processor.max_extended_leaf = query.m_eax;
    else
        gen_debug_message("cpuid extended function is not supported");
    if (processor.max_leaf >= LEAF_FEATURES)
        processor.leaf_1 = gen_read_cpuid(LEAF_FEATURES);
    return processor;
}

// The number of hardware threads of a core, from the number of logical processors of the package.
std::uint32_t smt_per_core(Processor const &processor, std::uint32_t logical_per_package)
{
    if (processor.vendor != GEN_VENDOR_GENUINE)
        return 1;
    if (processor.max_leaf < LEAF_CORES)
        return logical_per_package;
    std::uint32_t const cores_per_package = (gen_read_cpuid(LEAF_CORES).m_eax >> 26) + 1;
    return logical_per_package / cores_per_package;
}

GEN_CPU_IDS ids_of(Processor const &processor, std::uint8_t number)
{
    if ((processor.leaf_1.m_edx & MULTI_THREADING) == 0)
        return gen_split_apic_id(number, 1, 1);
    std::uint32_t const logical_per_package = processor.leaf_1.m_ebx >> 16 & 0xff;
    return gen_split_apic_id(static_cast<std::uint8_t>(processor.leaf_1.m_ebx >> 24), logical_per_package,
                             smt_per_core(processor, logical_per_package));
}

// The smallest number of bits that can hold `count` different values.
unsigned width_of(std::uint32_t count)
{
    unsigned width = 0;
    while (std::uint32_t{1} << width < count)
        ++width;
    return width;
}

// Adds a core, or the logical processors of a core that the package already has. A logical processor that this core
// already has is not replaced.
void add_core(GEN_PKG &package, GEN_CORE &&core)
{
    auto const known = package.m_cores.find(core);
    if (known == package.m_cores.end()) {
        package.m_cores.insert(std::move(core));
        return;
    }
    auto node = package.m_cores.extract(known);
    node.value().m_logical_cpus.merge(core.m_logical_cpus);
    package.m_cores.insert(std::move(node));
}

void read_features(GEN_PKG &package, GEN_CPUID const &leaf_1)
{
    if (package.m_max_leaf < LEAF_FEATURES)
        return;
    set_flags(package, FEATURES, leaf_1);
    // Read even above the largest leaf that the processor reports. The result is then that of the processor.
    set_flags(package, MORE_FEATURES, gen_read_cpuid(LEAF_MORE_FEATURES));
    set_flags(package, EXTENDED_FEATURES, gen_read_cpuid(LEAF_EXTENDED_FEATURES));
}

GEN_PKG make_package(GEN_MACHINE_STATE &state, Processor const &processor, std::uint8_t id, GEN_CORE &&core)
{
    GEN_PKG package;
    package.m_package_id = id;
    package.m_vendor = processor.vendor;
    package.m_max_leaf = processor.max_leaf;
    package.m_max_extended_leaf = processor.max_extended_leaf;
    add_core(package, std::move(core));
    read_features(package, processor.leaf_1);
    gen_read_caches(state, package, processor.leaf_1.m_eax);
    return package;
}

// Adds the logical processor that runs the thread. A package has the description of the first one that was visited.
void visit_processor(GEN_MACHINE_STATE &state, std::uint32_t affinity_bit, std::uint8_t number)
{
    Processor const processor = read_processor();
    GEN_CPU_IDS const ids = ids_of(processor, number);
    GEN_CORE core;
    core.m_core_id = ids.m_core_id;
    core.m_logical_cpus.insert({ids.m_smt_id, affinity_bit});

    GEN_PKG wanted;
    wanted.m_package_id = ids.m_package_id;
    auto const known = state.m_packages.find(wanted);
    if (known == state.m_packages.end()) {
        state.m_packages.insert(make_package(state, processor, ids.m_package_id, std::move(core)));
        return;
    }
    auto node = state.m_packages.extract(known);
    add_core(node.value(), std::move(core));
    state.m_packages.insert(std::move(node));
}

void visit_processors(GEN_MACHINE_STATE &state, std::uint64_t system_mask)
{
    std::uint8_t number = 0;
    for (std::uint32_t affinity_bit = 1; affinity_bit != 0 && affinity_bit <= system_mask; affinity_bit <<= 1) {
        if (!gen_os_move_thread(affinity_bit))
            continue;
        thr_sleep(0); // the system moves the thread before this returns
        visit_processor(state, affinity_bit, number++);
    }
}

// At the end of the scope the thread may run on all processors of the process again.
class MovedThread
{
public:
    explicit MovedThread(std::uint64_t const &process_mask) : m_process_mask(process_mask) {}
    ~MovedThread()
    {
        gen_os_release_thread(m_process_mask); // has no effect if the masks were not read
        thr_sleep(0);
    }
    MovedThread(MovedThread const &) = delete;
    MovedThread &operator=(MovedThread const &) = delete;

private:
    std::uint64_t const &m_process_mask;
};

} // namespace

GEN_CPU_IDS gen_split_apic_id(std::uint8_t apic_id, std::uint32_t logical_per_package, std::uint32_t smt_per_core)
{
    auto const above_package = static_cast<std::uint8_t>(0xff << width_of(logical_per_package));
    auto const above_core = static_cast<std::uint8_t>(0xff << width_of(smt_per_core));
    return {static_cast<std::uint8_t>(apic_id & above_package),
            static_cast<std::uint8_t>(apic_id & (above_core ^ above_package)),
            static_cast<std::uint8_t>(apic_id & ~above_core)};
}

void gen_walk_processors(GEN_MACHINE_STATE &state)
{
    std::uint64_t process_mask = 0;
    std::uint64_t system_mask = 0;
    MovedThread const moved(process_mask);
    if (state.m_cpu_info_valid) {
        if (!gen_os_read_affinity(process_mask, system_mask))
            state.m_cpu_info_valid = false;
        else if (process_mask != system_mask)
            gen_debug_message("This process can not utilize all logical processors");
        visit_processors(state, system_mask);
    }
}
