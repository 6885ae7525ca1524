// Profile bins of the tool. Names, labels and tags must be literals: the library keeps the pointers until the bins are
// processed.
//
// A tag is the subject to which the cost of a stage belongs: "netlist", "wires", "timing", or null for no subject.
#ifndef FITTER_STAGE_H
#define FITTER_STAGE_H

#include "gen_profile_bins_sys.h"
#include "gen_tracq_sys.h"

namespace fitter {

/// A stage of the flow. Messages announce its start and its end as a numbered step.
class Stage
{
public:
    Stage(char const *name, char const *label, char const *tag)
        : m_task("Fitter", label), m_profiler("FIT", name, GEN_PB_FLAG_ANNOUNCE | GEN_PB_FLAG_IMMEDIATE, tag, label)
    {
    }

private:
    GEN_TRACQ_SCOPED_TASK m_task;
    GEN_PROFILER m_profiler;
};

/// Work inside a stage, possibly repeated many times: measured, without messages.
class Work
{
public:
    explicit Work(char const *name) : m_profiler("FIT", name, GEN_PB_FLAG_RECORD) {}

private:
    GEN_PROFILER m_profiler;
};

/// Work whose bin must exist while it runs. That is the first part of a stage, where the library starts a new memory
/// log, and work that logs a cookie, which contains the path of the current bin.
class VisibleWork
{
public:
    explicit VisibleWork(char const *name) : m_profiler("FIT", name, GEN_PB_FLAG_IMMEDIATE) {}

private:
    GEN_PROFILER m_profiler;
};

} // namespace fitter

#endif
