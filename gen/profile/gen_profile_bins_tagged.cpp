// The tree of the tagged report: each bin with a tag moves out of its place into a subtree of its tag's own, below
// copies of the bins that stood above it, which hold its share of their numbers alone.
//
//     root                          root
//       plan                          plan       less by the numbers of read
//         read   tag "netlist"        route      less by the numbers of wires
//       route                         netlist    the tag's bin
//         wires  tag "netlist"          plan       copies of the bins above
//                                         read
//                                       route
//                                         wires
//
// A second bin of a tag joins above the deepest point where its path and that of the bin before it stop having the same
// names. The tag bins and the copies are not computed: they have the numbers of what they were made for.
#include "gen/profile/gen_profile_bins_impl.h"

#include "gen/base/gen_message.h"
#include "mem_sys.h"

#include <algorithm>
#include <map>

namespace {

// The bins with a tag in the order of the first dump's rows, children before parents; not owned.
std::vector<GEN_PB_IMPL *> l_gen_pb_tagged_bins;

// The bin of each tag that was placed last; not owned.
std::map<std::string, GEN_PB_IMPL *> l_gen_pb_tag_map;

// Whether a bin above `bin`, the root excluded, has its tag: that one moves, and takes this one along.
bool is_inside_its_tag(GEN_PB_IMPL const &bin)
{
    for (GEN_PB_IMPL const *above = bin.m_parent; above != nullptr; above = above->m_parent)
        if (above != s_gen_pb.m_root && above->m_tag == bin.m_tag)
            return true;
    return false;
}

// From `bin` upward, the root excluded.
template <typename ACTION>
void for_each_below_root(GEN_PB_IMPL *bin, ACTION action)
{
    for (; bin != nullptr && bin != s_gen_pb.m_root; bin = bin->m_parent)
        action(*bin);
}

// Copies of the bins above `bin`, up to the root or to one of the name of `stop`. The topmost one; `bin` if there is
// none.
GEN_PB_IMPL *make_chain(GEN_PB_IMPL &bin, GEN_PB_IMPL const &stop)
{
    GEN_PB_IMPL *top = &bin;
    for (GEN_PB_IMPL const *above = bin.m_parent;
         above != nullptr && above != s_gen_pb.m_root && above->m_name != stop.m_name; above = above->m_parent) {
        auto *const copy = new GEN_PB_IMPL;
        copy->m_name = above->m_name;
        copy->m_count = above->m_count;
        copy->m_report = bin.m_report;
        copy->m_children = {top};
        top->m_parent = copy;
        top = copy;
    }
    return top;
}

void append(GEN_PB_IMPL &parent, GEN_PB_IMPL &child)
{
    child.m_parent = &parent;
    parent.m_children.push_back(&child);
}

// The bin of a tag below the root, with the chain of the tag's first bin.
void place_first(GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL &root = *s_gen_pb.m_root;
    auto *const tag_bin = new GEN_PB_IMPL;
    tag_bin->m_name = bin.m_tag;
    tag_bin->m_report = bin.m_report;
    tag_bin->m_count = 1;
    append(*tag_bin, *make_chain(bin, root));
    append(root, *tag_bin);
}

// Where `bin` joins the bin of its tag that was placed last; null if nowhere.
GEN_PB_IMPL *find_join_bin(GEN_PB_IMPL const &bin, GEN_PB_IMPL const &placed)
{
    GEN_PB_IMPL const *above = &bin;
    for (GEN_PB_IMPL const *at = &placed; at != nullptr; at = at->m_parent) {
        if (at->m_name == bin.m_tag)
            continue;
        if (above == nullptr)
            break;
        if (at->m_name != above->m_name)
            return at->m_parent;
        above = above->m_parent;
    }
    gen_say("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: %s\n", bin.m_tag);
    return nullptr;
}

// False if there is no place for the bin, which stays where it is then.
bool place_behind(GEN_PB_IMPL &bin, GEN_PB_IMPL const &placed)
{
    GEN_PB_IMPL *const join = find_join_bin(bin, placed);
    if (join == nullptr)
        return false;
    append(*join, *make_chain(bin, *join));
    for_each_below_root(join, [&bin](GEN_PB_IMPL &above) { above.m_report.add_clocks(bin.m_report); });
    return true;
}

// True if the bin has moved.
bool move(GEN_PB_IMPL &bin)
{
    if (is_inside_its_tag(bin))
        return false;
    if (bin.m_parent == nullptr) {
        gen_say("root bin should not be tagged\n");
        return false;
    }
    for_each_below_root(bin.m_parent, [&bin](GEN_PB_IMPL &above) { above.m_report.subtract_clocks(bin.m_report); });
    GEN_PB_IMPL *&placed = l_gen_pb_tag_map[bin.m_tag];
    if (placed == nullptr)
        place_first(bin);
    else if (!place_behind(bin, *placed))
        return false;
    placed = &bin;
    return true;
}

} // namespace

void gen_pb_note_tagged_bin(GEN_PB_IMPL &bin)
{
    l_gen_pb_tagged_bins.push_back(&bin);
}

bool gen_pb_build_tag_tree()
{
    if (l_gen_pb_tagged_bins.empty())
        return false;
    // The bins are deleted untracked.
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_PB_BUSY const busy;
    // The bins that lost children, which are dropped at the end, all of a parent at once.
    std::vector<GEN_PB_IMPL *> parents;
    for (GEN_PB_IMPL *bin : l_gen_pb_tagged_bins) {
        GEN_PB_IMPL *const parent = bin->m_parent;
        if (move(*bin))
            parents.push_back(parent);
    }
    std::sort(parents.begin(), parents.end());
    parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
    for (GEN_PB_IMPL *parent : parents)
        parent->drop_moved_children();
    return true;
}

void gen_pb_forget_tagged_bins()
{
    l_gen_pb_tagged_bins.clear();
    l_gen_pb_tag_map.clear();
}
