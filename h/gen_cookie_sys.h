// The cookie log: named 64-bit values that tools put on record during a run, with their place in the flow.
#ifndef GEN_COOKIE_SYS_H
#define GEN_COOKIE_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

/// Puts a value on record, under the path of the profile bin that is current among the processed events; the path is
/// empty without one, and on a thread that doesn't own the bins.
///
/// @param description  what the value is; not null
/// @param hash         the value, stored as it is
///
/// Any thread, at any time. GEN_PROFILE_BINS::finalize() writes all cookies to "cookie_db_<name>.log" in the current
/// directory if the configuration key `gen_print_cookie_log` is on; no other thread may log while it runs. Successive
/// cookies of one path are sorted by description.
extern "C" GEN_API void gen_log_cookie(char const *description, std::uint64_t hash);

#endif
