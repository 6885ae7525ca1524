// Calls of the C library that fail, or at which something happens, as a test scripts them. Linux. The source belongs
// into the test executable, whose functions take the place of those of the C library in the whole process.
//
//     SystemCallFaults const faults({{"fsync", EIO}});
//     EXPECT_FALSE(save(file)); // the first fsync() of this thread fails
#ifndef TESTS_SUPPORT_SYSTEM_CALL_FAULTS_H
#define TESTS_SUPPORT_SYSTEM_CALL_FAULTS_H

#include <functional>
#include <string>
#include <vector>

/// A fault of one function: open, read, write, fsync, flock, stat, fstat, fchown, fchmod, rename, nanosleep,
/// fgetxattr or fsetxattr.
struct SystemCallFault
{
    /// As the error of read or write: the call transfers one byte at most.
    static constexpr int SHORT_TRANSFER = -1;
    /// The call is made as it is, after the action.
    static constexpr int NO_ERROR = 0;

    std::string function;
    int error;                              ///< of errno, or one of the two above
    int first = 1;                          ///< the first call that is meant, from 1 on
    int count = 1;                          ///< how many calls are meant
    std::function<void()> action = nullptr; ///< is called before each of them; its own calls have no faults
};

/// The faults of the calling thread during a scope. One scope at a time.
class SystemCallFaults
{
public:
    explicit SystemCallFaults(std::vector<SystemCallFault> faults);
    ~SystemCallFaults();
    SystemCallFaults(SystemCallFaults const &) = delete;
    SystemCallFaults &operator=(SystemCallFaults const &) = delete;

    /// How many calls met a fault so far.
    int met() const;
};

#endif
