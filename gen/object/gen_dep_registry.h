// The registry of dependencies on memory. Only the map of dependencies decides which ones are alive: the ids of an
// address are only appended to, and readers skip those that were removed.
#ifndef GEN_DEP_REGISTRY_H
#define GEN_DEP_REGISTRY_H

#include "gen_dep_sys.h"

#include "gen/base/gen_assert.h"

#include <cstddef>
#include <limits>
#include <unordered_map>
#include <utility>
#include <vector>

class GEN_DEP_REGISTRY
{
public:
    using UID = GEN_DEP::UID;
    using Callback = std::function<void(unsigned int)>;

    /// @param next_uid  the first id to be given out
    explicit GEN_DEP_REGISTRY(UID next_uid = 1) : m_next_uid(next_uid) {}

    UID create_dependency(void const *memory, Callback const &callback)
    {
        // Copied before anything is changed: copying the callback may throw, and may call back.
        Dependency dependency{memory, callback, 0};
        // Checked before the increment: an exit handler that calls after this error gets the error again, never id 0.
        GEN_ASSERT(m_next_uid < std::numeric_limits<UID>::max(), "my_uid< std::numeric_limits<UID>::max()");
        UID const my_uid = m_next_uid++;
        // In this order a lack of memory leaves at most an id without a dependency, which readers skip.
        m_uids_of_memory[memory].push_back(my_uid);
        dependency.uid = my_uid;
        bool const is_new = m_dependencies.try_emplace(my_uid, std::move(dependency)).second;
        GEN_ASSERT(is_new, "!dependency_exists( my_uid )");
        return my_uid;
    }

    void remove_dependency(UID uid)
    {
        if (uid == 0)
            return;
        auto const dependency = m_dependencies.find(uid);
        GEN_ASSERT(dependency != m_dependencies.end(), "dependency_exists( uid )");
        // Taken out of the map before it is destroyed: destructors of objects that the callback holds may call back.
        auto const removed = m_dependencies.extract(dependency);
    }

    void memory_is_being_invalidated(void const *memory) const
    {
        for (Dependency const &dependency : live_dependencies(memory))
            dependency.callback(dependency.uid);
    }

    bool memory_is_now_safe_to_invalidate(void const *memory) const { return live_dependencies(memory).empty(); }

private:
    struct Dependency
    {
        void const *memory;
        Callback callback;
        UID uid;
    };

    // Copies, in the order of creation, since callbacks may change the registry.
    std::vector<Dependency> live_dependencies(void const *memory) const
    {
        std::vector<Dependency> live;
        auto const entry = m_uids_of_memory.find(memory);
        if (entry == m_uids_of_memory.end())
            return live;
        // By index, up to the present count: copying a callback may register further dependencies.
        std::vector<UID> const &uids = entry->second;
        for (std::size_t i = 0, count = uids.size(); i < count; ++i)
            if (auto const dependency = m_dependencies.find(uids[i]); dependency != m_dependencies.end())
                live.push_back(dependency->second);
        return live;
    }

    UID m_next_uid;
    std::unordered_map<UID, Dependency> m_dependencies;
    std::unordered_map<void const *, std::vector<UID>> m_uids_of_memory;
};

#endif
