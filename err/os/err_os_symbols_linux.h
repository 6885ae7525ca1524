// Symbols of the modules of this process. Run in a child of the process alone: libdw ends the process where memory is
// short or where it finds something that it doesn't expect. No C++ operator new is called, since a program may have
// replaced it by one that takes locks.
#ifndef ERR_OS_SYMBOLS_LINUX_H
#define ERR_OS_SYMBOLS_LINUX_H

#include "err/os/err_os.h"

/// What the loader knows: names of exported functions. The limits of time in the question are not looked at.
void err_os_describe_by_loader(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver);

/// Same, and what the symbol tables and the debug information add to it.
void err_os_describe_by_debug_info(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver);

#endif
