// How an internal error ends the process. The thread that finds the error is called the reporter. The stages on an
// example, in which thread A fails a check while thread B works:
//
//     1  A  stores its identity as the reporter. Only one thread can: B would wait here for the end of the process.
//     2  A  writes the block to the standard error stream: first what failed, then its stack.
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
// The block is written even if the heap is damaged, memory or the stack is short, or a lock of another thread is never
// released. What failed is written first, from static memory. The symbols of the stack are found by the system's layer,
// which may fail; a frame without symbols is printed as a module and an offset. From stage 2 on a fault of the process,
// on any thread, ends it at once with status 3.
//
// at_exit() is registered in the first lines of main, so it runs before the static objects of the libraries are
// released. LastHandler is a static object of this library, which is released after everything that is built on it.
#include "err_sys.h"

#include "err/err_text.h"
#include "err/os/err_os.h"
#include "sys/os/sys_os_thread.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace {

constexpr int STATUS = 3;

// Sizes in bytes: of the first write, which a pipe takes as a whole; of the text of a frame; and of a stack of them
// with the modules and offsets.
constexpr std::size_t FIRST_WRITE_SIZE = 2048;
constexpr std::size_t FRAME_SIZE = 4096;
constexpr std::size_t BLOCK_SIZE = ERR_OS_STACK::CAPACITY * (FRAME_SIZE + sizeof(SYS_MODULE::name) + 64);

// How long the symbols of a stack may take.
constexpr int SYMBOLS_MILLISECONDS = 5000;

// The path that err_set_module_fullpath() was given.
ERR_SHARED_TEXT l_module_path;

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

// The memory of a report, static because the heap may be damaged and the stack short. Only the reporter uses it.
struct ReportMemory
{
    ERR_OS_STACK stack;
    char module_path[ERR_SHARED_TEXT::CAPACITY];
    char frames[ERR_OS_STACK::CAPACITY][FRAME_SIZE]; // the text of each, if its symbols were found
    std::size_t frame_sizes[ERR_OS_STACK::CAPACITY];
    char answers[2 * FRAME_SIZE];
    char block[BLOCK_SIZE];
    bool is_stream_lost; // a write has failed
};
ReportMemory l_memory;

std::string_view text_or_null(char const *text)
{
    return text == nullptr ? "(null)" : text;
}

std::string_view text_or(std::string_view text, std::string_view replacement)
{
    return text.empty() ? replacement : text;
}

void write_error_stream(char const *text, std::size_t size)
{
    if (!l_memory.is_stream_lost)
        l_memory.is_stream_lost = !err_os_write_error_stream(text, size);
}

void write_failure(Failure const &failure)
{
    ERR_TEXT block(l_memory.block, FIRST_WRITE_SIZE, BLOCK_SIZE, write_error_stream);
    block << "Internal error: " << text_or_null(failure.expression) << "\n  Library: " << text_or_null(failure.module)
          << "\n  Source:  " << text_or_null(failure.file) << ", line ";
    block.append_number(failure.line) << "\n  Version: " ZEL_VERSION_TEXT "\n  Process: ";
    block.append_number(static_cast<std::int64_t>(err_os_process_id()))
        << ", " << text_or(err_os_executable(), "(unknown)")
        << "\n  Module:  " << text_or(l_module_path.read(l_memory.module_path), "(not set)") << "\n";
    block.flush();
}

// Keeps the symbols of each frame as text.
class FrameTexts final : public ERR_OS_RECEIVER
{
public:
    FrameTexts()
    {
        for (std::size_t &size : l_memory.frame_sizes)
            size = 0;
    }

    void take(std::size_t index, bool, ERR_OS_LINE const &line) override
    {
        ERR_TEXT text(l_memory.frames[index], FRAME_SIZE);
        (text << line.function << "+").append_hexadecimal(line.function_offset);
        if (!line.file.empty())
            (text << " at " << line.file << ":").append_number(line.line);
        l_memory.frame_sizes[index] = text.size();
    }

    std::string_view operator[](std::size_t index) const
    {
        return {l_memory.frames[index], l_memory.frame_sizes[index]};
    }
};

void append_object(ERR_TEXT &block, void const *address)
{
    std::uintptr_t const place = reinterpret_cast<std::uintptr_t>(address);
    SYS_MODULE module;
    // The call lies before its return address, which may belong to the next module.
    if (sys_find_module(place - 1, module))
        (block << module.name << "+").append_hexadecimal(place - module.begin);
    else
        block.append_hexadecimal(place);
}

// The first frame outside of the report itself: the one to which err_report_internal_error() returns.
std::size_t first_frame(ERR_OS_STACK const &stack, void const *caller)
{
    for (std::size_t i = 0; i < stack.count; ++i)
        if (stack.addresses[i] == caller)
            return i;
    return 0;
}

void write_stack(ERR_OS_STACK const &stack, void const *caller)
{
    std::size_t const first = first_frame(stack, caller);
    void *const *const addresses = stack.addresses + first;
    std::size_t const count = stack.count - first;
    FrameTexts frames;
    err_os_describe({addresses, count, /*with_inlined=*/false, /*is_demangled=*/true, SYMBOLS_MILLISECONDS,
                     SYMBOLS_MILLISECONDS, l_memory.answers, sizeof l_memory.answers},
                    frames);
    ERR_TEXT block(l_memory.block, BLOCK_SIZE, BLOCK_SIZE, write_error_stream);
    block << "  Stack:\n";
    for (std::size_t i = 0; i < count; ++i) {
        (block << "    #").append_number(static_cast<std::int64_t>(i)) << " ";
        if (!frames[i].empty())
            block << frames[i] << " (";
        append_object(block, addresses[i]);
        block << (frames[i].empty() ? "\n" : ")\n");
    }
    block.flush();
}

// Returns whether the thread runs an exit handler.
bool write_block(Failure const &failure, void const *caller)
{
    err_os_begin_report(STATUS);
    l_memory.is_stream_lost = false;
    write_failure(failure);
    ERR_OS_STACK &stack = l_memory.stack;
    stack.count = 0;
    stack.is_in_exit = false;
    err_os_capture_stack(stack);
    if (!l_memory.is_stream_lost)
        write_stack(stack, caller);
    return stack.is_in_exit;
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

    bool const is_in_exit = write_block({expression, module, file, line}, __builtin_return_address(0));
    if (!is_first || is_in_exit || !claim_end(ExitPhase::REPORTER))
        err_os_end_at_once(STATUS);
    std::exit(STATUS);
}

void err_set_module_fullpath(std::string const &path)
{
    static std::once_flag is_registered;
    std::call_once(is_registered, err_os_call_at_exit, at_exit);
    l_module_path.set(path);
}

bool err_is_in_abnormal_exit()
{
    return l_reporter.load(std::memory_order_acquire) != 0;
}
