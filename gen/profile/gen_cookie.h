// What the profile bins ask of the cookie log.
#ifndef GEN_COOKIE_H
#define GEN_COOKIE_H

/// Decides whether the log will be written, by the arguments of GEN_PROFILE_BINS::initialize().
void gen_cookie_log_configure(bool primary, bool debug_messages);

/// Writes the log, if that was decided, as "cookie_db_<name>.log". No other thread may log meanwhile.
void gen_cookie_log_write(char const *name);

#endif
