// The fixed rendering of a calendar time, shared by the clocks and the file streams.
#ifndef GEN_CALENDAR_H
#define GEN_CALENDAR_H

#include <cstdint>
#include <string>

/// A second since the Unix epoch in local time, in the form of C's asctime, line end included:
/// "Sat Nov 14 19:03:47 2026\n". Empty if the time can't be converted. It uses no buffer of the runtime library.
std::string gen_asctime_text(std::int64_t seconds);

#endif
