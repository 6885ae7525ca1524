// One thread reports and ends the process; what it finds decides how:
//
//     nobody reports                 write the block, exit(3): the exit handlers run
//     nobody reports, exit handlers  write the block, end at once with 3
//       of the process run already
//     this thread reports already    the same: the failure stands in an exit handler or in the report
//     another thread reports         rest until it has ended the process
//
// That exit handlers run is seen in the thread's own stack, which holds the runtime's exit function
// then. For the other threads there are two handlers of our own. One is registered in the first lines
// of main, so it runs before the static objects of the libraries are released. The other is released
// itself after all that is built on this library. The thread that comes there in an ordinary exit
// claims the end of the process, which a reporter claims before it calls exit(3):
//
//     claimed by an ordinary exit    the reporter ends the process at once when its block is written,
//                                    and the ordinary exit rests for that
//     claimed by a reporter          the ordinary exit goes on beside it (some systems let only one
//                                    thread into exit(), so it must not rest), and its last handler
//                                    ends the process with the reporter's status
#include "err_sys.h"

#include "err/err_demangle.h"
#include "err/os/err_os.h"
#include "sys/os/sys_os_thread.h"
#include "sys/sys_process.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int STATUS = 3;

// A place named by err_set_module_fullpath(). Former ones stay, as a report on another thread may be
// reading them.
struct PLACE
{
    std::string text;
    PLACE const *former;
};

// The latest place, null before the first. Exit leaves it alone: reports come until the very end.
std::atomic<PLACE const *> l_place{nullptr};

// The thread that reports, 0 before the first internal error; written once.
std::atomic<std::int64_t> l_reporter{0};

// Who runs the exit handlers; written once.
enum class END
{
    OPEN,
    ORDINARY,
    REPORTER,
};
std::atomic<END> l_end{END::OPEN};

struct FAILURE
{
    char const *expression;
    char const *module;
    char const *file;
    int line;
};

// The failure whose block is being put together, null otherwise; only the reporter reads and writes it.
FAILURE const *l_unwritten = nullptr;

char const *text_of(char const *text)
{
    return text == nullptr ? "(null)" : text;
}

