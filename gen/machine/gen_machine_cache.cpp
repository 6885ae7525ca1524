#include "gen/machine/gen_machine_cache.h"

#include "gen_machine_sys.h"

#include "gen/base/gen_debug_message.h"
#include "gen/machine/gen_machine_cpuid.h"

namespace {

constexpr std::uint32_t LEAF_CACHE_DESCRIPTORS = 2;
constexpr std::uint32_t LEAF_LEVEL_1_CACHES = 0x80000005;
constexpr std::uint32_t LEAF_OTHER_CACHES = 0x80000006;

// A register of leaf 2 in which this bit is set contains no descriptors.
constexpr std::uint32_t NO_DESCRIPTORS = 0x80000000;
// The descriptor that means that there is no further cache.
constexpr std::uint8_t NO_CACHE = 0x40;

// On processors of this family and model, without regard to stepping and extended fields, one descriptor means level 3.
constexpr std::uint32_t SIGNATURE_MASK = 0xff0;
constexpr std::uint32_t LEVEL_3_SIGNATURE = 0xf60;
constexpr std::uint8_t LEVEL_3_DESCRIPTOR = 0x49;

// Descriptors of leaf 2, from the manual of the processor vendor. All others are skipped, among them those of TLBs and
// prefetching, and the reference to leaf 4.
struct CacheRow
{
    std::uint8_t descriptor;
    GEN_CACHE cache; // level, kind, bytes of a line, kilobytes or thousands of micro-operations
};
constexpr CacheRow CACHE_ROWS[] = {
    {0x06, {1, GEN_CACHE_INST, 32, 8}},     {0x08, {1, GEN_CACHE_INST, 32, 16}},
    {0x30, {1, GEN_CACHE_INST, 64, 32}},    {0x70, {1, GEN_CACHE_INST, 0, 12}}, // trace caches
    {0x71, {1, GEN_CACHE_INST, 0, 16}},     {0x72, {1, GEN_CACHE_INST, 0, 32}},
    {0x73, {1, GEN_CACHE_INST, 0, 64}},     {0x0a, {1, GEN_CACHE_DATA, 32, 8}},
    {0x0c, {1, GEN_CACHE_DATA, 32, 16}},    {0x2c, {1, GEN_CACHE_DATA, 64, 32}},
    {0x60, {1, GEN_CACHE_DATA, 64, 16}},    {0x66, {1, GEN_CACHE_DATA, 64, 8}},
    {0x67, {1, GEN_CACHE_DATA, 64, 16}},    {0x68, {1, GEN_CACHE_DATA, 64, 32}},
    {0x41, {2, GEN_CACHE_DATA, 32, 128}},   {0x42, {2, GEN_CACHE_DATA, 32, 256}},
    {0x43, {2, GEN_CACHE_DATA, 32, 512}},   {0x44, {2, GEN_CACHE_DATA, 32, 1024}},
    {0x45, {2, GEN_CACHE_DATA, 32, 2048}},  {0x82, {2, GEN_CACHE_DATA, 32, 256}},
    {0x83, {2, GEN_CACHE_DATA, 32, 512}},   {0x84, {2, GEN_CACHE_DATA, 32, 1024}},
    {0x85, {2, GEN_CACHE_DATA, 32, 2048}},  {0x39, {2, GEN_CACHE_DATA, 64, 128}},
    {0x3a, {2, GEN_CACHE_DATA, 64, 192}},   {0x3b, {2, GEN_CACHE_DATA, 64, 128}},
    {0x3c, {2, GEN_CACHE_DATA, 64, 256}},   {0x3d, {2, GEN_CACHE_DATA, 64, 384}},
    {0x3e, {2, GEN_CACHE_DATA, 64, 512}},   {0x49, {2, GEN_CACHE_DATA, 64, 4096}},
    {0x78, {2, GEN_CACHE_DATA, 64, 1024}},  {0x79, {2, GEN_CACHE_DATA, 64, 128}},
    {0x7a, {2, GEN_CACHE_DATA, 64, 256}},   {0x7b, {2, GEN_CACHE_DATA, 64, 512}},
    {0x7c, {2, GEN_CACHE_DATA, 64, 1024}},  {0x7d, {2, GEN_CACHE_DATA, 64, 2048}},
    {0x7f, {2, GEN_CACHE_DATA, 64, 512}},   {0x86, {2, GEN_CACHE_DATA, 64, 512}},
    {0x87, {2, GEN_CACHE_DATA, 64, 1024}},  {0x22, {3, GEN_CACHE_DATA, 64, 512}},
    {0x23, {3, GEN_CACHE_DATA, 64, 1024}},  {0x25, {3, GEN_CACHE_DATA, 64, 2048}},
    {0x29, {3, GEN_CACHE_DATA, 64, 4096}},  {0x46, {3, GEN_CACHE_DATA, 64, 4096}},
    {0x47, {3, GEN_CACHE_DATA, 64, 8192}},  {0x4a, {3, GEN_CACHE_DATA, 64, 6144}},
    {0x4b, {3, GEN_CACHE_DATA, 64, 8192}},  {0x4c, {3, GEN_CACHE_DATA, 64, 12288}},
    {0x4d, {3, GEN_CACHE_DATA, 64, 16384}},
};

using CacheTable = std::map<std::uint8_t, GEN_CACHE>;

void init_cache_table(CacheTable &table)
{
    if (!table.empty())
        return;
    for (CacheRow const &row : CACHE_ROWS)
        table.emplace(row.descriptor, row.cache);
}

// Appends the caches of the descriptors in a register, from the lowest byte up.
void append_described(GEN_PKG &package, CacheTable const &table, std::uint32_t signature, std::uint32_t descriptors)
{
    if ((descriptors & NO_DESCRIPTORS) != 0)
        return;
    for (; descriptors != 0; descriptors >>= 8) {
        auto const descriptor = static_cast<std::uint8_t>(descriptors);
        if (descriptor == 0 || descriptor == NO_CACHE)
            continue;
        auto const row = table.find(descriptor);
        if (row == table.end())
            continue;
        package.m_caches.push_back(row->second);
        if (signature == LEVEL_3_SIGNATURE && descriptor == LEVEL_3_DESCRIPTOR)
            package.m_caches.back().m_level = 3;
    }
}

void read_described_caches(GEN_PKG &package, CacheTable &table, std::uint32_t signature)
{
    init_cache_table(table);
    if (package.m_max_leaf < LEAF_CACHE_DESCRIPTORS)
        return;
    GEN_CPUID leaf = gen_read_cpuid(LEAF_CACHE_DESCRIPTORS);
    // The low byte of the first result is the number of times that the leaf has to be read.
    for (std::uint32_t runs = leaf.m_eax & 0xff;; --runs) {
        for (std::uint32_t const descriptors : {leaf.m_eax & ~0xffU, leaf.m_ebx, leaf.m_ecx, leaf.m_edx})
            append_described(package, table, signature, descriptors);
        if (runs <= 1)
            return;
        leaf = gen_read_cpuid(LEAF_CACHE_DESCRIPTORS);
    }
}

void append_if_any(GEN_PKG &package, std::uint8_t level, std::uint8_t type, std::uint32_t line_size, std::uint32_t size)
{
    if (size != 0)
        package.m_caches.push_back({level, type, static_cast<std::uint16_t>(line_size & 0xff), size});
}

void read_extended_caches(GEN_PKG &package)
{
    if (package.m_max_extended_leaf >= LEAF_LEVEL_1_CACHES) {
        GEN_CPUID const leaf = gen_read_cpuid(LEAF_LEVEL_1_CACHES);
        append_if_any(package, 1, GEN_CACHE_DATA, leaf.m_ecx, leaf.m_ecx >> 24);
        append_if_any(package, 1, GEN_CACHE_INST, leaf.m_edx, leaf.m_edx >> 24);
    }
    if (package.m_max_extended_leaf >= LEAF_OTHER_CACHES) {
        GEN_CPUID const leaf = gen_read_cpuid(LEAF_OTHER_CACHES);
        append_if_any(package, 2, GEN_CACHE_DATA, leaf.m_ecx, leaf.m_ecx >> 16);
        append_if_any(package, 3, GEN_CACHE_DATA, leaf.m_edx, (leaf.m_edx >> 18) * 512); // counted in 512 KB
    }
}

} // namespace

void gen_read_caches(GEN_MACHINE_STATE &state, GEN_PKG &package, std::uint32_t leaf_1_eax)
{
    switch (package.m_vendor) {
    case GEN_VENDOR_GENUINE:
        read_described_caches(package, state.m_cache_lookup_table, leaf_1_eax & SIGNATURE_MASK);
        return;
    case GEN_VENDOR_AUTHENTIC_AMD:
        read_extended_caches(package);
        return;
    case GEN_VENDOR_UNSUPPORTED:
    case GEN_VENDOR_UNSET:
        gen_debug_message("Unable to query cache info from unsupported vendor");
        state.m_cpu_info_valid = false;
    }
}
