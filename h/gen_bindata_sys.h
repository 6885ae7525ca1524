// A histogram with bins of equal width over a closed interval. An object, together with the objects that share its
// counts, belongs to one thread at a time.
#ifndef GEN_BINDATA_SYS_H
#define GEN_BINDATA_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <memory>

/// Counts values in bins.
///
///     GEN_BINDATA(0, 10, 5):    0 -> bin 0    1.99 -> bin 0    2 -> bin 1    10 -> bin 4
///
/// Conditions are checked in every kind of build; a failed one is an internal error whose text is the condition.
class GEN_API GEN_BINDATA
{
public:
    /// An empty histogram over [low, high].
    ///
    /// @param low, high  the bounds; condition "m_high > m_low"
    /// @param num_bins   number of bins; with 0 no value can be counted
    GEN_BINDATA(double low, double high, std::uint64_t num_bins);

    /// Checks that neighbouring bins touch ("lowbound(i+1) == highbound(i)") and that the counts add up to size()
    /// ("total == m_num_items").
    ~GEN_BINDATA();

    GEN_BINDATA(GEN_BINDATA const &) = delete;

    /// Copies bounds and size() and shares the counts: afterwards both objects count into the same bins, while each has
    /// its own size().
    GEN_BINDATA &operator=(GEN_BINDATA const &other) = default;

    /// Counts one value; condition "item >= m_low && item <= m_high". With 0 bins it is the internal error
    /// "0 <= bin && bin < m_num_bins".
    void add_item(double item);

    /// The bin of a value, without counting it; condition "item >= m_low && item <= m_high". The value `high` is in the
    /// last bin. With 0 bins the result is the largest std::uint64_t, which is no bin.
    std::uint64_t bin(double item) const;

    /// Lower and upper bound of a bin. The bin is not checked: beyond num_bins() the bounds continue.
    double lowbound(std::uint64_t bin) const;
    double highbound(std::uint64_t bin) const;

    /// The number of values counted in a bin; condition "0 <= bin && bin < m_num_bins".
    std::uint64_t item_count(std::uint64_t bin) const;

    std::uint64_t num_bins() const;

    /// The number of values counted by this object.
    std::uint64_t size() const;

private:
    std::shared_ptr<std::uint32_t[]> m_counts; // shared with objects assigned from this one
    std::uint64_t m_num_bins;
    std::uint64_t m_num_items = 0;
    double m_low;
    double m_high;
    double m_bin_width;
};

#endif
