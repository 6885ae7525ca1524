// Modes of a process, which its main program sets, and helpers for debugging. The flags have no lock: set them at the
// start of the process, before other threads read them.
#ifndef GEN_FLOW_SYS_H
#define GEN_FLOW_SYS_H

#include "zel_export_sys.h"

/// The value last given to gen_set_btcl_load(); false at start.
GEN_API bool gen_is_btcl_load();
GEN_API void gen_set_btcl_load(bool value);

/// Sets the bridge value. A second call without gen_unset_kmap_legacy_bridge() between, even with the same value, is
/// the internal error "kmap_legacy_bridge cannot be set more than once. (Unless it has been unset.)".
GEN_API void gen_set_kmap_legacy_bridge(bool value);

/// Removes the bridge value; does nothing if none is set.
GEN_API void gen_unset_kmap_legacy_bridge();

/// The negated bridge value. If none is set, it is the internal error "kmap_legacy_bridge has not been set with
/// gen_set_kmap_legacy_bridge()!".
GEN_API bool gen_is_kalvern_syn();

/// Whether gen_set_utst_mode() was called; the mode can't be reset.
GEN_API bool gen_is_utst_mode();
GEN_API void gen_set_utst_mode();

/// Stops the process in the attached debugger if the configuration key `dont_catch_all_exceptions` is on. Does nothing
/// if the key is off or no debugger is attached.
///
/// @param swallow_exceptions  whether an exception that the debugger raises is caught; if not, the caller gets it
GEN_API void gen_debug_break(bool swallow_exceptions);

/// Whether zel_ver was built for a release branch (a customer build). Any thread may call it.
GEN_API bool gen_debug_is_customer_build();

/// Writes a text, unchanged, to the platform's debug channel: OutputDebugString() on Windows; elsewhere the standard
/// error stream if a debugger is attached, otherwise nothing.
///
/// @param text  not null
GEN_API void gen_debug_output_string(char const *text);

#endif
