// Modes of a process that only its top knows, and helpers for debugging. The flags are set while the process starts,
// before other threads ask; they have no lock.
#ifndef GEN_FLOW_SYS_H
#define GEN_FLOW_SYS_H

#include "zel_export_sys.h"

/// The value last given to gen_set_btcl_load(); false at start.
GEN_API bool gen_is_btcl_load();
GEN_API void gen_set_btcl_load(bool value);

/// Gives the bridge value, once: a second call without gen_unset_kmap_legacy_bridge() between is an internal error,
/// also with the same value.
GEN_API void gen_set_kmap_legacy_bridge(bool value);

/// Takes the bridge value back, if one was given.
GEN_API void gen_unset_kmap_legacy_bridge();

/// The opposite of the bridge value. Asking while none is given is an internal error.
GEN_API bool gen_is_kalvern_syn();

/// Whether gen_set_utst_mode() has been called; there is no way back.
GEN_API bool gen_is_utst_mode();
GEN_API void gen_set_utst_mode();

/// Breaks into the debugger if the configuration key `dont_catch_all_exceptions` is on; otherwise does nothing.
///
/// @param swallow_exceptions  whether an exception out of the break is dropped; if not, it goes on to the caller
///
/// Without a debugger attached the break has no effect.
GEN_API void gen_debug_break(bool swallow_exceptions);

/// Whether zel_ver is the build of a release branch. Any thread may ask.
GEN_API bool gen_debug_is_customer_build();

/// Passes a text to the platform's debug channel as it is: OutputDebugString on Windows; elsewhere standard error
/// while a debugger is attached, and nowhere otherwise.
///
/// @param text  not null
GEN_API void gen_debug_output_string(char const *text);

#endif
