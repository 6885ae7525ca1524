#include "fingerprint.h"

#include "gen_cookie_sys.h"
#include "stage.h"

namespace fitter {
namespace {

// The hash function FNV-1a over numbers, byte by byte, the least significant byte first.
class Hash
{
public:
    void add(std::uint64_t number)
    {
        for (int byte = 0; byte < 8; ++byte, number >>= 8)
            m_value = (m_value ^ (number & 0xff)) * 0x100000001b3u;
    }

    // The length is hashed too, so that [1] [2 3] and [1 2] [3] differ.
    void add(std::vector<Index> const &numbers)
    {
        add(numbers.size());
        for (Index const number : numbers)
            add(number);
    }

    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325u;
};

} // namespace

std::uint64_t fingerprint(Fit const &fit)
{
    Hash hash;
    for (LogicElement const &element : fit.packing.elements) {
        hash.add(element.lut);
        hash.add(element.flop);
    }
    for (Cluster const &cluster : fit.packing.clusters)
        hash.add(cluster.elements);
    hash.add(fit.placement.site_of_block);
    for (Tree const &tree : fit.routing.trees)
        for (Branch const &branch : tree) {
            hash.add(branch.segment);
            hash.add(branch.parent);
        }
    return hash.value();
}

void log_fingerprint(Fit const &fit)
{
    VisibleWork const work("Fingerprint");
    gen_log_cookie("packing, placement and routing", fingerprint(fit));
}

} // namespace fitter
