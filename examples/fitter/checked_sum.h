// A sum that reports an overflow instead of a wrong value.
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
    /// @param what  name of the sum in the message of an overflow; a literal
    explicit CheckedSum(char const *what) : m_what(what) {}

    void add(std::int64_t amount) { m_value = GEN_MATH::add_of(m_value, amount, m_overflow); }

    /// Throws an Error if any intermediate sum did not fit.
    std::int64_t value() const
    {
        if (m_overflow)
            throw Error(std::string("the ") + m_what + " is beyond 64 bits");
        return m_value;
    }

private:
    char const *m_what;
    std::int64_t m_value = 0;
    bool m_overflow = false; // tested by value() only, so that add() needs no branch
};

} // namespace fitter

#endif
