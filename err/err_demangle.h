// Names of functions.
#ifndef ERR_DEMANGLE_H
#define ERR_DEMANGLE_H

#include <string>

/// The name that a function has in the source, from its name in the linker. Any other text is returned unchanged.
std::string err_demangled(std::string const &name);

#endif
