#include "tests/support/environment.h"

#include <cstdlib>

#include <windows.h>

// The runtime library removes a variable that is set to the empty text. The calls below keep such a variable, as a
// process can inherit it: in the runtime's own table, and in the system's table, from which the runtime may read again.
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
