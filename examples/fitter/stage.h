// Profile bins of the tool. Names and labels must be literals: the library keeps the pointers until
// the bins are processed.
#ifndef FITTER_STAGE_H
#define FITTER_STAGE_H

#include "gen_profile_bins_sys.h"

namespace fitter {

/// A stage of the flow that tells its start and its end, under a numbered step.
class Stage
{
public:
    Stage(char const *name, char const *label)
        : m_profiler("FIT", name, GEN_PB_FLAG_ANNOUNCE | GEN_PB_FLAG_IMMEDIATE, nullptr, label)
    {
    }

private:
    GEN_PROFILER m_profiler;
};

/// Work inside a stage, possibly repeated many times: accounted, not told.
class Work
{
public:
    explicit Work(char const *name) : m_profiler("FIT", name, GEN_PB_FLAG_RECORD, nullptr, nullptr) {}

private:
    GEN_PROFILER m_profiler;
};

} // namespace fitter

#endif
