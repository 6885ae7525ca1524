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

// Copies of the bins above a moved bin, each one the only child of the one before.
struct Chain
{
    std::unique_ptr<GEN_PB_IMPL> top; // null if there is no copy
    GEN_PB_IMPL *bottom = nullptr;    // takes the moved bin, which needs no memory
};

// Copies the bins above `bin`, up to the root or to one with the name of `stop`.
Chain make_chain(GEN_PB_IMPL const &bin, GEN_PB_IMPL const &stop)
{
    Chain chain;
    for (GEN_PB_IMPL const *above = bin.m_parent;
         above != nullptr && above != gen_pb().tree.root && above->m_name != stop.m_name; above = above->m_parent) {
        std::unique_ptr<GEN_PB_IMPL> copy = gen_pb_make_bin();
        copy->m_name = above->m_name;
        copy->m_count = above->m_count;
        copy->m_report = bin.m_report;
        copy->reserve_child();
        if (chain.top == nullptr)
            chain.bottom = copy.get();
        else
            copy->add_child(std::move(chain.top));
        chain.top = std::move(copy);
    }
    return chain;
}

// Moves a bin with its chain below `parent`. Its former parent still lists it, until all bins have moved. The bin moves
// last, so that it stays in its place if there is no memory.
void move_below(GEN_PB_IMPL &parent, GEN_PB_IMPL &bin)
{
    Chain chain = make_chain(bin, parent);
    if (chain.top == nullptr) {
        parent.adopt_child(bin);
        return;
    }
    parent.add_child(std::move(chain.top));
    chain.bottom->adopt_child(bin);
}

// Makes the bin of a tag, with the tag's first bin.
void add_below_root(GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL &root = *gen_pb().tree.root;
    std::unique_ptr<GEN_PB_IMPL> tag_bin = gen_pb_make_bin();
    tag_bin->m_name = bin.m_tag;
    tag_bin->m_report = bin.m_report;
    tag_bin->m_count = 1;
    Chain chain = make_chain(bin, root);
    if (chain.top == nullptr) {
        tag_bin->reserve_child();
        chain.bottom = tag_bin.get();
    } else
        tag_bin->add_child(std::move(chain.top));
    root.add_child(std::move(tag_bin));
    chain.bottom->adopt_child(bin);
}

// The bin above `placed` or `placed` itself, at which the two paths differ first, read upward; null if there is none.
GEN_PB_IMPL const *find_difference(GEN_PB_IMPL const &bin, GEN_PB_IMPL const &placed)
{
    GEN_PB_IMPL const *above = &bin;
    for (GEN_PB_IMPL const *at = &placed; at != nullptr && above != nullptr; at = at->m_parent) {
        if (at->m_name == bin.m_tag)
            continue;
        if (at->m_name != above->m_name)
            return at;
        above = above->m_parent;
    }
    return nullptr;
}

// From the bins above a bin that moves away.
void subtract(GEN_PB_IMPL const &bin, GEN_PB_IMPL *above)
{
    for_each_below_root(above, [&bin](GEN_PB_IMPL &each) { each.m_report.subtract_clocks(bin.m_report); });
}

// Moves the first bin of a tag.
void place_first(GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL *const former_parent = bin.m_parent;
    add_below_root(bin);
    subtract(bin, former_parent);
}

// Moves a later bin of a tag. Returns false if there is no bin to join; `bin` stays in its place then, although its
// figures are subtracted.
bool place_after(GEN_PB_IMPL const &placed, GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL *const former_parent = bin.m_parent;
    GEN_PB_IMPL const *const difference = find_difference(bin, placed);
    GEN_PB_IMPL *const join = difference == nullptr ? nullptr : difference->m_parent;
    if (join != nullptr)
        move_below(*join, bin);
    subtract(bin, former_parent);
    if (difference == nullptr)
        gen_debug_message("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: %s\n", bin.m_tag);
    for_each_below_root(join, [&bin](GEN_PB_IMPL &above) { above.m_report.add_clocks(bin.m_report); });
    return join != nullptr;
}

void move(GEN_PB_IMPL &bin, PlacedBins &placed_bins)
{
    if (is_inside_its_tag(bin))
        return;
    if (bin.m_parent == nullptr) {
        gen_debug_message("root bin should not be tagged\n");
        return;
    }
    GEN_PB_IMPL *&placed = placed_bins[bin.m_tag];
    if (placed == nullptr)
        place_first(bin);
    else if (!place_after(*placed, bin))
        return;
    placed = &bin;
}

// The bins that may lose children. They drop them at the end, each one all at once, also if there was no memory for the
// move of another bin.
class FormerParents
{
public:
    explicit FormerParents(std::vector<GEN_PB_IMPL *> const &moving_bins)
    {
        m_bins.reserve(moving_bins.size());
        for (GEN_PB_IMPL const *bin : moving_bins)
            if (bin->m_parent != nullptr)
                m_bins.push_back(bin->m_parent);
        std::sort(m_bins.begin(), m_bins.end());
        m_bins.erase(std::unique(m_bins.begin(), m_bins.end()), m_bins.end());
    }
    ~FormerParents()
    {
        for (GEN_PB_IMPL *bin : m_bins)
            bin->drop_moved_children();
    }
    FormerParents(FormerParents const &) = delete;
    FormerParents &operator=(FormerParents const &) = delete;

private:
    std::vector<GEN_PB_IMPL *> m_bins;
};

} // namespace

void gen_pb_build_tag_tree(std::vector<GEN_PB_IMPL *> const &tagged_bins)
{
    // The bins are freed with tracking suspended; allocate the new ones the same way.
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_PB_BUSY const busy;
    PlacedBins placed_bins;
    FormerParents const former_parents(tagged_bins);
    for (GEN_PB_IMPL *bin : tagged_bins)
        move(*bin, placed_bins);
}
