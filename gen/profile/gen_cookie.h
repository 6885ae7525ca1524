// The cookie log as a listener of the profile bins.
#ifndef GEN_COOKIE_H
#define GEN_COOKIE_H

/// Decides by the arguments of GEN_PROFILE_BINS::initialize() whether the log will be written at the end of the run, as
/// "cookie_db_<name>.log" with the name given to finalize().
void gen_cookie_log_configure(bool primary, bool debug_messages);

/// Takes the mutex of the log, and releases it, around a fork.
void gen_cookie_log_lock();
void gen_cookie_log_unlock();

#endif
