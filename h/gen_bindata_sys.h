// A histogram of fixed range: bins of equal width over a closed interval. One thread at a time uses an object and those
// that it shares its counts with.
#ifndef GEN_BINDATA_SYS_H
#define GEN_BINDATA_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <memory>

/// Counts values in bins.
///
///     GEN_BINDATA(0, 10, 5):    0 -> bin 0    1.99 -> bin 0    2 -> bin 1    10 -> bin 4
///
/// A broken condition is an internal error in every kind of build.
class GEN_API GEN_BINDATA
{
public:
    /// An empty histogram over [low, high].
    ///
    /// @param low, high  the bounds; "m_high > m_low" is required
    /// @param num_bins   number of bins; with 0 nothing can be counted
    GEN_BINDATA(double low, double high, std::uint64_t num_bins);

    /// Checks that neighbouring bins meet and that the counts add up to size(), which is an internal error otherwise.
    ~GEN_BINDATA();

    GEN_BINDATA(GEN_BINDATA const &) = delete;

    /// Takes over everything from `other`; from then on both count into the same bins, while each has its own size().
    GEN_BINDATA &operator=(GEN_BINDATA const &other) = default;

    /// Counts one value, which must lie in [low, high].
    void add_item(double item);

    /// The bin of a value, which must lie in [low, high]; high itself is in the last bin. Counts nothing. With 0 bins
    /// the greatest number, which is no bin.
    std::uint64_t bin(double item) const;

    /// Lower and upper bound of a bin; any number gives an answer.
    double lowbound(std::uint64_t bin) const;
    double highbound(std::uint64_t bin) const;

    /// Values counted in a bin, which must be less than num_bins().
    std::uint64_t item_count(std::uint64_t bin) const;

    std::uint64_t num_bins() const;

    /// Values counted by this object.
    std::uint64_t size() const;

private:
    std::shared_ptr<std::uint32_t[]> m_counts; // an assigned object has the same ones
    std::uint64_t m_num_bins;
    std::uint64_t m_num_items = 0;
    double m_low;
    double m_high;
    double m_bin_width;
};

#endif
