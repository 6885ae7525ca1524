#include "gen_machine_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/machine/gen_machine_state.h"

#include <algorithm>

bool GEN_MACHINE_INFO::get_cache_size(int level, unsigned *size, unsigned *line_size, unsigned char type)
{
    GEN_ASSERT(size != nullptr, "size != 0");
    GEN_ASSERT(type <= GEN_CACHE_INST, "type <= GEN_CACHE_INST");
    *size = 0;
    if (line_size != nullptr)
        *line_size = 0;
    bool const is_valid = capture_cpu_info();
    GEN_PKG const *const package = gen_first_package();
    if (package == nullptr)
        return is_valid;
    std::list<GEN_CACHE> const caches = package->m_caches;
    auto const found = std::find_if(caches.begin(), caches.end(), [&](GEN_CACHE const &cache) {
        return cache.m_level == level && cache.m_type == type;
    });
    if (found == caches.end())
        return is_valid;
    *size = found->m_size;
    if (line_size != nullptr)
        *line_size = found->m_line_size;
    return is_valid;
}
