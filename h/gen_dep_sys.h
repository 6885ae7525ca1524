// Dependencies on memory. Code that uses the memory at an address registers a dependency with a callback, which is
// called before that memory is released. Addresses are only compared: the memory is never read.
//
//     GEN_DEP::UID uid = GEN_DEP::create_dependency(netlist, [&](GEN_DEP::UID id) {   // the dependant
//         view.forget_netlist();
//         GEN_DEP::remove_dependency(id);
//     });
//
//     GEN_DEP::memory_is_being_invalidated(netlist);                                  // the owner
//     if (GEN_DEP::memory_is_now_safe_to_invalidate(netlist))
//         delete netlist;
//
// There is one registry in a process. The first call creates it, and exit handlers release it. It has no lock: if
// several threads use it, they have to serialise the calls of all four functions themselves.
//
// A callback may call the functions of the registry. A pass (one call of memory_is_being_invalidated()) works on a copy
// of the dependencies that were registered when it began:
//
//     a callback                                     effect in this pass
//     removes its own dependency                     its captures stay valid until the pass ends
//     removes another one, on any address            the other callback is still called if it belongs to the pass; its
//                                                    id is gone, and removing it again is an internal error
//     creates one on the same address                its callback is not called; the memory is not safe until it is
//                                                    removed
//     begins another pass, on any address            that pass works on its own copy
//     throws                                         the callbacks after it are not called; the registry is unchanged
//
// After the exit handlers have released the registry, create_dependency() returns 0,
// memory_is_now_safe_to_invalidate() returns true, and the other two functions do nothing.
#ifndef GEN_DEP_SYS_H
#define GEN_DEP_SYS_H

#include "zel_export_sys.h"

#include <functional>

namespace GEN_DEP {

/// Id of a dependency. Ids count up from 1 and are never reused; 0 means no dependency.
using UID = unsigned int;

/// Registers a dependency.
///
/// @param memory    the address; null is an ordinary address
/// @param callback  called with the id by memory_is_being_invalidated(); copied. An empty one is accepted and throws
///                  std::bad_function_call when it is called
///
/// @return the id. The largest UID is never used: reaching it is the internal error
///         "my_uid< std::numeric_limits<UID>::max()"
///
/// The ids of an address are stored until the process ends, so that each call makes all later passes and tests of that
/// address a little slower.
GEN_API unsigned int create_dependency(void const *memory, std::function<void(unsigned int)> const &callback);

/// Removes a dependency and its copy of the callback.
///
/// @param uid  its id; 0 does nothing. An id that isn't registered is the internal error "dependency_exists( uid )"
GEN_API void remove_dependency(unsigned int uid);

/// Calls the callbacks of all dependencies on an address, in the order of their registration. The dependencies stay
/// registered until they are removed. An exception of a callback is passed on.
GEN_API void memory_is_being_invalidated(void const *memory);

/// Whether there is no dependency on an address. Calls no callback and changes nothing, but copies the callbacks of the
/// address.
GEN_API bool memory_is_now_safe_to_invalidate(void const *memory);

} // namespace GEN_DEP

#endif
