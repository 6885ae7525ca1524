// The event buffer and the levels.
//
// Bins are opened millions of times, so an open or a close only reads both clocks and writes one event into a buffer.
// The tenth event flushes the buffer: all ten are processed, that is, they find their bins in the tree. The level is
// the flags of the last open. As long as consecutive opens have equal flags without GEN_PB_FLAG_IMMEDIATE, they and the
// closes between them are buffered; an open with other flags flushes first. An event with GEN_PB_FLAG_IMMEDIATE goes
// directly into the tree, after a flush. Flags of 0 ignore everything up to the matching close.
//
//     call        level  buffer  effect
//     open A 1    1      A       a new level: flushes the buffer, which was empty, and waits
//     close       1      A A     waits
//     open B 1    1      A A B   waits, like all of this level up to the tenth event
//     open C ALL  ALL            flushes A and B, then processes C at once: the call returns C
//     close       1              at once, since a close has the flags of the level; then the level is that of B, the
//                                parent of C
//     open D 0    0              ignored: depth 1
//     open E 1    0              ignored: depth 2
//     close       0              depth 1
//     close       1              depth 0: the level is that of the current bin again
#include "gen/profile/gen_profile_bins_events.h"

#include "gen/base/gen_debug_message.h"
#include "gen/profile/gen_profile_bins_bin.h"
#include "gen/profile/gen_profile_bins_messages.h"
#include "gen/profile/gen_profile_bins_tree.h"
#include "mem_sys.h"

#include <utility>

namespace {

// Fills an event; the clocks are read last.
inline void make_event(GEN_PB_EVENT &event, GEN_PB_EVENT_TYPE type, char const *code_prefix, char const *name,
                       std::uint32_t flags, char const *tag, char const *user_tag)
{
    event.m_code_prefix = code_prefix;
    event.m_name = name;
    event.m_user_tag = user_tag;
    event.m_tag = tag;
    event.m_type = type;
    event.m_flags = flags;
    event.m_clocks = gen_read_clocks();
}

// The buffer's next event. It is made in its place.
inline GEN_PB_EVENT &next_event()
{
    return gen_pb().intake.events[gen_pb().intake.event_count];
}

[[gnu::noinline]] void flush_full()
{
    ++gen_pb().intake.full_count;
    gen_pb_flush();
}

inline void count_event()
{
    if (++gen_pb().intake.event_count == GEN_PB_EVENT_LIMIT)
        flush_full();
}

// Processes an event at once, after those that are buffered.
void push_immediate(GEN_PB_EVENT_TYPE type, char const *code_prefix, char const *name, std::uint32_t flags,
                    char const *tag, char const *user_tag)
{
    GEN_PB_EVENT event;
    make_event(event, type, code_prefix, name, flags, tag, user_tag);
    gen_pb_flush();
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    gen_pb_process(&event, 1);
}

void start_ignoring(char const *name)
{
    gen_pb().intake.ignored_name = gen_pb_text_or_empty(name);
    gen_pb().intake.ignored_depth = 1;
}

} // namespace

void gen_pb_flush()
{
    auto &intake = gen_pb().intake;
    if (intake.event_count == 0)
        return;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_CLOCKS const before = gen_read_clocks();
    // The buffer counts as empty before, so that an exception leaves it empty. Nothing is added to it meanwhile.
    gen_pb_process(intake.events.data(), std::exchange(intake.event_count, 0));
    GEN_CLOCKS const spent = gen_read_clocks() - before;
    if (GEN_PB_IMPL *const bin = gen_pb().tree.current)
        bin->m_overhead.add_interval(spent);
}

GEN_PROFILE_BIN const *gen_pb_push_open(char const *code_prefix, char const *name, std::uint32_t flags, char const *tag,
                                        char const *user_tag)
{
    make_event(next_event(), GEN_PB_EVENT_OPEN, code_prefix, name, flags, tag, user_tag);
    count_event();
    return nullptr;
}

void gen_pb_push_close(char const *name, std::uint32_t flags)
{
    make_event(next_event(), GEN_PB_EVENT_CLOSE, /*code_prefix=*/nullptr, name, flags, /*tag=*/nullptr,
               /*user_tag=*/nullptr);
    count_event();
}

GEN_PROFILE_BIN const *gen_pb_open_special(char const *code_prefix, char const *name, std::uint32_t flags,
                                           char const *tag, char const *user_tag)
{
    auto &intake = gen_pb().intake;
    if (gen_pb().run.debug)
        gen_pb_trace_open(code_prefix, name, flags);
    ++intake.debug_depth;
    if (flags != intake.level_flags) {
        gen_pb_flush();
        intake.ignored_depth = 0;
        intake.level_flags = flags;
    }
    if (flags == 0) {
        start_ignoring(name);
        return nullptr;
    }
    if ((flags & GEN_PB_FLAG_IMMEDIATE) == 0)
        return gen_pb_push_open(code_prefix, name, flags, tag, user_tag);
    push_immediate(GEN_PB_EVENT_OPEN, code_prefix, name, flags, tag, user_tag);
    ++intake.immediate_count;
    return gen_pb().tree.current;
}

void gen_pb_close_special(char const *name, std::uint32_t flags)
{
    if (gen_pb().run.debug)
        gen_pb_trace_close(name);
    if ((flags & GEN_PB_FLAG_IMMEDIATE) == 0)
        return gen_pb_push_close(name, flags);
    push_immediate(GEN_PB_EVENT_CLOSE, /*code_prefix=*/nullptr, name, flags, /*tag=*/nullptr, /*user_tag=*/nullptr);
}

GEN_PROFILE_BIN const *gen_pb_ignore_with_warning(char const *name)
{
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
        GEN_PB_BUSY const busy;
        gen_debug_message("Tried to open bin '%s' during ignored bin '%s'", gen_pb_text_or_empty(name),
                          gen_pb().intake.ignored_name);
    }
    ++gen_pb().intake.ignored_depth;
    return nullptr;
}

void gen_pb_stop_ignoring()
{
    auto &intake = gen_pb().intake;
    GEN_PB_IMPL const *const bin = gen_pb().tree.current;
    intake.level_flags = bin == nullptr ? std::uint32_t{GEN_PB_FLAG_ALL} : bin->m_flags;
    intake.ignored_name = nullptr;
    --intake.debug_depth;
}
