// The result of the capture of GEN_MACHINE_INFO: packages, their cores, and the logical processors of these.
#ifndef GEN_MACHINE_STATE_H
#define GEN_MACHINE_STATE_H

#include "thr_sys.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <set>

enum GEN_VENDOR : std::int32_t
{
    GEN_VENDOR_UNSET = -1,
    GEN_VENDOR_AUTHENTIC_AMD = 0,
    GEN_VENDOR_GENUINE = 1,
    GEN_VENDOR_UNSUPPORTED = 2
};

/// Orders elements by the member that identifies them.
template <auto ID>
struct GEN_ORDER_BY
{
    template <typename Element>
    bool operator()(Element const &a, Element const &b) const
    {
        return a.*ID < b.*ID;
    }
};

struct GEN_LOGICAL_CPU
{
    std::uint8_t m_smt_id = 0;
    std::uint32_t m_affinity_bit = 0; ///< the mask that moves a thread to it
};

/// Ids are fields of an APIC id at their positions in it, not shifted down.
struct GEN_CORE
{
    std::uint8_t m_core_id = 0;
    std::set<GEN_LOGICAL_CPU, GEN_ORDER_BY<&GEN_LOGICAL_CPU::m_smt_id>> m_logical_cpus;
};

struct GEN_CACHE
{
    std::uint8_t m_level = 0;
    std::uint8_t m_type = 0;       ///< GEN_CACHE_TYPE
    std::uint16_t m_line_size = 0; ///< in bytes; 0 for a trace cache
    std::uint32_t m_size = 0;      ///< in kilobytes; for a trace cache in thousands of micro-operations
};

struct GEN_PKG
{
    std::uint8_t m_package_id = 0;
    GEN_VENDOR m_vendor = GEN_VENDOR_UNSET;
    std::uint32_t m_max_leaf = 0;
    std::uint32_t m_max_extended_leaf = 0;
    bool m_sse = false;
    bool m_sse2 = false;
    bool m_sse3 = false;
    bool m_ssse3 = false;
    bool m_sse4_1 = false;
    bool m_sse4_2 = false;
    bool m_popcnt = false;
    bool m_avx = false;
    bool m_avx2 = false;
    bool m_bmi1 = false;
    bool m_bmi2 = false;
    bool m_fma = false;
    bool m_lzcnt = false;
    std::set<GEN_CORE, GEN_ORDER_BY<&GEN_CORE::m_core_id>> m_cores;
    std::list<GEN_CACHE> m_caches; ///< in the order of discovery, with duplicates
};

using GEN_PACKAGES = std::set<GEN_PKG, GEN_ORDER_BY<&GEN_PKG::m_package_id>>;

/// The state of GEN_MACHINE_INFO. Members that are not atomic are written under the mutex, and not at all while
/// m_cpu_info_captured is set.
struct GEN_MACHINE_STATE
{
    GEN_MACHINE_STATE();
    ~GEN_MACHINE_STATE();
    GEN_MACHINE_STATE(GEN_MACHINE_STATE const &) = delete;
    GEN_MACHINE_STATE &operator=(GEN_MACHINE_STATE const &) = delete;

    std::atomic<bool> m_cpu_info_captured{false};
    std::atomic<bool> m_cpu_info_valid{true}; ///< once false, it stays false
    /// 0 if no thread captures. The receiver of a debug message of the capture may query the state on this thread.
    std::atomic<std::int64_t> m_capturing_thread{0};
    GEN_PACKAGES m_packages;
    std::map<std::uint8_t, GEN_CACHE> m_cache_lookup_table; ///< by descriptor of CPUID leaf 2; empty until it is needed
    THR_MUTEX_OBJ m_capture_mutex;
};

/// The state; null before it is constructed and after it is released.
GEN_MACHINE_STATE *gen_machine_state();

/// Takes the mutex of the capture, and releases it, around a fork. A thread that captures has it already: it may fork
/// in the function that receives a message of the capture.
void gen_machine_lock();
void gen_machine_unlock();

/// The package with the lowest id; null if no processor was visited.
GEN_PKG const *gen_first_package();

#endif
