// Symbols are read in a child of the process, because libdw ends the process by itself where memory is short, and the
// heap, which it uses, may be damaged. The child reads the memory of this process as it is at the moment, and writes
// what it finds to a pipe:
//
//     FIRST, NEXT           a line of an address, by its place in the question
//     READY                 all locks that libdw needs are free in the child
//     END                   there is nothing more
//
// The child has one thread. A lock that another thread held at the moment of the fork is never released in the child.
// So the child takes and releases the locks that it needs, and then says READY. If it doesn't, it is ended, and another
// one is made. The names that the loader knows come before READY, because less can fail up to there.
#include "err/os/err_os.h"

#include "err/os/err_os_fault_linux.h"
#include "err/os/err_os_symbols_linux.h"
#include "sys/os/sys_os_clock_linux.h"
#include "sys/sys_write.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int MAX_CHILDREN = 5;
constexpr int READY_MILLISECONDS = 1000;

// After its last record the child needs no more time than this to end.
constexpr int REAP_MILLISECONDS = 1000;

enum class RecordKind : std::uint32_t
{
    FIRST,
    NEXT,
    READY,
    END,
};

// The texts of the function and the file follow.
struct RecordHead
{
    RecordKind kind;
    std::int32_t line;
    std::uint64_t index;
    std::uint64_t function_offset;
    std::uint64_t function_size;
    std::uint64_t file_size;
};

// The room for a text in a record that has to fit into the buffer.
std::size_t text_room(std::size_t buffer_size)
{
    return (buffer_size - sizeof(RecordHead)) / 2;
}

// ---- In the child. There is one thread, so that its state can be static.

constexpr int PIPE = 3; // after the standard streams

struct ChildState
{
    ERR_OS_QUESTION question;
    ucontext_t context;
    alignas(16) char stack[256 * 1024];
};
ChildState l_child;

[[noreturn]] void end_child(void *)
{
    _exit(0);
}

class PipeWriter final : public ERR_OS_RECEIVER
{
public:
    void take(std::size_t index, bool is_first, ERR_OS_LINE const &line) override
    {
        std::size_t const room = text_room(l_child.question.buffer_size);
        RecordHead const head{is_first ? RecordKind::FIRST : RecordKind::NEXT,
                              line.line,
                              index,
                              line.function_offset,
                              std::min(line.function.size(), room),
                              std::min(line.file.size(), room)};
        // The child's copy of the buffer, which is large enough.
        char *const record = l_child.question.buffer;
        std::memcpy(record, &head, sizeof head);
        line.function.copy(record + sizeof head, head.function_size);
        line.file.copy(record + sizeof head + head.function_size, head.file_size);
        write(record, sizeof head + head.function_size + head.file_size);
    }

    void send(RecordKind kind)
    {
        RecordHead const head{kind, 0, 0, 0, 0, 0};
        write(reinterpret_cast<char const *>(&head), sizeof head);
    }

private:
    static void write(char const *bytes, std::size_t size)
    {
        // Nobody reads any more.
        if (sys_write(PIPE, bytes, size, 0).error != 0)
            _exit(0);
    }
};

// Leaves the child with the pipe alone: what the libraries print, and the buffers of streams, go nowhere.
void close_descriptors(int pipe)
{
    if (pipe != PIPE)
        dup2(pipe, PIPE);
    if (syscall(SYS_close_range, PIPE + 1, ~0U, 0) != 0) {
        // Linux before 5.9. The limit may be a billion.
        long const limit = std::min(sysconf(_SC_OPEN_MAX), 65536L);
        for (int descriptor = PIPE + 1; descriptor < limit; ++descriptor)
            close(descriptor);
    }
    int const nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int descriptor = 0; descriptor < PIPE; ++descriptor)
        if (nowhere >= 0 && nowhere != descriptor)
            dup2(nowhere, descriptor);
}

// Waits for ever if a lock of the heap or of the loader is held.
void try_locks_of_loader()
{
    // Larger than the blocks that a thread keeps for itself.
    void *volatile block = std::malloc(5000);
    std::free(block);
    if (void *const program = dlopen(nullptr, RTLD_LAZY))
        dlclose(program);
}

// Waits for ever if the lock of the list of streams is held, which libdw needs to open files.
void try_lock_of_streams()
{
    if (std::FILE *const stream = std::fopen("/dev/null", "re"))
        std::fclose(stream);
}

[[noreturn]] void run_child()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    err_os_end_on_faults(/*status=*/1);
    // If a library calls exit(), this is called before any exit handler of the process, and before streams are flushed.
    // The last argument is any address in this library.
    if (abi::__cxa_thread_atexit(end_child, nullptr, &l_child) != 0)
        _exit(1);
    PipeWriter writer;
    try_locks_of_loader();
    err_os_describe_by_loader(l_child.question, writer);
    try_lock_of_streams();
    writer.send(RecordKind::READY);
    err_os_describe_by_debug_info(l_child.question, writer);
    writer.send(RecordKind::END);
    _exit(0);
}

// The calling thread may have little stack left.
[[noreturn]] void enter_child(ERR_OS_QUESTION const &question, int pipe)
{
    close_descriptors(pipe);
    l_child.question = question;
    getcontext(&l_child.context);
    l_child.context.uc_stack.ss_sp = l_child.stack;
    l_child.context.uc_stack.ss_size = sizeof l_child.stack;
    makecontext(&l_child.context, run_child, 0);
    setcontext(&l_child.context);
    _exit(1);
}

// ---- In the process itself.

// A fork without handlers: they may take locks, or use a damaged heap.
pid_t fork_without_handlers()
{
#if __GLIBC_PREREQ(2, 34)
    return _Fork();
#else
    return static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr));
