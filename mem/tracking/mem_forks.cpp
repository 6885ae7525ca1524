// The locks of the library are held over a fork, so that the child finds all of them free and what they guard complete.
// The one of the lines is not, since a line may wait for its reader: it begins anew in the child (mem_line.cpp).
// docs/architecture.md has the order of the locks of all libraries.
#include "mem/config/mem_cfg.h"
#include "mem/messages/mem_msg.h"
#include "mem/tracking/mem_count.h"
#include "mem/tracking/mem_locks.h"
#include "sys/sys_fork.h"

namespace {

void lock_all()
{
    mem_cfg_lock();
    mem_msg_lock();
    mem_locks_lock_all();
}

void unlock_all()
{
    mem_locks_unlock_all();
    mem_msg_unlock();
    mem_cfg_unlock();
}

void unlock_all_in_child()
{
    mem_count_forked();
    unlock_all();
}

bool watch()
{
    mem_cfg_prepare();
    return sys_watch_forks(lock_all, unlock_all, unlock_all_in_child);
}

// Set when the library is loaded, and so before the libraries that are built on it set theirs: a fork takes their locks
// first.
[[maybe_unused]] bool const l_is_watching = watch();

} // namespace
