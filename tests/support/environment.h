// An environment variable set or unset for a scope.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H
#define TESTS_SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <optional>
#include <string>

class Environment
{
public:
    /// A null value unsets. An empty one sets the variable to the empty text, also on Windows.
    Environment(char const *name, char const *value) : m_name(name)
    {
        if (char const *former = std::getenv(name))
            m_former = former;
        put(name, value);
    }
    ~Environment() { put(m_name.c_str(), m_former ? m_former->c_str() : nullptr); }
    Environment(Environment const &) = delete;
    Environment &operator=(Environment const &) = delete;

    static void put(char const *name, char const *value);

private:
    std::string m_name;
    std::optional<std::string> m_former;
};

#endif
