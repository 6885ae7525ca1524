// Faults of the process, which end it.
#ifndef ERR_OS_FAULT_LINUX_H
#define ERR_OS_FAULT_LINUX_H

#include <csignal>

/// The signals of a fault.
constexpr int ERR_OS_FAULTS[] = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE};

/// From now on these signals end the process at once with this status, on the calling thread even
/// if its stack is used up. A sanitizer keeps its own reports of them.
void err_os_end_on_faults(int status);

#endif
