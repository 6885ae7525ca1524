#ifndef ERR_DEMANGLE_H
#define ERR_DEMANGLE_H

#include <string>

/// A linker's name as the source has it; any other text stays.
std::string err_demangled(std::string const &name);

#endif
