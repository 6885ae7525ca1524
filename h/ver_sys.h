// Version and product facts of the suite, fixed when this library is built. Only this library differs
// between a development build and a customer build. Any thread may call any function, except for
// ver_set_module_path().
#ifndef VER_SYS_H
#define VER_SYS_H

#include "zel_export_sys.h"

#include <string>

/// Passes the directory of the process's module, for a version library that reads facts from files of the installation.
/// This one does not: its facts are fixed when it is built, and the directory is not kept.
///
/// @param directory  the directory; may be null
VER_API void ver_set_module_path(char const *directory);

/// Base name of the suite's main executable, in lower case and without extension. Static text.
VER_API char const *ver_get_brisel_product_filename();

/// The suite's copyright line, without a line end.
VER_API std::string ver_get_copyright_string();

/// The version shown to users, for instance "1.0.0". Static text.
VER_API char const *ver_get_version_string();

/// True in a build of a release branch: a customer build.
VER_API bool ver_is_release_branch();

#endif
