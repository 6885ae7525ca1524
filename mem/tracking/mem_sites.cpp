#include "mem/tracking/mem_sites.h"

#include "mem/base/mem_hash_table.h"
#include "mem/tracking/mem_locks.h"
#include "sys/sys_module.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

// An array of plain values in memory of the plain heap.
template <typename Value>
struct PlainArray
{
    Value *values = nullptr;
    std::size_t count = 0;
    std::size_t capacity = 0;

    // Adds a value of zeros at the end; null if there is no memory.
    Value *add()
    {
        if (count == capacity) {
            std::size_t const larger = capacity == 0 ? 64 : 2 * capacity;
            void *const memory = std::realloc(static_cast<void *>(values), larger * sizeof(Value));
            if (memory == nullptr)
                return nullptr;
            values = static_cast<Value *>(memory);
            capacity = larger;
        }
        values[count] = Value();
        return &values[count++];
    }

    void remove_last() { --count; }

    void clear()
    {
        std::free(static_cast<void *>(values));
        *this = PlainArray();
    }
};

constexpr unsigned SITE_BITS = 20;
constexpr unsigned BYTES_BITS = 64 - SITE_BITS;
constexpr std::size_t MAX_SITES = std::size_t{1} << SITE_BITS;

struct Allocation
{
    std::uint64_t key; // the address
    std::uint64_t bytes : BYTES_BITS;
    std::uint64_t site : SITE_BITS;
};

struct SiteOfCalls
{
    std::uint64_t key; // a hash of the calls
    std::size_t site;
};

struct SiteRecord
{
    MEM_SITE site;
    std::uint64_t peak; // the number of the peak for which `site` has saved its bytes
};

using ModuleName = char[128]; // cut if it is longer

struct SiteModule
{
    ModuleName name;
    std::uint64_t live_bytes;
};

// All of it is written under the lock of the sites. The exit keeps it, since blocks are released until the end.
MEM_HASH_TABLE<Allocation> l_blocks;
MEM_HASH_TABLE<SiteOfCalls> l_sites_by_calls;
PlainArray<SiteRecord> l_sites;
PlainArray<SiteModule> l_modules; // mem_sites_reset() keeps it
std::uint64_t l_live_bytes = 0;   // the sum over all sites
std::uint64_t l_peak_bytes = 0;   // its largest value
std::uint64_t l_peak = 0;         // the number of the peak
std::uint64_t l_lost_blocks = 0;

std::uint64_t hash_of(MEM_CALLS const &calls)
{
    std::uint64_t hash = 0;
    for (std::uintptr_t const address : calls.return_addresses)
        hash = (hash ^ address) * 0x100000001b3U; // the prime of FNV-1a
    return hash == 0 ? 1 : hash;
}

bool is_same(MEM_CALLS const &a, MEM_CALLS const &b)
{
    return std::memcmp(a.return_addresses, b.return_addresses, sizeof a.return_addresses) == 0;
}

// The key of the site of these calls. If other calls have the same hash, the next free number.
std::uint64_t key_of(MEM_CALLS const &calls)
{
    std::uint64_t key = hash_of(calls);
    while (SiteOfCalls const *const place = l_sites_by_calls.find(key)) {
        if (is_same(l_sites.values[place->site].site.calls, calls))
            break;
        key = key + 1 == 0 ? 1 : key + 1;
    }
    return key;
}

// Saves the bytes at the latest peak. Called before each change of the record.
void save_figure_of_peak(SiteRecord &record)
{
    if (record.peak == l_peak)
        return;
    record.peak = l_peak;
    record.site.figures.peak_bytes = record.site.figures.live_bytes;
}

void erase_allocation(Allocation *block)
{
    SiteRecord &record = l_sites.values[block->site];
    std::uint64_t const bytes = block->bytes;
    save_figure_of_peak(record);
    record.site.figures.live_bytes -= bytes;
    --record.site.figures.live_blocks;
    l_modules.values[record.site.module].live_bytes -= bytes;
    l_live_bytes -= bytes;
    l_blocks.remove(block);
}

bool record_allocation(void const *address, std::size_t bytes, std::size_t site)
{
    std::uint64_t const key = reinterpret_cast<std::uintptr_t>(address);
    if (Allocation *const stale = l_blocks.find(key))
        erase_allocation(stale);
    Allocation *const block = bytes >> BYTES_BITS != 0 ? nullptr : l_blocks.find_or_add(key);
    if (block == nullptr)
        return false;
    constexpr std::uint64_t BYTES_MASK = std::numeric_limits<std::uint64_t>::max() >> SITE_BITS;
    block->bytes = bytes & BYTES_MASK;
    block->site = site & (MAX_SITES - 1);
    SiteRecord &record = l_sites.values[site];
    save_figure_of_peak(record);
    record.site.figures.live_bytes += bytes;
    ++record.site.figures.live_blocks;
    record.site.figures.total_bytes += bytes;
    ++record.site.figures.total_blocks;
    l_modules.values[record.site.module].live_bytes += bytes;
    l_live_bytes += bytes;
    if (l_live_bytes > l_peak_bytes) {
        l_peak_bytes = l_live_bytes;
        ++l_peak;
    }
    return true;
}

