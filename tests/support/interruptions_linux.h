// Signals that interrupt system calls.
#ifndef TESTS_SUPPORT_INTERRUPTIONS_LINUX_H
#define TESTS_SUPPORT_INTERRUPTIONS_LINUX_H

#include <csignal>
#include <sys/time.h>

/// Signals that interrupt the system calls of the thread, as often as they can, during its lifetime.
class Interruptions
{
public:
    Interruptions()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &m_former);
        itimerval const often{{0, 100}, {0, 100}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Interruptions()
    {
        itimerval const never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &m_former, nullptr);
    }
    Interruptions(Interruptions const &) = delete;
    Interruptions &operator=(Interruptions const &) = delete;

private:
    struct sigaction m_former = {};
};

#endif
