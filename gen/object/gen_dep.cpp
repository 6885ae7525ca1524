#include "gen_dep_sys.h"

#include "gen/object/gen_dep_registry.h"

#include <cstdlib>

namespace {

// Whether the registry was ever built; stays true after its release at exit.
bool l_is_built = false;

// Owned; null before the first use and after the release at exit.
GEN_DEP_REGISTRY *l_registry = nullptr;

// Destructors of objects that the callbacks hold may call back; they find no registry then.
void release_registry()
{
    delete std::exchange(l_registry, nullptr);
}

GEN_DEP_REGISTRY *registry()
{
    if (!l_is_built) {
        l_registry = new GEN_DEP_REGISTRY;
        l_is_built = true;
        std::atexit(release_registry);
    }
    return l_registry;
}

} // namespace

unsigned int GEN_DEP::create_dependency(void const *memory, std::function<void(unsigned int)> const &callback)
{
    GEN_DEP_REGISTRY *const dependencies = registry();
    return dependencies == nullptr ? 0 : dependencies->create_dependency(memory, callback);
}

void GEN_DEP::remove_dependency(unsigned int uid)
{
    if (GEN_DEP_REGISTRY *const dependencies = registry())
        dependencies->remove_dependency(uid);
}

void GEN_DEP::memory_is_being_invalidated(void const *memory)
{
    if (GEN_DEP_REGISTRY const *const dependencies = registry())
        dependencies->memory_is_being_invalidated(memory);
}

bool GEN_DEP::memory_is_now_safe_to_invalidate(void const *memory)
{
    GEN_DEP_REGISTRY const *const dependencies = registry();
    return dependencies == nullptr || dependencies->memory_is_now_safe_to_invalidate(memory);
}
