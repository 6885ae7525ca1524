// Profile bins of the tool. Names, labels and tags must be literals: the library keeps the pointers until the bins are
// processed.
//
// A tag says which subject a stage's cost belongs to: "netlist", "wires" or "timing", null for none of them.
#ifndef FITTER_STAGE_H
#define FITTER_STAGE_H

#include "gen_profile_bins_sys.h"
#include "gen_tracq_sys.h"

namespace fitter {

/// A stage of the flow that tells its start and its end, under a numbered step.
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

/// Work inside a stage, possibly repeated many times: accounted, not told.
class Work
{
public:
    explicit Work(char const *name) : m_profiler("FIT", name, GEN_PB_FLAG_RECORD) {}

private:
    GEN_PROFILER m_profiler;
};

/// Work that others look at while it runs, so that its bin must be there: the first part of a stage, where the library
/// cuts its memory logs, and what logs a cookie, which takes the place of the current bin.
class VisibleWork
{
public:
    explicit VisibleWork(char const *name) : m_profiler("FIT", name, GEN_PB_FLAG_IMMEDIATE) {}

private:
    GEN_PROFILER m_profiler;
};

} // namespace fitter

#endif
