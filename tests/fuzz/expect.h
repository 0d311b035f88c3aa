#pragma once

#include <cstdio>
#include <cstdlib>

// What must hold whatever the input is: ends the program, which keeps the input, where it does not.
#define EXPECT(condition)                                                                          \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "expected: %s (%s:%d)\n", #condition, __FILE__, __LINE__);        \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
