#include "gen_machine_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/base/gen_static_order.h"
#include "gen/machine/gen_machine_capture.h"
#include "gen/os/gen_os_machine.h"
#include "mem_sys.h"

#include <algorithm>

namespace {

// Null before l_machine_state is constructed and after it is released.
std::atomic<GEN_MACHINE_STATE *> l_state{nullptr};

[[gnu::init_priority(GEN_STATIC_ORDER_MACHINE_STATE)]] GEN_MACHINE_STATE l_machine_state;

// Marks the thread that captures during the scope, also if an exception ends it: the capture then counts as not made.
class CapturingThread
{
public:
    CapturingThread(GEN_MACHINE_STATE &state, std::int64_t thread) : m_state(state)
    {
        m_state.m_capturing_thread = thread;
    }
    ~CapturingThread() { m_state.m_capturing_thread = 0; }
    CapturingThread(CapturingThread const &) = delete;
    CapturingThread &operator=(CapturingThread const &) = delete;

private:
    GEN_MACHINE_STATE &m_state;
};

// Whether the system's number of processors is reported as the number of packages and of cores.
bool has_system_count()
{
    return mem_cfg_is_on("cpu_core_count_using_sysconf", false);
}

} // namespace

GEN_MACHINE_STATE::GEN_MACHINE_STATE() : m_capture_mutex(thr_mutex_create())
{
    l_state.store(this, std::memory_order_relaxed);
}

GEN_MACHINE_STATE::~GEN_MACHINE_STATE()
{
    l_state.store(nullptr, std::memory_order_relaxed);
    thr_mutex_destroy(m_capture_mutex);
}

GEN_MACHINE_STATE *gen_machine_state()
{
    return l_state.load(std::memory_order_relaxed);
}

void gen_machine_lock()
{
    GEN_MACHINE_STATE *const state = gen_machine_state();
    if (state != nullptr && state->m_capturing_thread != thr_thread_self())
        thr_mutex_lock(state->m_capture_mutex);
}

void gen_machine_unlock()
{
    GEN_MACHINE_STATE *const state = gen_machine_state();
    if (state != nullptr && state->m_capturing_thread != thr_thread_self())
        thr_mutex_unlock(state->m_capture_mutex);
}

GEN_PKG const *gen_first_package()
{
    GEN_MACHINE_STATE const *const state = gen_machine_state();
    return state == nullptr || state->m_packages.empty() ? nullptr : &*state->m_packages.begin();
}

// The flags of one kind of extension, from level 1 on.
struct GEN_MACHINE_INFO::FeatureLevels
{
    int count;
    bool GEN_PKG::*flags[6];
};

bool GEN_MACHINE_INFO::capture_cpu_info()
{
    GEN_MACHINE_STATE *const state = gen_machine_state();
    if (state == nullptr)
        return false;
    if (state->m_cpu_info_captured.load(std::memory_order_acquire))
        return state->m_cpu_info_valid;
    std::int64_t const self = thr_thread_self();
    if (state->m_capturing_thread == self)
        return state->m_cpu_info_valid;
    THR_SCOPED_MUTEX const lock(state->m_capture_mutex);
    if (state->m_cpu_info_captured)
        return state->m_cpu_info_valid;
    {
        CapturingThread const capturing(*state, self);
        gen_walk_processors(*state);
    }
    state->m_cpu_info_captured.store(true, std::memory_order_release);
    return state->m_cpu_info_valid;
}

bool GEN_MACHINE_INFO::recapture_cpu_info()
{
    if (GEN_MACHINE_STATE *const state = gen_machine_state())
        state->m_cpu_info_captured = false;
    return capture_cpu_info();
}

bool GEN_MACHINE_INFO::get_logical_cpu_count(int *cpu_count)
{
    GEN_ASSERT(cpu_count != nullptr, "cpu_count != 0");
    *cpu_count = 0;
    gen_os_read_processor_count(*cpu_count);
    return true;
}

bool GEN_MACHINE_INFO::get_smt_cpu_count(int *cpu_count)
{
    return get_logical_cpu_count(cpu_count);
}

