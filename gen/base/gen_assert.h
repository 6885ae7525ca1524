// The check of a precondition; it stays in release builds.
#ifndef GEN_ASSERT_H
#define GEN_ASSERT_H

#include "err_sys.h"

/// Ends the process with an internal error that shows `text` if the condition does not hold.
#define GEN_ASSERT(condition, text)                                                                                    \
    ((condition) ? static_cast<void>(0) : err_report_internal_error((text), "GEN", __FILE__, __LINE__))

#endif
