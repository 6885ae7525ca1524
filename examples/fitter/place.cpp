// Simulated annealing. A move takes a block to a random site nearby; a block on that site moves to
// the first block's site. The cost of a placement is the sum over all nets of half the perimeter of
// the box around the net's blocks, times a weight. A move that lowers the cost is always kept; a move
// that raises it is kept with the probability exp(-rise / temperature).
//
//     rise 10 at temperature 20: exp(-0.5), kept 61 times in 100;  at temperature 2: exp(-5), 0.7 times
//
// The schedule adapts. The fewer moves are accepted, the shorter is the range from which targets are
// drawn, so that about 44 of 100 moves are accepted, where annealing works best. The temperature
// falls slowly while the share is near that value, and quickly otherwise.
//
// Costs are integers, and the few real numbers use only the four basic operations, whose results are
// the same everywhere. So the same seed gives the same placement on every platform.
#include "place.h"

#include "checked_sum.h"
#include "draws.h"
#include "stage.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace fitter {
namespace {

// Costs are in hundredths of half a perimeter.
constexpr int UNIT = 100;
// Up to this number of blocks it is faster to compute a box again than to update it.
constexpr std::size_t SMALL_NET = 6;

// exp(-x) for x >= 0 by a Taylor polynomial: the results of std::exp() differ between platforms in the last bit.
double exp_of_minus(double x)
{
    constexpr double LN_2 = 0.69314718055994530942;
    if (x > 40.0)
        return 0.0;
    int const halvings = static_cast<int>(x / LN_2);
    double const rest = x - halvings * LN_2;
    double term = 1.0;
    double sum = 1.0;
    for (int i = 1; i <= 12; ++i) {
        term *= -rest / i;
        sum += term;
    }
    return sum / static_cast<double>(std::uint64_t{1} << halvings);
}

// The length of a net's wire in hundredths of half the perimeter of its box: 100 for up to three blocks, more for each
// further block.
int net_weight(std::size_t blocks)
{
    int const more = static_cast<int>(std::min<std::size_t>(blocks, 1000)) - 3;
    if (more <= 0)
        return UNIT;
    return UNIT + 4 * std::min(more, 47) + 2 * std::max(more - 47, 0);
}

// The range of a net's blocks along one axis, and the number of blocks at each end.
struct Span
{
    int low = 0;
    int high = 0;
    int at_low = 0;
    int at_high = 0;

    void start(int at)
    {
        low = high = at;
        at_low = at_high = 1;
    }

    void add(int at)
    {
        if (at < low) {
            low = at;
            at_low = 1;
        } else if (at == low)
            ++at_low;
        if (at > high) {
            high = at;
            at_high = 1;
        } else if (at == high)
            ++at_high;
    }

    // False if an end lost its last block; the box then has to be computed again.
    bool remove(int at) { return !((at == low && --at_low == 0) || (at == high && --at_high == 0)); }

    int length() const { return high - low; }
};

struct Box
{
    Span x;
    Span y;

    int half_perimeter() const { return x.length() + y.length(); }
};

Box box_of(std::vector<Index> const &blocks, std::vector<Point> const &position_of_block)
{
    Box box;
    box.x.start(position_of_block[blocks.front()].x);
    box.y.start(position_of_block[blocks.front()].y);
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        box.x.add(position_of_block[blocks[i]].x);
        box.y.add(position_of_block[blocks[i]].y);
    }
    return box;
}

std::vector<Point> positions(Device const &device, std::vector<Index> const &site_of_block)
{
    std::vector<Point> position_of_block;
    position_of_block.reserve(site_of_block.size());
    for (Index const site : site_of_block)
        position_of_block.push_back(device.position(site));
    return position_of_block;
}

// The largest number whose cube is not above `value`.
std::uint64_t integer_cube_root(std::uint64_t value)
{
    std::uint64_t root = 0;
    while ((root + 1) * (root + 1) * (root + 1) <= value)
        ++root;
    return root;
}

