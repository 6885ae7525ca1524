#include "tests/support/captured_output.h"
#include "tests/support/internal_error.h"

#include "gen_path_sys.h"
#include "gen_string_sys.h"

#include <gtest/gtest.h>

#include <string>

using testing::ExitedWithCode;

// example
