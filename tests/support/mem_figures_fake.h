// Scripted figures of zel_mem: tests link zel_mem_fake, whose memory facts and tracking return the values that a test
// sets here, and which keeps a log of the calls. Any thread may call; the script is one for the process.
#ifndef TESTS_SUPPORT_MEM_FIGURES_FAKE_H
#define TESTS_SUPPORT_MEM_FIGURES_FAKE_H

#include "mem_sys.h"

#include <cstddef>
#include <string>
#include <vector>

/// Back to the start: all figures 0, nothing queued, nothing enabled, no log. Living suspension scopes stay counted.
MEM_API void mem_fake_reset();

// The memory facts, in bytes.

MEM_API void mem_fake_set_working_set(std::size_t bytes);
MEM_API void mem_fake_set_peak_working_set(std::size_t bytes);
MEM_API void mem_fake_set_peak_virtual(std::size_t bytes);
MEM_API void mem_fake_set_current_total(std::size_t bytes);

// The results of tracking.

/// The figures that a close of a profile bin gives: those queued for its tag, in the order of queueing, else those
/// queued for any tag, else zeros.
MEM_API void mem_fake_queue_close(std::size_t open_bytes, std::size_t close_bytes, std::size_t peak_bytes);
MEM_API void mem_fake_queue_close_of_tag(std::string const &tag, std::size_t open_bytes, std::size_t close_bytes,
                                         std::size_t peak_bytes);

/// The result of mem_get_tbb_memory_tracking_enabled().
MEM_API void mem_fake_set_tbb_tracking_enabled(bool enabled);

/// The text that a dump writes into its stream; it then returns true. `dump` is its word in the log, "module" the first
/// and "module details" the second stream of the dump by module. With an empty text it returns false.
MEM_API void mem_fake_set_dump(std::string const &dump, std::string const &text);

// The calls so far.

/// One line a call, in order:
///
///     open <name> <tag>      close <tag>           enable <granularity>    disable <granularity>
///     reset                  flush                 label <label>           disable labels
///     dump fileline          dump subsystem        dump bin stats          dump tag stats
///     dump module            tbb enabled?          enabled? <granularity>
///
/// " suspended" follows an open or a close on a thread with a living suspension scope.
/// The blank before an empty tag stays: "open A ", "close ".
MEM_API std::vector<std::string> mem_fake_log();
MEM_API void mem_fake_clear_log();

/// The living suspension scopes of the calling thread.
MEM_API int mem_fake_suspensions();

/// The sums of the bytes that mem_count_allocation() and mem_count_release() received on any thread.
MEM_API std::size_t mem_fake_counted_allocations();
MEM_API std::size_t mem_fake_counted_releases();

#endif