#endif
}

// Not one of the standard streams, even if those are closed.
int above_streams(int descriptor)
{
    if (descriptor >= PIPE)
        return descriptor;
    int const higher = fcntl(descriptor, F_DUPFD_CLOEXEC, PIPE);
    close(descriptor);
    return higher;
}

class Child
{
public:
    explicit Child(ERR_OS_QUESTION const &question)
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        m_pipe = above_streams(ends[0]);
        int const write_end = above_streams(ends[1]);
        if (m_pipe >= 0 && write_end >= 0)
            start(question, write_end);
        if (write_end >= 0)
            close(write_end);
    }

    ~Child()
    {
        if (m_pipe >= 0)
            close(m_pipe);
        if (m_process > 0)
            reap();
    }

    Child(Child const &) = delete;
    Child &operator=(Child const &) = delete;

    bool is_started() const { return m_process > 0; }

    // The child has said that there is nothing more, so that it ends by itself.
    void set_done() { m_is_done = true; }

    // The number of bytes that came before the deadline; 0 if none, or at the end.
    std::size_t read(char *bytes, std::size_t size, std::int64_t deadline) const
    {
        pollfd query{m_pipe, POLLIN, 0};
        for (;;) {
            std::int64_t const rest = std::max<std::int64_t>(deadline - sys_os_milliseconds_now(), 0);
            int const ready = poll(&query, 1, static_cast<int>(std::min<std::int64_t>(rest, INT_MAX)));
            if (ready == 0)
                return 0;
            ssize_t const count = ready < 0 ? -1 : ::read(m_pipe, bytes, size);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                return 0;
        }
    }

private:
    void start(ERR_OS_QUESTION const &question, int write_end)
    {
        // No handler of the process runs in the child. A fault ends the process, which a blocked signal would not do
        // with its status.
        sigset_t all, former;
        sigfillset(&all);
        for (int const fault : ERR_OS_FAULTS)
            sigdelset(&all, fault);
        pthread_sigmask(SIG_SETMASK, &all, &former);
        m_process = fork_without_handlers();
        if (m_process == 0)
            enter_child(question, write_end);
        pthread_sigmask(SIG_SETMASK, &former, nullptr);
    }

    // True if the child has ended, or if the process itself waits for all of its children and has waited for this one.
    bool has_ended(int milliseconds) const
    {
        std::int64_t const deadline = sys_os_milliseconds_now() + milliseconds;
        while (waitpid(m_process, nullptr, WNOHANG) == 0) {
            if (sys_os_milliseconds_now() >= deadline)
                return false;
            poll(nullptr, 0, 1);
        }
        return true;
    }

    // A child that the system doesn't end is left alone.
    void reap() const
    {
        if (has_ended(m_is_done ? REAP_MILLISECONDS : 0))
            return;
        kill(m_process, SIGKILL);
        has_ended(REAP_MILLISECONDS);
    }

    int m_pipe = -1;
    pid_t m_process = -1;
    bool m_is_done = false;
};

// The answers of one child.
class Answers
{
public:
    Answers(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver) : m_question(question), m_receiver(receiver) {}

    // False if the child was never ready, but may not have been lucky.
    bool receive(Child &child, std::int64_t last_deadline)
    {
        std::size_t size = 0;
        m_is_ready = false;
        for (;;) {
            int const patience = m_is_ready ? m_question.silence_milliseconds : READY_MILLISECONDS;
            std::int64_t const deadline = std::min(last_deadline, sys_os_milliseconds_now() + patience);
            std::size_t const count = child.read(m_question.buffer + size, m_question.buffer_size - size, deadline);
            if (count == 0)
                return m_is_ready || sys_os_milliseconds_now() < deadline;
            size += count;
            std::size_t const used = take_records({m_question.buffer, size});
            if (used == std::string_view::npos) {
                if (m_is_ended)
                    child.set_done();
                return true;
            }
            size -= used;
            std::memmove(m_question.buffer, m_question.buffer + used, size);
        }
    }

private:
    // Returns how many bytes they have; npos after the last one, or if a damaged child has written something else.
    std::size_t take_records(std::string_view bytes)
    {
        std::size_t const whole = bytes.size();
        RecordHead head;
        while (bytes.size() >= sizeof head) {
            std::memcpy(&head, bytes.data(), sizeof head);
            m_is_ended = head.kind == RecordKind::END;
            if (head.kind >= RecordKind::END || head.index >= m_question.count ||
                std::max(head.function_size, head.file_size) > text_room(m_question.buffer_size))
                return std::string_view::npos;
            std::size_t const size = sizeof head + head.function_size + head.file_size;
            if (size > bytes.size())
                break;
            if (head.kind == RecordKind::READY)
                m_is_ready = true;
            else
                m_receiver.take(head.index, head.kind == RecordKind::FIRST,
                                {bytes.substr(sizeof head, head.function_size), head.function_offset,
                                 bytes.substr(sizeof head + head.function_size, head.file_size), head.line});
            bytes.remove_prefix(size);
        }
        return whole - bytes.size();
    }

    ERR_OS_QUESTION const &m_question;
    ERR_OS_RECEIVER &m_receiver;
    bool m_is_ready = false;
    bool m_is_ended = false;
};

} // namespace

void err_os_describe(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver)
{
    std::int64_t const deadline = sys_os_milliseconds_now() + question.total_milliseconds;
    Answers answers(question, receiver);
    for (int i = 0; i < MAX_CHILDREN && sys_os_milliseconds_now() < deadline; ++i) {
        Child child(question);
        if (!child.is_started() || answers.receive(child, deadline))
            return;
    }
}
