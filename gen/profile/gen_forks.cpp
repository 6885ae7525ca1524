// Every mutex of the library is held over a fork, so that the child finds all of them free and what they guard
// complete. docs/architecture.md has the order of the locks of all libraries.
#include "gen/machine/gen_machine_state.h"
#include "gen/profile/gen_cookie.h"
#include "sys/sys_fork.h"

namespace {

void lock_all()
{
    gen_machine_lock();
    gen_cookie_log_lock();
}

void unlock_all()
{
    gen_cookie_log_unlock();
    gen_machine_unlock();
}

// Set when the library is loaded, and so after zel_mem has set its functions: a fork takes the locks of that library
// after these.
[[maybe_unused]] bool const l_is_watching = sys_watch_forks(lock_all, unlock_all, unlock_all);

} // namespace
