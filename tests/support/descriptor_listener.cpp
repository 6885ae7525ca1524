#include "tests/support/descriptor_listener.h"

namespace {

bool listen()
{
    testing::UnitTest::GetInstance()->listeners().Append(new DescriptorListener);
    return true;
}

// The listener belongs to GoogleTest. Nothing reads the variable.
[[maybe_unused]] bool const l_listens = listen();

} // namespace