// Enters the block if the site of these calls is known; false otherwise.
bool enter_at_known_site(void const *address, std::size_t bytes, MEM_CALLS const &calls)
{
    SiteOfCalls const *const place = l_sites_by_calls.find(key_of(calls));
    if (place == nullptr)
        return false;
    if (!record_allocation(address, bytes, place->site))
        ++l_lost_blocks;
    return true;
}

std::size_t module_of(ModuleName const &name)
{
    std::size_t module = 0;
    while (module < l_modules.count && std::strcmp(l_modules.values[module].name, name) != 0)
        ++module;
    return module;
}

bool find_or_add_module(ModuleName const &name, std::size_t *place)
{
    *place = module_of(name);
    if (*place < l_modules.count)
        return true;
    SiteModule *const module = l_modules.add();
    if (module != nullptr)
        std::memcpy(module->name, name, sizeof name);
    return module != nullptr;
}

bool add_site(MEM_CALLS const &calls, ModuleName const &module_name)
{
    std::size_t module = 0;
    if (l_sites.count == MAX_SITES || !find_or_add_module(module_name, &module))
        return false;
    std::size_t const site = l_sites.count;
    std::uint64_t const key = key_of(calls);
    SiteRecord *const record = l_sites.add();
    if (record == nullptr)
        return false;
    SiteOfCalls *const place = l_sites_by_calls.find_or_add(key);
    if (place == nullptr) {
        l_sites.remove_last();
        return false;
    }
    place->site = site;
    record->site.calls = calls;
    record->site.module = module;
    return true;
}

} // namespace

void mem_sites_add(void const *block, std::size_t bytes, MEM_CALL const &call)
{
    MEM_CALLS calls;
    {
        MEM_LOCK_SCOPE const lock(mem_sites_lock);
        if (mem_calls_read(call, &calls) && enter_at_known_site(block, bytes, calls))
            return;
    }
    MEM_STACK stack;
    mem_calls_unwind(call, &stack);
    {
        MEM_LOCK_SCOPE const lock(mem_sites_lock);
        mem_calls_learn(stack, &calls);
        if (enter_at_known_site(block, bytes, calls))
            return;
    }
    // Without the lock: a thread that holds the loader's lock may be waiting for it.
    ModuleName module_name = {};
    SYS_MODULE module;
    if (sys_find_module(calls.return_addresses[0], module))
        std::string_view(module.name).copy(module_name, sizeof module_name - 1);
    MEM_LOCK_SCOPE const lock(mem_sites_lock);
    if (!enter_at_known_site(block, bytes, calls) &&
        !(add_site(calls, module_name) && enter_at_known_site(block, bytes, calls)))
        ++l_lost_blocks;
}

void mem_sites_remove(void const *block)
{
    MEM_LOCK_SCOPE const lock(mem_sites_lock);
    if (Allocation *const entry = l_blocks.find(reinterpret_cast<std::uintptr_t>(block)))
        erase_allocation(entry);
}

void mem_sites_reset()
{
    MEM_LOCK_SCOPE const lock(mem_sites_lock);
    l_blocks.clear();
    l_sites_by_calls.clear();
    l_sites.clear();
    for (std::size_t i = 0; i < l_modules.count; ++i)
        l_modules.values[i].live_bytes = 0;
    l_live_bytes = 0;
    l_peak_bytes = 0;
    l_lost_blocks = 0;
}

void mem_sites_begin_peak()
{
    MEM_LOCK_SCOPE const lock(mem_sites_lock);
    l_peak_bytes = l_live_bytes;
    ++l_peak;
}

MEM_SITES mem_sites_copy()
{
    MEM_SITES copy{};
    for (;;) {
        std::size_t const room = copy.sites.capacity();
        std::size_t needed = 0;
        {
            MEM_LOCK_SCOPE const lock(mem_sites_lock);
            needed = l_sites.count;
            if (needed <= room) {
                for (std::size_t i = 0; i < needed; ++i) {
                    save_figure_of_peak(l_sites.values[i]);
                    copy.sites.push_back(l_sites.values[i].site);
                }
                copy.lost_blocks = l_lost_blocks;
                return copy;
            }
        }
        // Not under the lock, since it allocates.
        copy.sites.reserve(needed + needed / 8);
    }
}

std::vector<std::string> mem_sites_modules()
{
    std::vector<SiteModule> modules;
    for (;;) {
        std::size_t needed = 0;
        {
            MEM_LOCK_SCOPE const lock(mem_sites_lock);
            needed = l_modules.count;
            if (needed <= modules.capacity()) {
                modules.insert(modules.end(), l_modules.values, l_modules.values + needed);
                break;
            }
        }
        modules.reserve(needed); // not under the lock, since it allocates
    }
    std::vector<std::string> names;
    names.reserve(modules.size());
    for (SiteModule const &module : modules)
        names.emplace_back(module.name);
    return names;
}

std::vector<std::uint64_t> mem_sites_module_bytes()
{
    std::vector<std::uint64_t> bytes;
    for (;;) {
        std::size_t needed = 0;
        {
            MEM_LOCK_SCOPE const lock(mem_sites_lock);
            needed = l_modules.count;
            if (needed <= bytes.capacity()) {
                for (std::size_t i = 0; i < needed; ++i)
                    bytes.push_back(l_modules.values[i].live_bytes);
                return bytes;
            }
        }
        bytes.reserve(needed); // not under the lock, since it allocates
    }
}
