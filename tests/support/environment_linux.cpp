#include "tests/support/environment.h"

#include <cstdlib>

void Environment::put(char const *name, char const *value)
{
    if (value == nullptr)
        unsetenv(name);
    else
        setenv(name, value, /*overwrite=*/1);
}
