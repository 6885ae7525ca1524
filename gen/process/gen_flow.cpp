#include "gen_flow_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os.h"
#include "mem_sys.h"
#include "thr_sys.h"
#include "ver_sys.h"

namespace {

// Set when the process starts, before other threads read them.
bool l_btcl_load = false;
bool l_kmap_legacy_bridge_set = false; // whether l_kmap_legacy_bridge has a value
bool l_kmap_legacy_bridge = false;
bool l_utst_mode = false;

} // namespace

bool gen_is_btcl_load()
{
    return l_btcl_load;
}

void gen_set_btcl_load(bool value)
{
    l_btcl_load = value;
}

void gen_set_kmap_legacy_bridge(bool value)
{
    GEN_ASSERT(!l_kmap_legacy_bridge_set,
               "kmap_legacy_bridge cannot be set more than once. (Unless it has been unset.)");
    l_kmap_legacy_bridge_set = true;
    l_kmap_legacy_bridge = value;
}

void gen_unset_kmap_legacy_bridge()
{
    l_kmap_legacy_bridge_set = false;
    l_kmap_legacy_bridge = false;
}

bool gen_is_kalvern_syn()
{
    GEN_ASSERT(l_kmap_legacy_bridge_set, "kmap_legacy_bridge has not been set with gen_set_kmap_legacy_bridge()!");
    return !l_kmap_legacy_bridge;
}

bool gen_is_utst_mode()
{
    return l_utst_mode;
}

void gen_set_utst_mode()
{
    l_utst_mode = true;
}

void gen_debug_break(bool swallow_exceptions)
{
    if (!mem_cfg_is_on("dont_catch_all_exceptions", false))
        return;
    if (!swallow_exceptions) {
        thr_debug_break();
        return;
    }
    try {
        thr_debug_break();
    } catch (...) {
    }
}

bool gen_debug_is_customer_build()
{
    return ver_is_release_branch();
}

void gen_debug_output_string(char const *text)
{
    gen_os_debug_output(text);
}
