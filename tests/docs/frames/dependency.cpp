#include "expect.h"
#include "gen_dep_sys.h"

namespace {

class Placement
{
public:
    explicit Placement(int const *netlist) : m_netlist(netlist)
    {
        // example
    }
    bool has_netlist() const { return m_netlist != nullptr; }

private:
    int const *m_netlist;
};

} // namespace

int main()
{
    int const netlist = 1;
    Placement const placement(&netlist);
    expect(placement.has_netlist() && !GEN_DEP::memory_is_now_safe_to_invalidate(&netlist),
           "the placement depends on it");
    GEN_DEP::memory_is_being_invalidated(&netlist);
    expect(!placement.has_netlist() && GEN_DEP::memory_is_now_safe_to_invalidate(&netlist), "it has let go");
}
