#include "gen/base/gen_static_order.h"

#include "mem_sys.h"

namespace {

[[gnu::init_priority(GEN_STATIC_ORDER_MEM_INITIALIZER)]] MEM_INITIALIZER l_mem_initializer("GEN");

} // namespace
