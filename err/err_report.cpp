// How an internal error ends the process. The thread that finds the error is called the reporter. The stages on an
// example, in which thread A fails a check while thread B works:
//
//     1  A  stores its identity as the reporter. Only one thread can: B would wait here for the end of the process.
//     2  A  captures its stack and writes the block to the standard error stream.
//     3  A  claims the end of the process for the reporter, and calls exit(3).
//     4  A  runs the exit handlers. A second error in one of them is written as a second block, and the process ends at
//           once with status 3, because A is the reporter already.
//     5  A  reaches the last handler, which ends the process with status 3.
//
// An ordinary exit of the process may come in between:
//
//     A fails inside an exit handler     A's stack contains the exit function of the runtime, where exit(3) may not be
//                                        called again: the block is written and the process ends at once.
//     B calls exit(0) before stage 3     B claims the end first, in at_exit(), and waits there if a reporter is known.
//                                        A finds the end claimed after its block, and ends the process at once.
//     B calls exit(0) after stage 3      B must not wait, since some systems let only one thread into exit(). B goes on
//                                        while A does, and its last handler ends the process with A's status.
//
// at_exit() is registered in the first lines of main, so it runs before the static objects of the libraries are
// released. LastHandler is a static object of this library, which is released after everything that is built on it.
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

// A path that err_set_module_fullpath() was given. Former ones are kept, because a report on another thread may be
// reading them.
struct ModulePath
{
    std::string text;
    ModulePath const *former;
};

// The latest path; null before the first. It is never released, because an internal error may be reported until the
// very end of the process.
std::atomic<ModulePath const *> l_module_path{nullptr};

// The thread that reports; 0 before the first internal error. Written once.
std::atomic<std::int64_t> l_reporter{0};

// Which kind of exit ends the process. Written once.
enum class ExitPhase
{
    OPEN,
    ORDINARY,
    REPORTER,
};
std::atomic<ExitPhase> l_end{ExitPhase::OPEN};

struct Failure
{
    char const *expression;
    char const *module;
    char const *file;
    int line;
};

// The failure whose block is being composed, else null. Only the reporter reads and writes it.
Failure const *l_unwritten = nullptr;

char const *text_or_null(char const *text)
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

// The first frame outside of the report itself: the one to which err_report_internal_error() returns.
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

std::string block_of(Failure const &failure, ERR_OS_STACK const &stack, void const *caller)
{
    ModulePath const *const module_path = l_module_path.load(std::memory_order_acquire);
    std::string const executable = err_os_executable();
    std::string block;
    block += std::string("Internal error: ") + text_or_null(failure.expression) + "\n";
    block += std::string("  Library: ") + text_or_null(failure.module) + "\n";
    block += std::string("  Source:  ") + text_or_null(failure.file) + ", line " + std::to_string(failure.line) + "\n";
    block += "  Version: " ZEL_VERSION_TEXT "\n";
    block += "  Process: " + std::to_string(err_os_process_id()) + ", " +
             (executable.empty() ? "(unknown)" : executable) + "\n";
    block +=
        "  Module:  " + (module_path == nullptr || module_path->text.empty() ? "(not set)" : module_path->text) + "\n";
    append_stack(block, stack, caller);
    return block;
}

// The report if there is no memory for a full one. Nothing is allocated, and long texts are cut.
void write_short_block(Failure const &failure)
{
    char block[2048];
    int const length =
        std::snprintf(block, sizeof(block),
                      "Internal error: %.1000s\n  Library: %.100s\n  Source:  %.500s, line %d\n"
                      "  Version: " ZEL_VERSION_TEXT "\n  Process: %llu\n",
                      text_or_null(failure.expression), text_or_null(failure.module), text_or_null(failure.file),
                      failure.line, static_cast<unsigned long long>(err_os_process_id()));
    if (length > 0)
        err_os_write_error_stream(block, static_cast<std::size_t>(length));
}

void write_block(Failure const &failure, ERR_OS_STACK const &stack, void const *caller)
{
    Failure const *unwritten = std::exchange(l_unwritten, &failure);
    if (unwritten != nullptr) {
        // The composing of a block failed, so it is not tried again.
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

// True if the claimant owns the end of the process now, also if it did before.
bool claim_end(ExitPhase claimant)
{
    ExitPhase claimed = ExitPhase::OPEN;
    return l_end.compare_exchange_strong(claimed, claimant) || claimed == claimant;
}

bool another_thread_reports()
{
    std::int64_t const reporter = l_reporter.load();
    return reporter != 0 && reporter != sys_thread_self();
}

void at_exit()
{
    if (claim_end(ExitPhase::ORDINARY) && another_thread_reports())
        err_os_wait_for_the_end();
}

// Its destructor is among the last exit handlers that run.
class LastHandler
{
public:
    ~LastHandler()
    {
        if (l_reporter.load() == sys_thread_self()) {
            std::fflush(nullptr);
            err_os_end_at_once(STATUS);
        }
        bool const is_claimed = claim_end(ExitPhase::ORDINARY);
        if (!another_thread_reports())
            return;
        if (is_claimed && !sys_is_last_thread_of_exit())
            err_os_wait_for_the_end();
        err_os_end_at_once(STATUS);
    }
};

// Two of them, because the reporter and an ordinary exit at the same time may each run one. An exit that finds no
// handler left would end the process with its own status.
LastHandler l_last_handler;
LastHandler l_handler_before_the_last;

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
    if (!is_first || stack.is_in_exit || !claim_end(ExitPhase::REPORTER))
        err_os_end_at_once(STATUS);
    std::exit(STATUS);
}

void err_set_module_fullpath(std::string const &path)
{
    static std::once_flag is_registered;
    std::call_once(is_registered, err_os_call_at_exit, at_exit);
    ModulePath *latest = nullptr;
    try {
        latest = new ModulePath{path, l_module_path.load()};
    } catch (std::bad_alloc const &) {
        return; // reports show the former path
    }
    while (!l_module_path.compare_exchange_weak(latest->former, latest))
        ;
}

bool err_is_in_abnormal_exit()
{
    return l_reporter.load(std::memory_order_acquire) != 0;
}
