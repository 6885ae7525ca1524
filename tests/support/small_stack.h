// A thread whose stack is too small for a call per level of a deep structure.
#ifndef TESTS_SUPPORT_SMALL_STACK_H
#define TESTS_SUPPORT_SMALL_STACK_H

#include <gtest/gtest.h>

#include <pthread.h>

/// Runs `work` on such a thread, and waits for it.
template <typename Work>
void run_on_small_stack(Work work)
{
    constexpr std::size_t STACK_SIZE = std::size_t{256} * 1024;
    pthread_attr_t attributes;
    pthread_t thread;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, STACK_SIZE), 0);
    auto const call = [](void *context) -> void * {
        (*static_cast<Work *>(context))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, call, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

#endif
