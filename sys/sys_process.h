// The state of this process.
#ifndef SYS_PROCESS_H
#define SYS_PROCESS_H

/// Whether a debugger is attached now; false if the system gives no information.
bool sys_is_debugged();

/// Whether the system is ending the process and has already ended all other threads, even those that held a lock. Never
/// true on Linux, where the other threads run until the process is gone.
bool sys_is_last_thread_of_exit();

#endif
