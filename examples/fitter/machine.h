// The facts of the machine that the tool prints.
#ifndef FITTER_MACHINE_H
#define FITTER_MACHINE_H

#include <string>

namespace fitter {

/// "8 processors, 4 cores, 15.61 GiB memory, Debian GNU/Linux 12, host build7". A fact that the system doesn't report
/// is left out.
std::string machine_facts();

} // namespace fitter

#endif
