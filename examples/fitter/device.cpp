#include "device.h"

#include "error.h"

namespace fitter {

Device Device::for_packing(Packing const &packing)
{
    std::size_t const clusters = packing.clusters.size();
    std::size_t const pads = packing.blocks.size() - clusters;
    std::size_t size = 1;
    while (9 * size * size < 10 * clusters || 4 * size * PADS_PER_PLACE < pads)
        ++size;
    if (size > LARGEST_DEVICE)
        throw Error(std::to_string(clusters) + " clusters and " + std::to_string(pads) + " pads need a device of " +
                    std::to_string(size) + " columns, the largest has " + std::to_string(LARGEST_DEVICE));
    return Device(static_cast<int>(size));
}

Point Device::position(Index site) const
{
    if (!is_pad_site(site))
        return {static_cast<int>(site) % m_size, static_cast<int>(site) / m_size};
    int const along = pad_place(site) % m_size;
    switch (pad_place(site) / m_size) {
    case 0:
        return {along, -1};
    case 1:
        return {m_size, along};
    case 2:
        return {m_size - 1 - along, m_size};
    default:
        return {-1, m_size - 1 - along};
    }
}

Point Device::segment_place(Index segment) const
{
    bool const is_in_row = is_horizontal(segment);
    int const row_length = is_in_row ? m_size : m_size + 1;
    int const number = static_cast<int>(is_in_row ? segment : segment - horizontal_segments());
    return {number % row_length, number / row_length};
}

std::string Device::segment_name(Index segment) const
{
    Point const place = segment_place(segment);
    return (is_horizontal(segment) ? "h(" : "v(") + std::to_string(place.x) + "," + std::to_string(place.y) + ")";
}

std::vector<Index> Device::segments_at_site(Index site) const
{
    auto const [x, y] = position(site);
    if (y == -1)
        return {horizontal(x, 0)};
    if (y == m_size)
        return {horizontal(x, m_size)};
    if (x == -1)
        return {vertical(0, y)};
    if (x == m_size)
        return {vertical(m_size, y)};
    return {horizontal(x, y), horizontal(x, y + 1), vertical(x, y), vertical(x + 1, y)};
}

// Appends the segments that meet at switch (x,y), without `except`. Switch (x,y) is at the lower left corner of site
// (x,y).
void Device::append_at_switch(int x, int y, Index except, std::vector<Index> &out) const
{
    auto const append = [&](bool exists, Index segment) {
        if (exists && segment != except)
            out.push_back(segment);
    };
    append(x > 0, horizontal(x - 1, y));
    append(x < m_size, horizontal(x, y));
    append(y > 0, vertical(x, y - 1));
    append(y < m_size, vertical(x, y));
}

std::vector<Index> Device::segments_joined(Index segment) const
{
    auto const [x, y] = segment_place(segment);
    std::vector<Index> joined;
    append_at_switch(x, y, segment, joined);
    if (is_horizontal(segment))
        append_at_switch(x + 1, y, segment, joined);
    else
        append_at_switch(x, y + 1, segment, joined);
    return joined;
}

} // namespace fitter
