// What an example of the documents has to come to.
#ifndef TESTS_DOCS_EXPECT_H
#define TESTS_DOCS_EXPECT_H

#include <cstdio>
#include <cstdlib>

/// Ends the program with status 1 and a message if the condition does not hold.
inline void expect(bool condition, char const *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::exit(1);
}

#endif
