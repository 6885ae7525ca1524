#include "err/os/err_os_fault_linux.h"

#include <unistd.h>

#include <cstddef>

namespace {

// A sanitizer's handlers print what the fault was.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif

// Larger than what any processor's registers need.
constexpr std::size_t STACK_SIZE = std::size_t{64} * 1024;
alignas(16) char l_stack[STACK_SIZE];

// Written before the handler is set.
int l_status = 0;

void end(int)
{
    _exit(l_status);
}

} // namespace

void err_os_end_on_faults(int status)
{
    if (IS_SANITIZED)
        return;
    l_status = status;
    // Fails if the thread runs on an alternate stack already, which then stays.
    stack_t stack{};
    stack.ss_sp = l_stack;
    stack.ss_size = sizeof l_stack;
    sigaltstack(&stack, nullptr);
    struct sigaction action
    {
    };
    action.sa_handler = end;
    action.sa_flags = SA_ONSTACK;
    sigset_t faults;
    sigemptyset(&faults);
    for (int const signal : ERR_OS_FAULTS) {
        sigaction(signal, &action, nullptr);
        sigaddset(&faults, signal);
    }
    // A fault while its signal is blocked would end the process by the signal.
    pthread_sigmask(SIG_UNBLOCK, &faults, nullptr);
}
