#include "gen/path/gen_path_state.h"

#include "gen/base/gen_static_order.h"

namespace {

[[gnu::init_priority(GEN_STATIC_ORDER_PROJECT_TEXTS)]] GEN_PROJECT_TEXTS l_texts;
[[gnu::init_priority(GEN_STATIC_ORDER_PATH_STATE)]] GEN_STATIC_STATE<GEN_PATH_STATE> l_state(l_texts);

} // namespace

GEN_PATH_STATE *gen_path_state()
{
    return GEN_STATIC_STATE<GEN_PATH_STATE>::get();
}
