// Routing by negotiated congestion. At first every net takes its cheapest tree, without regard to
// other nets. Then, in each iteration, the nets on overused segments are removed and routed again.
// An overused segment gets more expensive in two ways: by the number of nets that use it now, with a
// factor that rises with each iteration, and by the number of iterations in which it was overused.
// In the end only the nets that need a segment most keep it: this is the first convergence. After
// it, each net is removed and routed once more and may take a shorter tree on free tracks.
//
// A net is routed block by block, nearest first, each by a search that starts at the whole tree so
// far. The search continues where the cost so far plus the least possible cost to the target is
// lowest. Distances are in half sides of a site: the middle of a segment is 1 away from the sites
// next to it and at most 2 away from the next middle. So at least (distance - 1) / 2 further segments
// are needed, each with a cost of 1 or more. From a middle at distance 7, for example, it is 3.
#include "route.h"

#include "checked_sum.h"
#include "stage.h"

#include <algorithm>
#include <cstdlib>
#include <queue>
#include <unordered_map>
#include <utility>

namespace fitter {
namespace {

constexpr double FIRST_CROWDING_FACTOR = 0.5;
constexpr double CROWDING_GROWTH = 1.3;
constexpr double HISTORY_STEP = 0.5;
constexpr unsigned MOST_REFINEMENTS = 3;

// In half sides of a site, from the lower left corner of site (0,0).
Point middle_of_site(Device const &device, Index site)
{
    Point const at = device.position(site);
    return {2 * at.x + 1, 2 * at.y + 1};
}

Point middle_of_segment(Device const &device, Index segment)
{
    Point const at = device.segment_place(segment);
    return device.is_horizontal(segment) ? Point{2 * at.x + 1, 2 * at.y} : Point{2 * at.x, 2 * at.y + 1};
}

int distance(Point a, Point b)
{
    return std::abs(a.x - b.x) + std::abs(a.y - b.y);
}

class Router
{
public:
    Router(Packing const &packing, Device const &device, Placement const &placement, RouteOptions const &options)
        : m_packing(packing), m_device(device), m_placement(placement), m_options(options),
          m_history(device.segments()), m_position_in_tree(device.segments(), NONE), m_reached(device.segments()),
          m_is_target(device.segments())
    {
        VisibleWork const work("fit2_fit_route_init");
        m_routing.channel_width = options.channel_width;
        m_routing.trees.resize(packing.nets.size());
        m_routing.use.resize(device.segments());
        for (Index segment = 0; segment < device.segments(); ++segment) {
            m_joined.push_back(device.segments_joined(segment));
            m_middle.push_back(middle_of_segment(device, segment));
        }
        for (Index net = 0; net < packing.nets.size(); ++net)
            m_order.push_back(net);
        std::stable_sort(m_order.begin(), m_order.end(), [&](Index a, Index b) {
            return packing.nets[a].blocks.size() > packing.nets[b].blocks.size();
        });
    }

    Routing run()
    {
        converge();
        sum_up();
        m_routing.converged_length = m_routing.wire_length;
        if (m_routing.is_legal()) {
            refine();
            sum_up();
        }
        return std::move(m_routing);
    }

private:
    struct Reached
    {
        double cost = 0.0;
        Index from = NONE;
        std::uint64_t search = 0; // the search to which the other members belong
        bool is_done = false;
    };

    struct Candidate
    {
        double estimate;
        double cost;
        Index segment;

        // The queue returns its largest element: that with the lowest estimate, then that nearest to its target, then
        // that with the lowest number.
        bool operator<(Candidate const &other) const
        {
            if (estimate != other.estimate)
                return estimate > other.estimate;
            if (cost != other.cost)
                return cost < other.cost;
            return segment > other.segment;
        }
    };

    void converge()
    {
        Work const work("Router Main Loop Before First Convergence");
        m_crowding_factor = FIRST_CROWDING_FACTOR;
        for (m_routing.iterations = 1;; ++m_routing.iterations) {
            {
                Work const core("Core Routing");
                for (Index const net : m_order)
                    if (m_routing.iterations == 1 || is_on_overused_segment(net))
                        reroute(net);
            }
            if (!update_history() || m_routing.iterations == m_options.iterations)
                return;
            m_crowding_factor *= CROWDING_GROWTH;
        }
    }

    // False if no segment is overused.
    bool update_history()
    {
        Work const work("Congestion Update");
        bool is_overused = false;
        for (Index segment = 0; segment < m_routing.use.size(); ++segment)
            if (m_routing.use[segment] > m_options.channel_width) {
                m_history[segment] += HISTORY_STEP * (m_routing.use[segment] - m_options.channel_width);
                is_overused = true;
            }
        return is_overused;
    }

