// Finds tests that leave descriptors open.
#ifndef TESTS_SUPPORT_DESCRIPTOR_LISTENER_H
#define TESTS_SUPPORT_DESCRIPTOR_LISTENER_H

#include "tests/support/open_descriptors.h"

#include <gtest/gtest.h>

/// Fails each test that ends with more open descriptors than it began with, its fixture included. An executable has one
/// if it is added with DESCRIPTORS (cmake/ZelTest.cmake). A descriptor that a library opens once and keeps is opened
/// before the first test, in such an executable.
class DescriptorListener : public testing::EmptyTestEventListener
{
public:
    void OnTestStart(testing::TestInfo const &) override { m_before = open_descriptor_count(); }

    void OnTestEnd(testing::TestInfo const &) override
    {
        EXPECT_LE(open_descriptor_count(), m_before) << "the test leaves descriptors open";
    }

private:
    std::size_t m_before = 0;
};

#endif
