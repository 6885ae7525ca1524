#include "tests/support/environment.h"

#ifdef _WIN32
#include <windows.h>

// The runtime's own table takes an empty value for a removal; the calls below leave the variable
// there with an empty text, as a parent process may hand it down, and also in the system's table,
// from which the runtime may read its own anew.
void Environment::put(char const *name, char const *value)
{
    if (value == nullptr || *value != '\0') {
        _putenv_s(name, value == nullptr ? "" : value);
        return;
    }
    _putenv_s(name, "x");
    *std::getenv(name) = '\0';
    SetEnvironmentVariableA(name, "");
}
#else
void Environment::put(char const *name, char const *value)
{
    if (value == nullptr)
        unsetenv(name);
    else
        setenv(name, value, /*overwrite=*/1);
}
#endif
