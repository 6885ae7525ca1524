// The time zone of the process.
#ifndef TESTS_SUPPORT_TIME_ZONE_H
#define TESTS_SUPPORT_TIME_ZONE_H

#include "tests/support/environment.h"

#include <memory>
#include <time.h>

/// Sets the time zone for a scope, by the text of TZ.
class TimeZone
{
public:
    explicit TimeZone(char const *zone) : m_variable(std::make_unique<Environment>("TZ", zone)) { apply(); }
    ~TimeZone()
    {
        m_variable.reset();
        apply();
    }
    TimeZone(TimeZone const &) = delete;
    TimeZone &operator=(TimeZone const &) = delete;

private:
    static void apply()
    {
#ifdef _WIN32
        _tzset();
#else
        tzset();
#endif
    }

    std::unique_ptr<Environment> m_variable;
};

#endif
