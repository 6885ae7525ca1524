#include "gen/profile/gen_profile_bins_state.h"

#include "err_sys.h"
#include "gen_flow_sys.h"

GEN_PB_KEPT<GEN_PB_STATE> gen_pb_kept_state;

void gen_pb_disable()
{
    gen_pb().run.thread.store(GEN_PB_DISABLED, std::memory_order_relaxed);
}

void gen_pb_fail(char const *text, char const *file, int line)
{
    if (!gen_debug_is_customer_build())
        err_report_internal_error(text, "GEN", file, line);
    gen_pb_disable();
}
