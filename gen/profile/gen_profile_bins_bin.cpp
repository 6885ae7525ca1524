#include "gen/profile/gen_profile_bins_bin.h"

#include <algorithm>

namespace {

// Up to this number the children are compared one by one, beyond it they are indexed.
constexpr std::size_t INDEXED_CHILD_COUNT = 12;

} // namespace

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

// Deletes the whole subtree in one loop, since a tree may be deeper than the stack: a bin is deleted after its
// children, and has forgotten them by then, so that no destructor finds a child to delete.
GEN_PB_IMPL::~GEN_PB_IMPL()
{
    m_walk = 0;
    for (GEN_PB_IMPL *bin = this;;) {
        if (bin->m_walk != bin->m_children.size()) {
            GEN_PB_IMPL *const child = bin->m_children[bin->m_walk++];
            child->m_parent = bin;
            child->m_walk = 0;
            bin = child;
            continue;
        }
        bin->m_children.clear();
        if (bin == this)
            return;
        GEN_PB_IMPL *const parent = bin->m_parent;
        delete bin;
        bin = parent;
    }
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

GEN_PB_IMPL *GEN_PB_IMPL::add_child(std::unique_ptr<GEN_PB_IMPL> child)
{
    adopt_child(*child);
    return child.release();
}

void GEN_PB_IMPL::adopt_child(GEN_PB_IMPL &child)
{
    list_child(child);
    child.m_parent = this;
}

void GEN_PB_IMPL::list_child(GEN_PB_IMPL &child)
{
    m_children.push_back(&child);
    try {
        index_child(child);
    } catch (...) {
        m_children.pop_back();
        throw;
    }
}

// `child` is the last of the children.
void GEN_PB_IMPL::index_child(GEN_PB_IMPL &child)
{
    if (m_child_index)
        m_child_index->emplace(child.m_name, &child);
    else if (m_children.size() > INDEXED_CHILD_COUNT) {
        auto index = std::make_unique<std::unordered_map<std::string_view, GEN_PB_IMPL *>>();
        for (GEN_PB_IMPL *each : m_children)
            index->emplace(each->m_name, each);
        m_child_index = std::move(index);
    }
}

void GEN_PB_IMPL::drop_moved_children()
{
    m_child_index.reset();
    auto const is_moved = [this](GEN_PB_IMPL const *child) { return child->m_parent != this; };
    m_children.erase(std::remove_if(m_children.begin(), m_children.end(), is_moved), m_children.end());
}

std::string gen_pb_step(GEN_PB_IMPL const &bin)
{
    std::vector<std::uint32_t> numbers; // from the bin upward
    for (GEN_PB_IMPL const *each = &bin; each != nullptr && each->m_step_number != 0; each = each->m_labelled_above)
        numbers.push_back(each->m_step_number);
    std::string step;
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number)
        step += (step.empty() ? "" : ".") + std::to_string(*number);
    return step;
}

std::vector<GEN_PB_IMPL const *> gen_pb_path(GEN_PB_IMPL const &bin, GEN_PROFILE_BIN const *top)
{
    std::size_t length = 1;
    GEN_PB_IMPL const *each = &bin;
    for (; each != top && each->m_parent != nullptr; each = each->m_parent)
        ++length;
    if (!GEN_PB_CHECK(top == nullptr || each == top, "m_parent"))
        return {};
    std::vector<GEN_PB_IMPL const *> path(length);
    for (each = &bin; length != 0; each = each->m_parent)
        path[--length] = each;
    return path;
}

std::vector<std::string> gen_pb_path_names(std::vector<GEN_PB_IMPL const *> const &path)
{
    std::vector<std::string> names;
    names.reserve(path.size());
    for (GEN_PB_IMPL const *bin : path)
        names.push_back(bin->m_name);
    return names;
}

std::string gen_pb_path_text(std::vector<GEN_PB_IMPL const *> const &path, char const *separator)
{
    std::string text;
    for (GEN_PB_IMPL const *bin : path) {
        if (bin != path.front() && !bin->m_name.empty())
            text += separator;
        text += bin->m_name;
    }
    return text;
}

std::vector<std::string> gen_pb_current_path()
{
    GEN_PB_IMPL const *const current = GEN_PB_IMPL::get_current_bin();
    if (!gen_pb_is_own_thread() || current == nullptr)
        return {};
    return gen_pb_path_names(gen_pb_path(*current, /*top=*/nullptr));
}
