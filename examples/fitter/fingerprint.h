// A number by which two runs can be compared stage by stage.
#ifndef FITTER_FINGERPRINT_H
#define FITTER_FINGERPRINT_H

#include "report.h"

#include <cstdint>

namespace fitter {

/// A hash of the packing, the placement and the routing as they are; the same for the same fit on every platform.
std::uint64_t fingerprint(Fit const &fit);

/// Puts it on record as a cookie of the stage that is open.
void log_fingerprint(Fit const &fit);

} // namespace fitter

#endif