class Annealer
{
public:
    Annealer(Netlist const &netlist, Packing const &packing, Device const &device, PlaceOptions const &options)
        : m_packing(packing), m_device(device), m_draws(options.seed), m_block_at_site(device.sites(), NONE),
          m_stamp_of_net(packing.nets.size())
    {
        m_placement.netlist = NetlistLink(netlist);
        std::uint64_t const blocks = packing.blocks.size();
        m_moves_per_temperature = std::max<std::uint64_t>(options.effort * blocks * integer_cube_root(blocks), 1);
        for (FabricNet const &net : packing.nets)
            m_weight_of_net.push_back(net_weight(net.blocks.size()));
        for (Index site = 0; site < device.sites(); ++site)
            m_position_of_site.push_back(device.position(site));
        m_new_boxes.resize(packing.nets.size());
    }

    Placement run()
    {
        {
            Work const work("Initial Placement");
            start_at_random();
        }
        m_placement.start_wire_length = wire_length();
        if (!m_packing.nets.empty()) {
            Work const work("Cluster Annealing");
            anneal();
        }
        m_placement.wire_length = wire_length();
        return std::move(m_placement);
    }

private:
    struct Step
    {
        Index block = NONE;
        Index from = NONE;
        Index to = NONE;
    };

    Point position(Index site) const { return m_position_of_site[site]; }

    std::uint64_t wire_length() const
    {
        return half_perimeter_wire_length(m_packing, m_device, m_placement.site_of_block);
    }

    void start_at_random()
    {
        Index const clusters = static_cast<Index>(m_packing.clusters.size());
        Index const pads = static_cast<Index>(m_packing.blocks.size()) - clusters;
        std::vector<Index> &sites = m_placement.site_of_block;
        append_random_sites(0, m_device.cluster_sites(), clusters, sites);
        append_random_sites(m_device.cluster_sites(), m_device.pad_sites(), pads, sites);
        for (Index block = 0; block < sites.size(); ++block)
            m_block_at_site[sites[block]] = block;
        m_position_of_block = positions(m_device, sites);
        for (FabricNet const &net : m_packing.nets)
            m_boxes.push_back(box_of(net.blocks, m_position_of_block));
        for (Index net = 0; net < m_boxes.size(); ++net)
            m_cost.add(net_cost(net, m_boxes[net]));
    }

    // Draws `wanted` of the `count` sites from `first` on.
    void append_random_sites(Index first, Index count, Index wanted, std::vector<Index> &out)
    {
        std::vector<Index> sites(count);
        for (Index i = 0; i < count; ++i)
            sites[i] = first + i;
        for (Index i = 0; i < wanted; ++i) {
            std::swap(sites[i], sites[i + m_draws.below(count - i)]);
            out.push_back(sites[i]);
        }
    }

    void anneal()
    {
        m_range = m_device.size();
        double temperature = start_temperature();
        while (temperature > 0.005 * mean_net_cost()) {
            double const acceptance = perform_temperature(temperature);
            temperature *= cooling(acceptance);
            double const range = m_range * (1.0 - 0.44 + acceptance);
            m_range = std::clamp(range, 1.0, static_cast<double>(m_device.size()));
        }
        m_is_last_pass = true;
        perform_temperature(0.0);
    }

    double mean_net_cost() const
    {
        return static_cast<double>(m_cost.value()) / static_cast<double>(m_packing.nets.size());
    }

    // The temperature at which nearly all moves are accepted: twenty times the mean change of cost of a number of trial
    // moves, which are kept.
    double start_temperature()
    {
        Work const work("Start Temperature");
        std::uint64_t const tries = m_packing.blocks.size();
        CheckedSum change("change of the placement's cost");
        for (std::uint64_t i = 0; i < tries; ++i)
            if (propose()) {
                change.add(std::llabs(m_change));
                accept();
            }
        return 20.0 * static_cast<double>(change.value()) / static_cast<double>(tries);
    }

    static double cooling(double acceptance)
    {
        if (acceptance > 0.96)
            return 0.5;
        if (acceptance > 0.8)
            return 0.9;
        return acceptance > 0.15 ? 0.95 : 0.8;
    }

    // Makes all moves of a temperature; returns the share that was accepted.
    double perform_temperature(double temperature)
    {
        Work const work("Perform Temperature");
        std::uint64_t accepted = 0;
        for (std::uint64_t i = 0; i < m_moves_per_temperature; ++i) {
            if (!propose())
                continue;
            if (is_acceptable(temperature)) {
                accept();
                ++accepted;
            } else
                take_back();
        }
        ++m_placement.temperatures;
        m_placement.moves += m_moves_per_temperature;
        m_placement.accepted_moves += accepted;
        return static_cast<double>(accepted) / static_cast<double>(m_moves_per_temperature);
    }

