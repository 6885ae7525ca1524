// Tag joins: how the bins of one tag come together in the tagged report.
//
// Each bin with a tag moves out of its place into a subtree of its tag, below copies of the bins that were above it.
// Take three bins with the tag "netlist":
//
//     Fitter                        Fitter
//       Plan                          Plan          less by the numbers of Read
//         Read   "netlist"            Route         less by the numbers of Read and Wires
//       Route                         netlist       the bin of the tag
//         Read   "netlist"              Plan        a copy
//         Wires  "netlist"                Read      the first
//                                       Route       a copy
//                                         Read      the second
//                                         Wires     the third
//
// The first bin of a tag makes the bin of the tag. Each later one is compared with the bin of its tag that was placed
// last: both paths are read from the deepest name upward, and the new bin joins above the first names that differ. For
// the second, Read and Read are equal, Plan and Route differ, and above Plan is the bin of the tag. For the third, Read
// and Wires differ at once, and above Read is the copy of Route, which needs no second copy.
//
// The figures of the copies and of the bin of the tag are not computed as those of other bins. They are those of the
// first tagged bin below, and the times of each later one are added.
#include "gen/profile/gen_profile_bins_tagged.h"

#include "gen/base/gen_debug_message.h"
#include "mem_sys.h"

#include <algorithm>
#include <map>

namespace {

// The bin of each tag that was placed last; not owned.
using PlacedBins = std::map<std::string, GEN_PB_IMPL *>;

// Whether a bin above `bin`, the root excluded, has its tag. That one moves, with this one inside it.
bool is_inside_its_tag(GEN_PB_IMPL const &bin)
{
    for (GEN_PB_IMPL const *above = bin.m_parent; above != nullptr; above = above->m_parent)
        if (above != gen_pb().tree.root && above->m_tag == bin.m_tag)
            return true;
    return false;
}

// From `bin` upward, the root excluded.
template <typename Action>
void for_each_below_root(GEN_PB_IMPL *bin, Action action)
{
    for (; bin != nullptr && bin != gen_pb().tree.root; bin = bin->m_parent)
        action(*bin);
}

// Puts `bin` below copies of the bins above it, up to the root or to one with the name of `stop`. Returns the topmost
// copy, or the bin if there is none.
std::unique_ptr<GEN_PB_IMPL> make_chain(std::unique_ptr<GEN_PB_IMPL> bin, GEN_PB_IMPL const &stop)
{
    GEN_PB_METRICS const share = bin->m_report;
    GEN_PB_IMPL const *above = bin->m_parent;
    std::unique_ptr<GEN_PB_IMPL> top = std::move(bin);
    for (; above != nullptr && above != gen_pb().tree.root && above->m_name != stop.m_name; above = above->m_parent) {
        std::unique_ptr<GEN_PB_IMPL> copy = gen_pb_make_bin();
        copy->m_name = above->m_name;
        copy->m_count = above->m_count;
        copy->m_report = share;
        copy->add_child(std::move(top));
        top = std::move(copy);
    }
    return top;
}

// Moves a bin with its chain below `parent`. Its former parent still lists it, until all bins have moved.
void move_below(GEN_PB_IMPL &parent, GEN_PB_IMPL &bin)
{
    parent.add_child(make_chain(std::unique_ptr<GEN_PB_IMPL>(&bin), parent));
}

// Makes the bin of a tag, with the tag's first bin.
void add_below_root(GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL &root = *gen_pb().tree.root;
    std::unique_ptr<GEN_PB_IMPL> tag_bin = gen_pb_make_bin();
    tag_bin->m_name = bin.m_tag;
    tag_bin->m_report = bin.m_report;
    tag_bin->m_count = 1;
    tag_bin->add_child(make_chain(std::unique_ptr<GEN_PB_IMPL>(&bin), root));
    root.add_child(std::move(tag_bin));
}

// The bin that takes `bin`, as `placed` was the last one of its tag; null if there is none.
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
    gen_debug_message("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: %s\n", bin.m_tag);
    return nullptr;
}

// Returns false if there is no bin to join; `bin` stays in its place then.
bool place_after(GEN_PB_IMPL const &placed, GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL *const join = find_join_bin(bin, placed);
    if (join == nullptr)
        return false;
    move_below(*join, bin);
    for_each_below_root(join, [&bin](GEN_PB_IMPL &above) { above.m_report.add_clocks(bin.m_report); });
    return true;
}

// Returns whether the bin has moved.
bool move(GEN_PB_IMPL &bin, PlacedBins &placed_bins)
{
    if (is_inside_its_tag(bin))
        return false;
    if (bin.m_parent == nullptr) {
        gen_debug_message("root bin should not be tagged\n");
        return false;
    }
    for_each_below_root(bin.m_parent, [&bin](GEN_PB_IMPL &above) { above.m_report.subtract_clocks(bin.m_report); });
    GEN_PB_IMPL *&placed = placed_bins[bin.m_tag];
    if (placed == nullptr)
        add_below_root(bin);
    else if (!place_after(*placed, bin))
        return false;
    placed = &bin;
    return true;
}

} // namespace

void gen_pb_build_tag_tree(std::vector<GEN_PB_IMPL *> const &tagged_bins)
{
    // The bins are freed with tracking suspended; allocate the new ones the same way.
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_PB_BUSY const busy;
    PlacedBins placed_bins;
    // The bins that lost children. They drop them at the end, each one all at once.
    std::vector<GEN_PB_IMPL *> parents;
    for (GEN_PB_IMPL *bin : tagged_bins) {
        GEN_PB_IMPL *const parent = bin->m_parent;
        if (move(*bin, placed_bins))
            parents.push_back(parent);
    }
    std::sort(parents.begin(), parents.end());
    parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
    for (GEN_PB_IMPL *parent : parents)
        parent->drop_moved_children();
}
