// The cookie log: named 64-bit values that tools record during a run, each with the profile bin in which it was
// recorded. Comparing the logs of two runs shows where they began to differ.
#ifndef GEN_COOKIE_SYS_H
#define GEN_COOKIE_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

/// Records a value with the path of gen_profile_bin_get_current_bin(). The path is empty if that is null, on a thread
/// that doesn't own the bins, and after a fault in a customer build.
///
/// @param description  name of the value, copied; not null
/// @param hash         the value
///
/// Any thread may call it at any time. GEN_PROFILE_BINS::finalize() writes all cookies to "cookie_db_<name>.log" in the
/// current directory if the configuration key `gen_print_cookie_log` is on; a cookie that is logged while it runs may
/// be missing there and is in the file of the next finalize(). Successive cookies with the same path are sorted by
/// description, then by value. A file that can't be opened is skipped silently; one that can't be written to its end is
/// named by an information message.
extern "C" GEN_API void gen_log_cookie(char const *description, std::uint64_t hash);

#endif