    bool is_acceptable(double temperature)
    {
        if (m_change <= 0)
            return true;
        return temperature > 0.0 && m_draws.fraction() < exp_of_minus(static_cast<double>(m_change) / temperature);
    }

    // Draws a move, carries it out and computes the change of cost. False, without a move, if the drawn site is that of
    // the block itself.
    bool propose()
    {
        Index const block = m_draws.below(static_cast<Index>(m_packing.blocks.size()));
        Index const from = m_placement.site_of_block[block];
        Index const to = m_packing.blocks[block].is_pad ? pad_target(from) : cluster_target(from);
        if (from == to)
            return false;
        m_steps[0] = {block, from, to};
        m_steps[1] = {m_block_at_site[to], to, from};
        m_step_count = m_steps[1].block == NONE ? 1 : 2;
        put_blocks();
        work_out_change();
        return true;
    }

    Index cluster_target(Index from)
    {
        Point const at = position(from);
        int const range = static_cast<int>(m_range);
        int const last = m_device.size() - 1;
        int const x = m_draws.between(std::max(at.x - range, 0), std::min(at.x + range, last));
        int const y = m_draws.between(std::max(at.y - range, 0), std::min(at.y + range, last));
        return m_device.cluster_site(x, y);
    }

    // For pads the range is a number of places along the edge, which is a ring.
    Index pad_target(Index from)
    {
        int const range = static_cast<int>(m_range);
        int const places = 4 * m_device.size();
        int const place = (m_device.pad_place(from) + m_draws.between(-range, range) + places) % places;
        return m_device.pad_site(place, m_draws.between(0, PADS_PER_PLACE - 1));
    }

    void put_blocks()
    {
        for (int i = 0; i < m_step_count; ++i)
            put(m_steps[i].block, m_steps[i].to);
        if (m_step_count == 1)
            m_block_at_site[m_steps[0].from] = NONE;
    }

    void put(Index block, Index site)
    {
        m_placement.site_of_block[block] = site;
        m_block_at_site[site] = block;
        m_position_of_block[block] = position(site);
    }

    void work_out_change()
    {
        m_change = 0;
        m_changed_nets.clear();
        ++m_stamp;
        // The box of a net on both blocks doesn't change. The nets of the second block get a stamp, and those that are
        // also on the first block lose it.
        if (m_step_count == 2)
            for (Index const net : m_packing.blocks[m_steps[1].block].nets)
                m_stamp_of_net[net] = m_stamp;
        for (Index const net : m_packing.blocks[m_steps[0].block].nets) {
            if (m_stamp_of_net[net] == m_stamp)
                m_stamp_of_net[net] = 0;
            else
                change_net(net, m_steps[0]);
        }
        if (m_step_count == 2)
            for (Index const net : m_packing.blocks[m_steps[1].block].nets)
                if (m_stamp_of_net[net] == m_stamp)
                    change_net(net, m_steps[1]);
    }

    void change_net(Index net, Step const &step)
    {
        Box &box = m_new_boxes[net];
        std::vector<Index> const &blocks = m_packing.nets[net].blocks;
        box = m_boxes[net];
        if (blocks.size() <= SMALL_NET || !move_in(box, position(step.from), position(step.to)))
            box = box_of(blocks, m_position_of_block);
        m_change += net_cost(net, box) - net_cost(net, m_boxes[net]);
        m_changed_nets.push_back(net);
    }

    // False if the box has to be computed again.
    static bool move_in(Box &box, Point from, Point to)
    {
        box.x.add(to.x);
        box.y.add(to.y);
        return box.x.remove(from.x) && box.y.remove(from.y);
    }

    std::int64_t net_cost(Index net, Box const &box) const
    {
        return std::int64_t{m_weight_of_net[net]} * box.half_perimeter();
    }