    void refine()
    {
        Work const work("Router Main Loop After First Convergence");
        m_only_free_tracks = true;
        bool is_shorter = true;
        while (is_shorter && m_routing.refinements < MOST_REFINEMENTS) {
            Work const core("Core Routing");
            is_shorter = false;
            for (Index const net : m_order) {
                Tree const former = m_routing.trees[net];
                release_tracks(net);
                if (build_tree(net) && m_tree.size() < former.size())
                    is_shorter = true;
                else
                    m_tree = former;
                store_tree(net);
            }
            ++m_routing.refinements;
        }
    }

    bool is_on_overused_segment(Index net) const
    {
        Tree const &tree = m_routing.trees[net];
        return std::any_of(tree.begin(), tree.end(), [this](Branch const &branch) {
            return m_routing.use[branch.segment] > m_options.channel_width;
        });
    }

    void reroute(Index net)
    {
        release_tracks(net);
        build_tree(net);
        store_tree(net);
    }

    void release_tracks(Index net)
    {
        for (Branch const &branch : m_routing.trees[net])
            --m_routing.use[branch.segment];
    }

    // Makes m_tree the tree of the net.
    void store_tree(Index net)
    {
        m_routing.trees[net] = m_tree;
        for (Branch const &branch : m_tree)
            ++m_routing.use[branch.segment];
    }

    // Makes m_tree. False if a block can't be reached, which happens only while m_only_free_tracks is set.
    bool build_tree(Index net)
    {
        std::vector<Index> const &blocks = m_packing.nets[net].blocks;
        Index const driver_site = m_placement.site_of_block[blocks.front()];
        m_tree.clear();
        bool is_complete = true;
        for (Index const site : sites_by_distance(blocks, driver_site))
            is_complete = is_complete && connect(driver_site, site);
        for (Branch const &branch : m_tree)
            m_position_in_tree[branch.segment] = NONE;
        return is_complete;
    }

    std::vector<Index> sites_by_distance(std::vector<Index> const &blocks, Index driver_site) const
    {
        std::vector<std::pair<int, Index>> sites;
        Point const driver = middle_of_site(m_device, driver_site);
        for (std::size_t i = 1; i < blocks.size(); ++i) {
            Index const site = m_placement.site_of_block[blocks[i]];
            sites.emplace_back(distance(driver, middle_of_site(m_device, site)), site);
        }
        std::sort(sites.begin(), sites.end());
        std::vector<Index> ordered;
        ordered.reserve(sites.size());
        for (auto const &entry : sites)
            ordered.push_back(entry.second);
        return ordered;
    }

    // Extends the tree to a site. False if the site can't be reached.
    bool connect(Index driver_site, Index site)
    {
        std::vector<Index> const targets = m_device.segments_at_site(site);
        for (Index const target : targets)
            if (m_position_in_tree[target] != NONE)
                return true;
        for (Index const target : targets)
            m_is_target[target] = true;
        m_goal = middle_of_site(m_device, site);
        Index const end = search(driver_site);
        for (Index const target : targets)
            m_is_target[target] = false;
        if (end != NONE)
            add_path(end);
        return end != NONE;
    }

    // The target segment that is cheapest to reach; NONE if none can be reached.
    Index search(Index driver_site)
    {
        ++m_search;
        m_queue = {};
        for (Branch const &branch : m_tree)
            reach(branch.segment, NONE, 0.0);
        for (Index const segment : m_device.segments_at_site(driver_site))
            if (is_open(segment))
                reach(segment, NONE, cost(segment));
        while (!m_queue.empty()) {
            Index const segment = m_queue.top().segment;
            m_queue.pop();
            Reached &reached = m_reached[segment];
            if (reached.is_done)
                continue;
            reached.is_done = true;
            if (m_is_target[segment])
                return segment;
            for (Index const next : m_joined[segment])
                if (is_open(next))
                    reach(next, segment, reached.cost + cost(next));
        }
        return NONE;
    }

    void reach(Index segment, Index from, double cost_so_far)
    {
        Reached &reached = m_reached[segment];
        if (reached.search == m_search && (reached.is_done || reached.cost <= cost_so_far))
            return;
        reached = {cost_so_far, from, m_search, false};
        double const to_come = 0.5 * (distance(m_middle[segment], m_goal) - 1);
        m_queue.push({cost_so_far + to_come, cost_so_far, segment});
    }

    bool is_open(Index segment) const
    {
        return !m_only_free_tracks || m_routing.use[segment] < m_options.channel_width;
    }

    double cost(Index segment) const
    {
        if (m_only_free_tracks)
            return 1.0;
        double const base = 1.0 + m_history[segment];
        if (m_routing.use[segment] < m_options.channel_width)
            return base;
        return base * (1.0 + m_crowding_factor * (m_routing.use[segment] + 1 - m_options.channel_width));
    }

