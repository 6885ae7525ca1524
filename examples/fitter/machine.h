// What the tool tells of the machine that it runs on.
#ifndef FITTER_MACHINE_H
#define FITTER_MACHINE_H

#include <string>

namespace fitter {

/// "8 processors, 4 cores, 15.61 GiB memory, Debian GNU/Linux 12, host build7"; what the system doesn't tell is left
/// out.
std::string machine_facts();

} // namespace fitter

#endif
