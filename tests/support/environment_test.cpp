#include "tests/support/environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace {

constexpr char const *NAME = "ZEL_ENVIRONMENT_TEST";

// The value of the variable; none if it is unset.
std::optional<std::string> value()
{
    char const *const text = std::getenv(NAME);
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

TEST(EnvironmentVariable, IsSetForAScope)
{
    ASSERT_EQ(value(), std::nullopt);
    {
        Environment const outer(NAME, "outer");
        EXPECT_EQ(value(), "outer");
        {
            Environment const inner(NAME, "inner");
            EXPECT_EQ(value(), "inner");
        }
        EXPECT_EQ(value(), "outer");
    }
    EXPECT_EQ(value(), std::nullopt);
}

TEST(EnvironmentVariable, IsUnsetForAScope)
{
    Environment const outer(NAME, "outer");
    {
        Environment const unset(NAME, nullptr);
        EXPECT_EQ(value(), std::nullopt);
    }
    EXPECT_EQ(value(), "outer");
}

TEST(EnvironmentVariable, MayBeTheEmptyText)
{
    Environment const empty(NAME, "");
    EXPECT_EQ(value(), "");
    {
        Environment const inner(NAME, "inner");
        EXPECT_EQ(value(), "inner");
    }
    EXPECT_EQ(value(), "");
}

} // namespace