std::string hexadecimal(std::uint64_t value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string rendered(ERR_OS_FRAME const &frame, void *address)
{
    std::string const object = frame.object.empty() ? hexadecimal(reinterpret_cast<std::uintptr_t>(address))
                                                    : frame.object + "+" + hexadecimal(frame.object_offset);
    if (frame.function.empty())
        return object;
    std::string text = err_demangled(frame.function) + "+" + hexadecimal(frame.function_offset);
    if (!frame.file.empty())
        text += " at " + frame.file + ":" + std::to_string(frame.line);
    return text + " (" + object + ")";
}

// Leaves out the frames of the report itself, which end where err_report_internal_error() returns to.
std::size_t first_frame(ERR_OS_STACK const &stack, void const *caller)
{
    for (std::size_t i = 0; i < stack.count; ++i)
        if (stack.addresses[i] == caller)
            return i;
    return 0;
}

void append_stack(std::string &block, ERR_OS_STACK const &stack, void const *caller)
{
    std::size_t const first = first_frame(stack, caller);
    void *const *addresses = stack.addresses + first;
    std::vector<ERR_OS_FRAME> const frames = err_os_describe(addresses, stack.count - first, /*with_inlined=*/false);
    block += "  Stack:\n";
    for (std::size_t i = 0; i < frames.size(); ++i)
        block += "    #" + std::to_string(i) + " " + rendered(frames[i], addresses[i]) + "\n";
}

std::string block_of(FAILURE const &failure, ERR_OS_STACK const &stack, void const *caller)
{
    PLACE const *place = l_place.load(std::memory_order_acquire);
    std::string const executable = err_os_executable();
    std::string block;
    block += std::string("Internal error: ") + text_of(failure.expression) + "\n";
    block += std::string("  Library: ") + text_of(failure.module) + "\n";
    block += std::string("  Source:  ") + text_of(failure.file) + ", line " + std::to_string(failure.line) + "\n";
    block += "  Version: " ZEL_VERSION_TEXT "\n";
    block += "  Process: " + std::to_string(err_os_process_id()) + ", " +
             (executable.empty() ? "(unknown)" : executable) + "\n";
    block += "  Module:  " + (place == nullptr || place->text.empty() ? "(not set)" : place->text) + "\n";
    append_stack(block, stack, caller);
    return block;
}

// The report when a full one cannot be put together: nothing is allocated, long texts are cut.
void write_short_block(FAILURE const &failure)
{
    char block[2048];
    int const length = std::snprintf(block, sizeof(block),
                                     "Internal error: %.1000s\n  Library: %.100s\n  Source:  %.500s, line %d\n"
                                     "  Version: " ZEL_VERSION_TEXT "\n  Process: %llu\n",
                                     text_of(failure.expression), text_of(failure.module), text_of(failure.file),
                                     failure.line, static_cast<unsigned long long>(err_os_process_id()));
    if (length > 0)
        err_os_write_error_stream(block, static_cast<std::size_t>(length));
}

void write_block(FAILURE const &failure, ERR_OS_STACK const &stack, void const *caller)
{
    FAILURE const *unwritten = std::exchange(l_unwritten, &failure);
    if (unwritten != nullptr) {
        // Putting a block together is what failed, so it is not tried again.
        write_short_block(*unwritten);
        write_short_block(failure);
        return;
    }
    try {
        std::string const block = block_of(failure, stack, caller);
        err_os_write_error_stream(block.data(), block.size());
    } catch (std::bad_alloc const &) {
        write_short_block(failure);
    }
    l_unwritten = nullptr;
}

// Whether it is the claimant's, now or already.
bool claim_end(END claimant)
{
    END claimed = END::OPEN;
    return l_end.compare_exchange_strong(claimed, claimant) || claimed == claimant;
}

bool another_thread_reports()
{
    std::int64_t const reporter = l_reporter.load();
    return reporter != 0 && reporter != sys_thread_self();
}

void at_exit()
{
    if (claim_end(END::ORDINARY) && another_thread_reports())
        err_os_wait_for_the_end();
}

// Among the last of the exit handlers that run.
class LAST_HANDLER
{
public:
    ~LAST_HANDLER()
    {
        if (l_reporter.load() == sys_thread_self()) {
            std::fflush(nullptr);
            err_os_end_at_once(STATUS);
        }
        bool const is_claimed = claim_end(END::ORDINARY);
        if (!another_thread_reports())
            return;
        if (is_claimed && !sys_is_last_thread_of_exit())
            err_os_wait_for_the_end();
        err_os_end_at_once(STATUS);
    }
};

// Two handlers, since the reporter and an ordinary exit beside it may each take one: an exit that found nothing left to
// do would end the process with its own status.
LAST_HANDLER l_last_handler;
LAST_HANDLER l_handler_before_the_last;

} // namespace

void err_report_internal_error(char const *expression, char const *module, char const *file, int line)
{
    std::int64_t const self = sys_thread_self();
    std::int64_t reporter = 0;
    bool const is_first = l_reporter.compare_exchange_strong(reporter, self);
    if (!is_first && reporter != self)
        err_os_wait_for_the_end();

    ERR_OS_STACK stack;
    err_os_capture_stack(stack);
    write_block({expression, module, file, line}, stack, __builtin_return_address(0));
    if (!is_first || stack.is_in_exit || !claim_end(END::REPORTER))
        err_os_end_at_once(STATUS);
    std::exit(STATUS);
}

void err_set_module_fullpath(std::string const &path)
{
    static std::once_flag is_registered;
    std::call_once(is_registered, err_os_call_at_exit, at_exit);
    PLACE *place = nullptr;
    try {
        place = new PLACE{path, l_place.load()};
    } catch (std::bad_alloc const &) {
        return; // reports go on with the former place
    }
    while (!l_place.compare_exchange_weak(place->former, place))
        ;
}

bool err_is_in_abnormal_exit()
{
    return l_reporter.load(std::memory_order_acquire) != 0;
}
