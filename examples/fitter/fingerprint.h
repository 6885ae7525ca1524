// A number by which two runs can be compared stage by stage.
#ifndef FITTER_FINGERPRINT_H
#define FITTER_FINGERPRINT_H

#include "report.h"

#include <cstdint>

namespace fitter {

/// A hash of the packing, the placement and the routing so far; the same for the same fit on every platform.
std::uint64_t fingerprint(Fit const &fit);

/// Records the fingerprint as a cookie of the open stage.
void log_fingerprint(Fit const &fit);

} // namespace fitter

#endif
