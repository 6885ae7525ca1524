// Which of the two platforms a test runs on, for expectations that differ between them.
#ifndef TESTS_SUPPORT_PLATFORM_H
#define TESTS_SUPPORT_PLATFORM_H

#ifdef _WIN32
constexpr bool ON_WINDOWS = true;
#else
constexpr bool ON_WINDOWS = false;
#endif

#endif