    void accept()
    {
        m_cost.add(m_change);
        for (Index const net : m_changed_nets)
            m_boxes[net] = m_new_boxes[net];
        if (m_is_last_pass)
            m_placement.last_moves.push_back({m_steps[0].block, m_steps[0].from, m_steps[0].to, m_steps[1].block});
    }

    void take_back()
    {
        for (int i = 0; i < m_step_count; ++i)
            put(m_steps[i].block, m_steps[i].from);
        if (m_step_count == 1)
            m_block_at_site[m_steps[0].to] = NONE;
    }

    Packing const &m_packing;
    Device const &m_device;
    Draws m_draws;
    std::uint64_t m_moves_per_temperature = 0;
    std::vector<int> m_weight_of_net;
    std::vector<Point> m_position_of_site;

    Placement m_placement;
    std::vector<Index> m_block_at_site;
    std::vector<Point> m_position_of_block;
    std::vector<Box> m_boxes;
    CheckedSum m_cost{"cost of the placement"};
    double m_range = 1.0; // largest distance of a move, in sites
    bool m_is_last_pass = false;

    // The current move.
    Step m_steps[2];
    int m_step_count = 0;
    std::int64_t m_change = 0;
    std::vector<Index> m_changed_nets;
    std::vector<Box> m_new_boxes; // by net; valid for the changed nets
    std::vector<std::uint64_t> m_stamp_of_net;
    std::uint64_t m_stamp = 0;
};

// Adds `amount`, evenly spread, to the entries of a rectangle of a map that is `columns` wide.
void spread(std::vector<std::uint64_t> &map, int columns, int x_low, int x_high, int y_low, int y_high,
            std::uint64_t amount)
{
    int const entries = (x_high - x_low + 1) * (y_high - y_low + 1);
    for (int y = y_low; y <= y_high; ++y)
        for (int x = x_low; x <= x_high; ++x) {
            int const entry = y * columns + x;
            map[static_cast<std::size_t>(entry)] += amount / static_cast<std::uint64_t>(entries);
        }
}

} // namespace

Placement place(Netlist const &netlist, Packing const &packing, Device const &device, PlaceOptions const &options)
{
    return Annealer(netlist, packing, device, options).run();
}

std::uint64_t half_perimeter_wire_length(Packing const &packing, Device const &device,
                                         std::vector<Index> const &site_of_block)
{
    std::vector<Point> const position_of_block = positions(device, site_of_block);
    CheckedSum length("wire length of the placement");
    for (FabricNet const &net : packing.nets)
        length.add(box_of(net.blocks, position_of_block).half_perimeter());
    return static_cast<std::uint64_t>(length.value());
}

ExpectedUse analyse_congestion(Packing const &packing, Device const &device, std::vector<Index> const &site_of_block)
{
    Work const work("Placement Congestion Analysis");
    // In millionths of a track, so that rounding in the divisions is negligible.
    constexpr std::uint64_t TRACK = 1000000;
    int const size = device.size();
    int const last = size - 1;
    std::vector<Point> const position_of_block = positions(device, site_of_block);
    std::vector<std::uint64_t> horizontal(static_cast<std::size_t>(size * (size + 1)));
    std::vector<std::uint64_t> vertical(horizontal.size());
    for (FabricNet const &net : packing.nets) {
        Box const box = box_of(net.blocks, position_of_block);
        std::uint64_t const weight = TRACK * static_cast<std::uint64_t>(net_weight(net.blocks.size())) / UNIT;
        int const x_low = std::clamp(box.x.low, 0, last), x_high = std::clamp(box.x.high, 0, last);
        int const y_low = std::clamp(box.y.low, 0, last), y_high = std::clamp(box.y.high, 0, last);
        spread(horizontal, size, x_low, x_high, y_low, y_high + 1, weight * static_cast<std::uint64_t>(box.x.length()));
        spread(vertical, size + 1, x_low, x_high + 1, y_low, y_high,
               weight * static_cast<std::uint64_t>(box.y.length()));
    }
    ExpectedUse use;
    for (std::vector<std::uint64_t> const *map : {&horizontal, &vertical})
        for (std::uint64_t const entry : *map) {
            use.average += entry;
            use.peak = std::max(use.peak, entry / (TRACK / 100));
        }
    use.average /= (TRACK / 100) * 2 * horizontal.size();
    return use;
}

} // namespace fitter