bool GEN_MACHINE_INFO::get_physical_cpu_count(int *cpu_count)
{
    GEN_ASSERT(cpu_count != nullptr, "cpu_count != 0");
    bool const is_valid = capture_cpu_info();
    GEN_MACHINE_STATE const *const state = gen_machine_state();
    *cpu_count = state == nullptr ? 0 : static_cast<int>(state->m_packages.size());
    // The processors are captured even if the count of the system replaces the result; for cores they are not.
    return has_system_count() ? get_logical_cpu_count(cpu_count) : is_valid;
}

bool GEN_MACHINE_INFO::get_package_cpu_count(int *cpu_count)
{
    return get_physical_cpu_count(cpu_count);
}

bool GEN_MACHINE_INFO::get_core_cpu_count(int *cpu_count)
{
    GEN_ASSERT(cpu_count != nullptr, "cpu_count != 0");
    if (has_system_count())
        return get_logical_cpu_count(cpu_count);
    bool const is_valid = capture_cpu_info();
    *cpu_count = 0;
    if (GEN_MACHINE_STATE const *const state = gen_machine_state())
        for (GEN_PKG const &package : state->m_packages)
            *cpu_count += static_cast<int>(package.m_cores.size());
    return is_valid;
}

bool GEN_MACHINE_INFO::get_non_smt_affinity_mask(unsigned long *affinity_mask, std::uint64_t *affinity_mask_qword)
{
    GEN_ASSERT(affinity_mask != nullptr, "affinity_mask != 0");
    GEN_ASSERT(affinity_mask_qword != nullptr, "affinity_mask_qword != 0");
    *affinity_mask = 0;
    *affinity_mask_qword = 0;
    bool const is_valid = capture_cpu_info();
    if (GEN_MACHINE_STATE const *const state = gen_machine_state())
        for (GEN_PKG const &package : state->m_packages)
            for (GEN_CORE const &core : package.m_cores)
                *affinity_mask |= core.m_logical_cpus.begin()->m_affinity_bit;
    *affinity_mask_qword = *affinity_mask;
    return is_valid;
}

bool GEN_MACHINE_INFO::read_feature(FeatureLevels const &levels, int level, bool *supported)
{
    GEN_ASSERT(supported != nullptr, "supported != 0");
    *supported = false;
    bool const is_valid = capture_cpu_info();
    GEN_PKG const *const package = gen_first_package();
    if (package != nullptr && level >= 1 && level <= levels.count)
        *supported = package->*levels.flags[level - 1];
    return is_valid;
}

bool GEN_MACHINE_INFO::sse_is_supported(int level, bool *supported)
{
    static constexpr FeatureLevels SSE = {6,
                                          {&GEN_PKG::m_sse, &GEN_PKG::m_sse2, &GEN_PKG::m_sse3, &GEN_PKG::m_ssse3,
                                           &GEN_PKG::m_sse4_1, &GEN_PKG::m_sse4_2}};
    return read_feature(SSE, level, supported);
}

bool GEN_MACHINE_INFO::avx_is_supported(int level, bool *supported)
{
    static constexpr FeatureLevels AVX = {2, {&GEN_PKG::m_avx, &GEN_PKG::m_avx2}};
    return read_feature(AVX, level, supported);
}

bool GEN_MACHINE_INFO::bmi_is_supported(int level, bool *supported)
{
    static constexpr FeatureLevels BMI = {2, {&GEN_PKG::m_bmi1, &GEN_PKG::m_bmi2}};
    return read_feature(BMI, level, supported);
}

bool GEN_MACHINE_INFO::popcnt_is_supported(bool *supported)
{
    static constexpr FeatureLevels POPCNT = {1, {&GEN_PKG::m_popcnt}};
    return read_feature(POPCNT, 1, supported);
}

bool GEN_MACHINE_INFO::lzcnt_is_supported(bool *supported)
{
    static constexpr FeatureLevels LZCNT = {1, {&GEN_PKG::m_lzcnt}};
    return read_feature(LZCNT, 1, supported);
}

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

bool GEN_MACHINE_INFO::get_cpu_frequency(int *mhz)
{
    return gen_os_read_nominal_mhz(*mhz);
}
