// Dependencies on memory. Code that holds something which depends on the memory at an address registers a dependency
// and is called back before that memory goes away. Addresses are compared only: the memory is never read.
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
// There is one registry in a process, made by the first call and released at exit. It has no lock and belongs to one
// thread at a time: threads that share it have to serialise all four functions themselves.
//
// The registry may be called from a callback. A pass of callbacks runs over a copy of what was registered when it
// began:
//
//     what a callback does                           what follows in this pass
//     removes its own dependency                     nothing more: its captures live on until the pass ends
//     removes another one, on any address            the other's callback still runs if it was to, with an id that is
//                                                    gone: to remove that id again is an internal error
//     creates one on the same address                its callback isn't called; the memory isn't safe until it goes
//     begins a pass of its own, on any address       that one runs over a copy of its own
//     throws                                         the callbacks behind it don't run; the registry is as it was
//
// In the last exit handlers, once the registry is released, nothing is registered any more: create_dependency() gives
// 0, a memory is safe, and the other two do nothing.
#ifndef GEN_DEP_SYS_H
#define GEN_DEP_SYS_H

#include "zel_export_sys.h"

#include <functional>

namespace GEN_DEP {

/// Id of a dependency. Ids count up from 1 and are never used again; 0 stands for no dependency.
using UID = unsigned int;

/// Registers a dependency.
///
/// @param memory    the address; null is one like any other
/// @param callback  called with the id by memory_is_being_invalidated(); copied. An empty one is taken, and raises
///                  std::bad_function_call when it is called
///
/// @return the id. The largest UID is never given out: reaching it is an internal error
///
/// The ids of an address are kept for good: each create_dependency() on it makes all later passes and questions about
/// that address a little slower.
GEN_API unsigned int create_dependency(void const *memory, std::function<void(unsigned int)> const &callback);

/// Forgets a dependency, and with it its copy of the callback.
///
/// @param uid  its id; 0 does nothing. One that isn't registered is an internal error
GEN_API void remove_dependency(unsigned int uid);

/// Calls all dependants of an address, in the order in which they registered. They stay registered: those that don't
/// remove themselves are called by the next pass again. An exception of a callback passes through.
GEN_API void memory_is_being_invalidated(void const *memory);

/// Whether nothing depends on an address. Calls nobody and changes nothing, but copies the callbacks that are there.
GEN_API bool memory_is_now_safe_to_invalidate(void const *memory);

} // namespace GEN_DEP

#endif
