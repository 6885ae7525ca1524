#include "gen_bindata_sys.h"

#include "gen/base/gen_assert.h"

namespace {

void require_bin(std::uint64_t bin, std::uint64_t num_bins)
{
    GEN_ASSERT(bin < num_bins, "0 <= bin && bin < m_num_bins");
}

} // namespace

GEN_BINDATA::GEN_BINDATA(double low, double high, std::uint64_t num_bins)
    : m_num_bins(num_bins), m_low(low), m_high(high),
      m_bin_width((high - low) / static_cast<double>(num_bins)) // not finite for 0 bins
{
    GEN_ASSERT(m_high > m_low, "m_high > m_low");
    m_counts = std::shared_ptr<std::uint32_t[]>(new std::uint32_t[num_bins]());
}

GEN_BINDATA::~GEN_BINDATA()
{
    std::uint64_t total = 0;
    for (std::uint64_t i = 0; i < m_num_bins; ++i) {
        total += m_counts[static_cast<std::ptrdiff_t>(i)];
        GEN_ASSERT(lowbound(i + 1) == highbound(i), "lowbound(i+1) == highbound(i)");
    }
    GEN_ASSERT(total == m_num_items, "total == m_num_items");
}

void GEN_BINDATA::add_item(double item)
{
    std::uint64_t const index = bin(item);
    require_bin(index, m_num_bins);
    ++m_counts[static_cast<std::ptrdiff_t>(index)];
    ++m_num_items;
}

std::uint64_t GEN_BINDATA::bin(double item) const
{
    GEN_ASSERT(item >= m_low && item <= m_high, "item >= m_low && item <= m_high");
    double const position = (item - m_low) / m_bin_width;
    // The upper bound belongs to the last bin. If the range is too wide or too narrow for its bins, a position can be
    // infinite or not a number; that belongs to the last bin, too.
    return position < static_cast<double>(m_num_bins) ? static_cast<std::uint64_t>(position) : m_num_bins - 1;
}

double GEN_BINDATA::lowbound(std::uint64_t bin) const
{
    return static_cast<double>(bin) * m_bin_width + m_low;
}

double GEN_BINDATA::highbound(std::uint64_t bin) const
{
    return static_cast<double>(bin + 1) * m_bin_width + m_low;
}

std::uint64_t GEN_BINDATA::item_count(std::uint64_t bin) const
{
    require_bin(bin, m_num_bins);
    return m_counts[static_cast<std::ptrdiff_t>(bin)];
}

std::uint64_t GEN_BINDATA::num_bins() const
{
    return m_num_bins;
}

std::uint64_t GEN_BINDATA::size() const
{
    return m_num_items;
}
