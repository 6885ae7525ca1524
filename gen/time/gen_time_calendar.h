// The fixed rendering of a calendar time, shared by the clocks and the file streams.
#ifndef GEN_TIME_CALENDAR_H
#define GEN_TIME_CALENDAR_H

#include <cstdint>
#include <string>

/// A number of seconds since the Unix epoch, rendered in local time as C's asctime does, including the line end:
/// "Sat Nov 14 19:03:47 2026\n". Empty if the time can't be converted. Any thread may call it.
std::string gen_asctime_text(std::int64_t seconds);

#endif