    // The path back from `end` ends at a segment of the tree or at one next to the driver.
    void add_path(Index end)
    {
        std::vector<Index> path;
        for (Index at = end; at != NONE && m_position_in_tree[at] == NONE; at = m_reached[at].from)
            path.push_back(at);
        Index const joint = m_reached[path.back()].from;
        Index parent = joint == NONE ? NONE : m_position_in_tree[joint];
        for (auto segment = path.rbegin(); segment != path.rend(); ++segment) {
            m_tree.push_back({*segment, parent});
            parent = static_cast<Index>(m_tree.size() - 1);
            m_position_in_tree[*segment] = parent;
        }
    }

    void sum_up()
    {
        m_routing.overused_segments = 0;
        m_routing.peak_use = 0;
        CheckedSum length("wire length of the routing");
        for (Index const use : m_routing.use) {
            m_routing.overused_segments += use > m_options.channel_width ? 1 : 0;
            m_routing.peak_use = std::max(m_routing.peak_use, use);
            length.add(use);
        }
        m_routing.wire_length = static_cast<std::uint64_t>(length.value());
    }

    Packing const &m_packing;
    Device const &m_device;
    Placement const &m_placement;
    RouteOptions const m_options;
    std::vector<std::vector<Index>> m_joined; // by segment
    std::vector<Point> m_middle;              // by segment
    std::vector<Index> m_order;               // nets, those of most blocks first

    Routing m_routing;
    std::vector<double> m_history; // by segment
    double m_crowding_factor = 0.0;
    bool m_only_free_tracks = false;

    // The current net.
    Tree m_tree;
    std::vector<Index> m_position_in_tree; // by segment, NONE if it isn't in the tree

    // The current search.
    Point m_goal;
    std::uint64_t m_search = 0;
    std::vector<Reached> m_reached;
    std::vector<bool> m_is_target;
    std::priority_queue<Candidate> m_queue;
};

bool is_one_of(Index item, std::vector<Index> const &items)
{
    return std::find(items.begin(), items.end(), item) != items.end();
}

// Empty if the tree connects the driver's site with those of all other blocks; else the error.
std::string check_tree(FabricNet const &net, Tree const &tree, Device const &device, Placement const &placement)
{
    auto const segments_at = [&](Index block) { return device.segments_at_site(placement.site_of_block[block]); };
    std::vector<Index> segments;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (tree[i].segment >= device.segments() || is_one_of(tree[i].segment, segments))
            return "has a segment twice, or one that doesn't exist";
        segments.push_back(tree[i].segment);
        if (tree[i].parent == NONE ? !is_one_of(tree[i].segment, segments_at(net.blocks.front()))
                                   : tree[i].parent >= i || !is_one_of(tree[tree[i].parent].segment,
                                                                       device.segments_joined(tree[i].segment)))
            return "is not connected";
    }
    for (std::size_t i = 1; i < net.blocks.size(); ++i) {
        std::vector<Index> const ends = segments_at(net.blocks[i]);
        if (std::none_of(ends.begin(), ends.end(), [&](Index segment) { return is_one_of(segment, segments); }))
            return "does not reach block " + std::to_string(net.blocks[i]);
    }
    return {};
}

} // namespace

Routing route(Packing const &packing, Device const &device, Placement const &placement, RouteOptions const &options)
{
    return Router(packing, device, placement, options).run();
}

std::string check_routing(Packing const &packing, Device const &device, Placement const &placement,
                          Routing const &routing)
{
    Work const work("Routing Check");
    std::vector<Index> use(device.segments());
    for (std::size_t i = 0; i < packing.nets.size(); ++i) {
        std::string const fault = check_tree(packing.nets[i], routing.trees[i], device, placement);
        if (!fault.empty())
            return "the tree of fabric net " + std::to_string(i) + " " + fault;
        for (Branch const &branch : routing.trees[i])
            ++use[branch.segment];
    }
    if (use != routing.use)
        return "the use of the segments is not that of the trees";
    auto const overused = std::count_if(use.begin(), use.end(), [&](Index n) { return n > routing.channel_width; });
    return static_cast<Index>(overused) == routing.overused_segments ? "" : "the count of overused segments is wrong";
}

std::vector<Index> segments_to_blocks(FabricNet const &net, Tree const &tree, Device const &device,
                                      Placement const &placement)
{
    std::vector<Index> depth; // by branch
    std::unordered_map<Index, Index> depth_of_segment;
    depth.reserve(tree.size());
    for (Branch const &branch : tree) {
        depth.push_back(branch.parent == NONE ? 1 : depth[branch.parent] + 1);
        depth_of_segment[branch.segment] = depth.back();
    }
    std::vector<Index> segments{0};
    for (std::size_t i = 1; i < net.blocks.size(); ++i) {
        Index least = NONE;
        for (Index const segment : device.segments_at_site(placement.site_of_block[net.blocks[i]]))
            if (auto const found = depth_of_segment.find(segment); found != depth_of_segment.end())
                least = std::min(least, found->second);
        segments.push_back(least);
    }
    return segments;
}

} // namespace fitter
