#ifndef MEM_TRACKING_H
#define MEM_TRACKING_H

#include "mem_sys.h"

/// Whether a granularity, one bit, is on. Doesn't read the key: as long as nobody has asked, nothing is. Any thread.
bool mem_tracking_has(MEM_TRACKING_GRANULARITY granularity);

#endif
