// The operations that any thread may call at any time, by library, for tests that run them beside each other.
#ifndef TESTS_SUPPORT_OPERATIONS_H
#define TESTS_SUPPORT_OPERATIONS_H

#include <vector>

/// One call, or a few that belong together. It makes the data that it needs, in the current directory if these are
/// files, and expects nothing: other threads change the state that it reads.
struct Operation
{
    char const *name;
    void (*run)();
};

using Operations = std::vector<Operation>;

Operations operations_of_siblings(); ///< zel_err, zel_thr, zel_fio and zel_ver
Operations operations_of_mem();
Operations operations_of_gen();

/// Those of zel_mem that have to come from one thread.
Operations operations_of_bins_thread();

/// Those of zel_gen that have to come from the thread of its bins, which opens their root before and closes it after
/// them.
Operations operations_of_gen_thread();

#endif
