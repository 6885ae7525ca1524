#include "gen/profile/gen_profile_bins_impl.h"

#include "mem_sys.h"

#include <algorithm>

namespace {

// Up to here the children are looked through, beyond they are indexed.
constexpr std::size_t INDEXED_CHILD_COUNT = 12;

// Adds what has passed since `start`.
void add_running_interval(GEN_PB_METRICS &metrics, GEN_CLOCKS const &start)
{
    GEN_CLOCKS const running = gen_read_clocks() - start;
    metrics.m_values[GEN_PB_WC] += running.m_ticks;
    metrics.m_values[GEN_PB_CPU] += running.m_cpu_nsec;
    metrics.m_values[GEN_PB_WC_EST] += running.m_cpu_nsec;
}

} // namespace

void GEN_PB_METRICS::add_clocks(GEN_PB_METRICS const &other, std::int64_t factor)
{
    for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i) {
        m_values[i] += other.m_values[i] * factor;
        m_errors[i] += other.m_errors[i];
    }
}

void GEN_PB_METRICS::subtract_clocks(GEN_PB_METRICS const &other)
{
    for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i) {
        m_values[i] -= other.m_values[i];
        m_errors[i] += other.m_errors[i];
    }
}

void GEN_PB_METRICS::clamp_clocks()
{
    for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i)
        m_values[i] = std::max<std::int64_t>(m_values[i], 0);
}

std::string gen_pb_join_names(std::vector<GEN_PB_IMPL const *> const &bins, char const *separator)
{
    std::string path;
    for (GEN_PB_IMPL const *bin : bins) {
        if (bin != bins.front() && !bin->m_name.empty())
            path += separator;
        path += bin->m_name;
    }
    return path;
}

std::vector<std::string> gen_pb_current_path()
{
    if (!gen_pb_is_own_thread())
        return {};
    std::size_t depth = 0;
    for (GEN_PB_IMPL const *bin = s_gen_pb.m_current; bin != nullptr; bin = bin->m_parent)
        ++depth;
    std::vector<std::string> names(depth);
    for (GEN_PB_IMPL const *bin = s_gen_pb.m_current; bin != nullptr; bin = bin->m_parent)
        names[--depth] = bin->m_name;
    return names;
}

GEN_PROFILE_BIN::GEN_PROFILE_BIN() = default;
GEN_PROFILE_BIN::GEN_PROFILE_BIN(GEN_PROFILE_BIN const &) = default;
GEN_PROFILE_BIN::~GEN_PROFILE_BIN() = default;
double GEN_PROFILE_BIN::get_last_cpu_sec() const
{
    return get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/false);
}
double GEN_PROFILE_BIN::get_last_wc_sec() const
{
    return get_metric(GEN_PB_METRIC_WC, /*cumulative=*/false);
}

GEN_PB_IMPL::~GEN_PB_IMPL()
{
    for (GEN_PB_IMPL *child : m_children)
        delete child;
}

GEN_PB_IMPL *GEN_PB_IMPL::get_root_bin()
{
    return s_gen_pb.m_root;
}

GEN_PB_IMPL *GEN_PB_IMPL::get_current_bin()
{
    return s_gen_pb.m_current;
}

GEN_PB_IMPL *GEN_PB_IMPL::find_child(std::string_view name) const
{
    if (m_child_index) {
        auto const found = m_child_index->find(name);
        return found == m_child_index->end() ? nullptr : found->second;
    }
    for (GEN_PB_IMPL *child : m_children)
        if (child->m_name == name)
            return child;
    return nullptr;
}

void GEN_PB_IMPL::add_child(GEN_PB_IMPL *child)
{
    m_children.push_back(child);
    if (m_child_index)
        m_child_index->emplace(child->m_name, child);
    else if (m_children.size() > INDEXED_CHILD_COUNT) {
        m_child_index = std::make_unique<std::unordered_map<std::string_view, GEN_PB_IMPL *>>();
        for (GEN_PB_IMPL *each : m_children)
            m_child_index->emplace(each->m_name, each);
    }
}

