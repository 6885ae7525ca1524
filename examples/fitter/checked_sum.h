// A sum that tells when it no longer fits, in place of a wrong figure.
#ifndef FITTER_CHECKED_SUM_H
#define FITTER_CHECKED_SUM_H

#include "error.h"
#include "gen_math_sys.h"

#include <cstdint>
#include <string>

namespace fitter {

class CheckedSum
{
public:
    /// @param what  names the sum in the message of an overflow; a literal
    explicit CheckedSum(char const *what) : m_what(what) {}

    void add(std::int64_t amount) { m_value = GEN_MATH::add_of(m_value, amount, m_overflow); }

    /// Throws an Error if any sum on the way did not fit.
    std::int64_t value() const
    {
        if (m_overflow)
            throw Error(std::string("the ") + m_what + " is beyond 64 bits");
        return m_value;
    }

private:
    char const *m_what;
    std::int64_t m_value = 0;
    bool m_overflow = false; // sticky, so that adding costs no branch of ours
};

} // namespace fitter

#endif
