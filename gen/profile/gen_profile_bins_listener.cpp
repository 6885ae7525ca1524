#include "gen/profile/gen_profile_bins_listener.h"

#include "gen/profile/gen_profile_bins_state.h"
#include "mem_sys.h"

#include <algorithm>

namespace {

void add_once(std::vector<GEN_PB_LISTENER *> &listeners, GEN_PB_LISTENER &listener)
{
    if (std::find(listeners.begin(), listeners.end(), &listener) != listeners.end())
        return;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    listeners.push_back(&listener);
}

template <typename Call>
void notify_at_end(Call call)
{
    // A copy: a listener may remove itself.
    std::vector<GEN_PB_LISTENER *> const listeners = gen_pb().listeners.at_end;
    std::for_each(listeners.rbegin(), listeners.rend(), call);
}

} // namespace

void gen_pb_listen_to_bins(GEN_PB_LISTENER &listener)
{
    add_once(gen_pb().listeners.at_bins, listener);
}

void gen_pb_ignore_bins(GEN_PB_LISTENER &listener)
{
    std::vector<GEN_PB_LISTENER *> &listeners = gen_pb().listeners.at_bins;
    listeners.erase(std::remove(listeners.begin(), listeners.end(), &listener), listeners.end());
}

void gen_pb_listen_to_end(GEN_PB_LISTENER &listener)
{
    add_once(gen_pb().listeners.at_end, listener);
}

void gen_pb_notify_complete(GEN_PB_IMPL const &root, char const *name)
{
    notify_at_end([&root, name](GEN_PB_LISTENER *each) { each->on_complete(root, name); });
}

void gen_pb_notify_end(char const *name)
{
    notify_at_end([name](GEN_PB_LISTENER *each) { each->on_end(name); });
}