void GEN_PB_IMPL::drop_moved_children()
{
    m_child_index.reset();
    auto const is_moved = [this](GEN_PB_IMPL const *child) { return child->m_parent != this; };
    m_children.erase(std::remove_if(m_children.begin(), m_children.end(), is_moved), m_children.end());
}

void GEN_PB_IMPL::close()
{
    if (!gen_pb_is_own_thread())
        return;
    if (this != s_gen_pb.m_current) {
        GEN_PB_IMPL const *const current = s_gen_pb.m_current;
        std::string text;
        stl_sprintf(&text, "GEN_PROFILE_BINS: Unable to close bin \"%s\".  Current open bin was \"%s\"",
                    get_path("/", nullptr).c_str(),
                    current == nullptr ? "NULL" : current->get_path("/", nullptr).c_str());
        gen_pb_fail(text.c_str(), __FILE__, __LINE__);
        return;
    }
    GEN_PROFILE_BINS::close(s_gen_pb.m_checks_names ? m_name.c_str() : nullptr);
}

double GEN_PB_IMPL::get_metric(unsigned metric, bool cumulative) const
{
    if (!gen_pb_is_own_thread())
        return -1.0;
    GEN_PB_METRICS metrics;
    if (cumulative)
        metrics = m_total;
    if (m_open_count != 0)
        add_running_interval(metrics, m_start);
    else if (!cumulative)
        metrics = m_last;
    return selected_metric(metric, metrics);
}

double GEN_PB_IMPL::selected_metric(unsigned metric, GEN_PB_METRICS const &metrics) const
{
    switch (metric) {
    case GEN_PB_METRIC_WC:
        return gen_pb_seconds_of_ticks(metrics.m_values[GEN_PB_WC]);
    case GEN_PB_METRIC_CPU:
        return gen_pb_seconds_of_nsec(metrics.m_values[GEN_PB_CPU]);
    case GEN_PB_METRIC_CPU_ERRORS:
        return metrics.m_errors[GEN_PB_CPU];
    case GEN_PB_METRIC_WC_ERRORS:
        return metrics.m_errors[GEN_PB_WC];
    case GEN_PB_METRIC_START_MEM:
        return compute_report() ? gen_pb_mib(m_report.m_values[GEN_PB_START_MEM]) : -1.0;
    case GEN_PB_METRIC_END_MEM:
        return compute_report() ? gen_pb_mib(m_report.m_values[GEN_PB_END_MEM]) : -1.0;
    case GEN_PB_METRIC_PEAK_MEM:
        return compute_report() ? gen_pb_mib(m_report.m_values[GEN_PB_PEAK_MEM]) : -1.0;
    case GEN_PB_METRIC_WC_EST:
        return compute_report() ? gen_pb_seconds_of_nsec(m_report.m_values[GEN_PB_WC_EST]) : -1.0;
    default:
        gen_pb_fail("unknown metric", __FILE__, __LINE__);
        return -1.0;
    }
}

std::vector<GEN_PB_IMPL const *> GEN_PB_IMPL::bins_down_from(GEN_PROFILE_BIN const *root) const
{
    if (root == nullptr)
        root = get_root_bin();
    std::vector<GEN_PB_IMPL const *> bins;
    GEN_PB_IMPL const *bin = this;
    for (; bin != root; bin = bin->m_parent) {
        if (!GEN_PB_CHECK(bin->m_parent != nullptr, "m_parent"))
            return {};
        bins.push_back(bin);
    }
    bins.push_back(bin);
    std::reverse(bins.begin(), bins.end());
    return bins;
}

std::string GEN_PB_IMPL::get_path(GEN_PROFILE_BIN const *root) const
{
    return get_path("/", root);
}

std::string GEN_PB_IMPL::get_path(char const *separator, GEN_PROFILE_BIN const *root) const
{
    if (!gen_pb_is_own_thread())
        return {};
    return gen_pb_join_names(bins_down_from(root), separator);
}

void GEN_PB_IMPL::get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const
{
    if (!gen_pb_is_own_thread())
        return;
    for (GEN_PB_IMPL const *bin : bins_down_from(root))
        result->push_back(bin->m_name);
}
