// The device: a square of cluster sites with pads around it, and channels of wire between them.
//
// Cluster sites are at columns and rows 0 to size - 1. Between them, and around them, run channels,
// which consist of segments with the length of one site. Segment h(x,y) runs below site (x,y),
// v(x,y) on its left; h(x,size) runs above the top row. At each corner of a site a switch joins the
// up to four segments that meet there, any track to any track. A block reaches every track of the
// segments next to it: four segments for a cluster, one for a pad. The channel width is the number of
// tracks of a channel.
//
//            h(0,2)   h(1,2)
//           +-------+-------+
//     v(0,1)|  0,1  |  1,1  |v(2,1)
//           +-------+-------+
//     v(0,0)|  0,0  |  1,0  |v(2,0)
//           +-------+-------+
//            h(0,0)   h(1,0)
#ifndef FITTER_DEVICE_H
#define FITTER_DEVICE_H

#include "pack.h"

#include <string>
#include <vector>

namespace fitter {

/// Number of pads that share one place at the edge.
constexpr int PADS_PER_PLACE = 4;
/// Number of columns, and of rows, of the largest device.
constexpr int LARGEST_DEVICE = 500;

struct Point
{
    int x = 0;
    int y = 0;
};

class Device
{
public:
    explicit Device(int size) : m_size(size) {}

    /// The smallest device that has enough pads for a packed design and on which the design leaves a tenth of the
    /// cluster sites free. Throws an Error if there is no such device.
    static Device for_packing(Packing const &packing);

    int size() const { return m_size; }

    // Sites: clusters row by row, then pads counter-clockwise from the lower left corner.

    Index cluster_sites() const { return static_cast<Index>(m_size * m_size); }
    Index pad_sites() const { return static_cast<Index>(4 * m_size * PADS_PER_PLACE); }
    Index sites() const { return cluster_sites() + pad_sites(); }
    bool is_pad_site(Index site) const { return site >= cluster_sites(); }

    Index cluster_site(int x, int y) const { return static_cast<Index>(y * m_size + x); }
    /// `place` from 0 to 4 * size - 1 along the edge, `slot` from 0 to PADS_PER_PLACE - 1.
    Index pad_site(int place, int slot) const
    {
        return cluster_sites() + static_cast<Index>(place * PADS_PER_PLACE + slot);
    }
    int pad_place(Index site) const { return static_cast<int>(site - cluster_sites()) / PADS_PER_PLACE; }
    int pad_slot(Index site) const { return static_cast<int>(site - cluster_sites()) % PADS_PER_PLACE; }

    /// Column and row. A pad has -1 or size in one of the two.
    Point position(Index site) const;

    // Segments: the horizontal ones row by row, then the vertical ones.

    Index segments() const { return 2 * horizontal_segments(); }
    Index horizontal(int x, int y) const { return static_cast<Index>(y * m_size + x); }
    Index vertical(int x, int y) const { return horizontal_segments() + static_cast<Index>(y * (m_size + 1) + x); }
    bool is_horizontal(Index segment) const { return segment < horizontal_segments(); }
    /// The x and y of h(x,y) or v(x,y).
    Point segment_place(Index segment) const;
    /// "h(3,0)"
    std::string segment_name(Index segment) const;

    /// The segments that a block on this site reaches.
    std::vector<Index> segments_at_site(Index site) const;
    /// The segments that meet this one at its two switches.
    std::vector<Index> segments_joined(Index segment) const;

private:
    Index horizontal_segments() const { return static_cast<Index>(m_size * (m_size + 1)); }
    void append_at_switch(int x, int y, Index except, std::vector<Index> &out) const;

    int m_size;
};

} // namespace fitter

#endif
