// Forks of a process that has several threads.
#ifndef SYS_FORK_H
#define SYS_FORK_H

/// Makes the system call the functions around each fork of the process from now on; each may be null.
///
/// @param before     on the thread that forks, before the fork
/// @param in_parent  on the same thread, after it
/// @param in_child   on the one thread of the child, before anything else of the program
/// @return false if there is no memory; true also on platforms without forks, where nothing is ever called
///
/// The functions that were passed first are the last to be called before a fork and the first to be called after it.
/// They are dropped when the library that contains the call is unloaded.
bool sys_watch_forks(void (*before)(), void (*in_parent)(), void (*in_child)());

#endif
