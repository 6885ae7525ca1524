// From the call of an open or a close to the tree, as gen_profile_bins_events.cpp explains it. The tests that every
// call makes are inline.
#ifndef GEN_PROFILE_BINS_EVENTS_H
#define GEN_PROFILE_BINS_EVENTS_H

#include "gen/profile/gen_profile_bins_state.h"

/// Processes the buffered events, and adds the time that this takes to the overhead of the bin that is current
/// afterwards.
void gen_pb_flush();

// The parts of gen_pb_open() and gen_pb_close() that take more than a test. Opens return the bin, or null.

/// Buffers an open.
GEN_PROFILE_BIN const *gen_pb_push_open(char const *code_prefix, char const *name, std::uint32_t flags, char const *tag,
                                        char const *user_tag);
/// Buffers a close.
void gen_pb_push_close(char const *name, std::uint32_t flags);
/// An open that changes the level, is immediate or is traced.
GEN_PROFILE_BIN const *gen_pb_open_special(char const *code_prefix, char const *name, std::uint32_t flags,
                                           char const *tag, char const *user_tag);
/// A close that is immediate or is traced.
void gen_pb_close_special(char const *name, std::uint32_t flags);
/// Ignores an open, with a warning.
[[gnu::cold]] GEN_PROFILE_BIN const *gen_pb_ignore_with_warning(char const *name);
/// Goes back to recording.
[[gnu::cold]] void gen_pb_stop_ignoring();

/// Whether an open or a close with these flags only needs to be buffered.
inline bool gen_pb_is_plain(std::uint32_t flags)
{
    return (flags & GEN_PB_FLAG_IMMEDIATE) == 0 && !gen_pb().run.debug;
}

/// Ignores an open.
inline GEN_PROFILE_BIN const *gen_pb_ignore_open(char const *name, std::uint32_t flags)
{
    if (flags != 0) {
        ++gen_pb().intake.ignored_count;
        if (gen_pb().run.show_ignored)
            return gen_pb_ignore_with_warning(name);
    }
    ++gen_pb().intake.ignored_depth;
    return nullptr;
}

/// All public opens; `tag` and `user_tag` are null in those that have none.
inline GEN_PROFILE_BIN const *gen_pb_open(char const *code_prefix, char const *name, std::uint32_t flags,
                                          char const *tag, char const *user_tag)
{
    if (!gen_pb_may_change_tree())
        return nullptr;
    auto &intake = gen_pb().intake;
    if (intake.level_flags == 0)
        return gen_pb_ignore_open(name, flags);
    if (flags != intake.level_flags || !gen_pb_is_plain(flags))
        return gen_pb_open_special(code_prefix, name, flags, tag, user_tag);
    ++intake.debug_depth;
    return gen_pb_push_open(code_prefix, name, flags, tag, user_tag);
}

/// The public close.
inline void gen_pb_close(char const *name)
{
    if (!gen_pb_may_change_tree())
        return;
    auto &intake = gen_pb().intake;
    std::uint32_t const flags = intake.level_flags;
    if (flags == 0) {
        if (--intake.ignored_depth == 0)
            gen_pb_stop_ignoring();
        return;
    }
    --intake.debug_depth;
    if (gen_pb_is_plain(flags))
        gen_pb_push_close(name, flags);
    else
        gen_pb_close_special(name, flags);
}

#endif
