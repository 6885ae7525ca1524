// A pointer to a netlist that becomes null when the netlist is destroyed.
#ifndef FITTER_NETLIST_LINK_H
#define FITTER_NETLIST_LINK_H

#include "gen_dep_sys.h"
#include "netlist.h"

namespace fitter {

/// Registers a dependency on the netlist's address. The destructor of the netlist calls its callback, which makes the
/// link null.
class NetlistLink
{
public:
    NetlistLink() = default;
    explicit NetlistLink(Netlist const &netlist) { hold(&netlist); }
    NetlistLink(NetlistLink const &other) { hold(other.m_netlist); }
    ~NetlistLink() { let_go(); }

    NetlistLink &operator=(NetlistLink const &other)
    {
        if (this != &other) {
            let_go();
            hold(other.m_netlist);
        }
        return *this;
    }

    /// The netlist; null if there was none or if it was destroyed.
    Netlist const *get() const { return m_netlist; }

private:
    void hold(Netlist const *netlist)
    {
        m_netlist = netlist;
        if (netlist != nullptr)
            m_dependency = GEN_DEP::create_dependency(netlist, [this](GEN_DEP::UID) { let_go(); });
    }

    void let_go()
    {
        GEN_DEP::remove_dependency(m_dependency);
        m_dependency = 0;
        m_netlist = nullptr;
    }

    Netlist const *m_netlist = nullptr;
    GEN_DEP::UID m_dependency = 0; // 0: none
};

} // namespace fitter

#endif
