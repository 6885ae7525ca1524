// The modules of this process: the executable and the libraries that are loaded. No function loads a library, and
// sys_keep_loaded() alone takes a reference to one. Any thread may call any of them; the last four take a lock of the
// loader, so no thread may call them while it holds a lock that a static object's constructor waits for. With
// glibc 2.35 or newer sys_find_module() takes none.
#ifndef SYS_MODULE_H
#define SYS_MODULE_H

#include <cstdint>
#include <string>
#include <string_view>

/// The part of a path after its last "/".
std::string_view sys_file_name(std::string_view path);

/// Whether a text is a name followed by a version, which is a point and then one or more digits and points.
///
///     "libx.so", "libx.so.1.2" -> true    "libx.so", "libx.so" -> false    "libx.so", "libx.so.old" -> false
bool sys_is_version_of(std::string_view name, std::string_view text);

/// Whether `asked`, a name or a path, means the library that the loader of Linux has loaded from the path `loaded`.
/// Links are not resolved. A name without a "/" is compared with the file name alone, and a name that ends in ".so"
/// also means that name followed by a version.
///
///     asked      loaded                asked            loaded
///     libx.so    /a/libx.so    yes     libx.so          /a/libx.so.1.0    yes
///     libx       /a/libx.so    no      libx.so.1        /a/libx.so.1.0    no
bool sys_library_names(std::string_view asked, std::string_view loaded);

/// Whether a library of that name is in the process.
///
/// @param name  file name, or a path, which means the library as loaded from there; not null. The empty name means no
///              library.
///
/// On Linux sys_library_names() compares. A name with a version also means the target of a link with a part of that
/// version: "libx.so.1.0" is loaded if the loader has loaded "libx.so.1", which is a link to it. On Windows names are
/// compared without regard to case, both slashes separate, and ".dll" may be left out.
bool sys_is_library_loaded(char const *name);

/// The path from which that library was loaded, as the loader has it: links are not resolved. False, and the path left
/// alone, if it is not loaded. On Windows a path is cut at 260 characters.
bool sys_find_library(char const *name, std::string &path);

/// The module that contains an address.
struct SYS_MODULE
{
    /// File name, with its terminator; cut if it is longer than any that the file systems have.
    char name[260];
    /// Where the module begins in memory.
    std::uintptr_t begin;
};

/// False, and the module left alone, if the address is in no module. Allocates nothing.
bool sys_find_module(std::uintptr_t address, SYS_MODULE &module);

/// Keeps the library that asks loaded until the process ends, with the libraries that it needs. Any number of times;
/// only the first success costs more than a comparison. May allocate, but not through operator new.
///
/// @return false if the system refuses. An executable is always kept.
bool sys_keep_loaded();

#endif
