// The state of this process.
#ifndef SYS_PROCESS_H
#define SYS_PROCESS_H

#include <cstddef>

/// Reads the full path of the process's executable, without a terminator.
///
/// @param path  receives the path
/// @param size  the room for it
///
/// Returns the length; 0 if the system does not give the path or if it does not fit. If the file was removed or
/// replaced while the process runs, the path is the one that it had. Allocates nothing.
std::size_t sys_read_executable_path(char *path, std::size_t size);

/// Whether a debugger is attached now; false if the system gives no information.
bool sys_is_debugged();

/// Whether the system is ending the process and has already ended all other threads, even those that held a lock. Never
/// true on Linux, where the other threads run until the process is gone.
bool sys_is_last_thread_of_exit();

/// Whether the library that asks is being unloaded by a process that goes on. True from before its static objects are
/// released; false if they are released because the process ends. So a static object can release, at an unload alone,
/// what the exit has to leave to the other libraries.
bool sys_is_unloading();

#endif
