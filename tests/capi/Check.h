/* What the checks in C share: a condition that doesn't hold is told with its place, and the program fails. */
#ifndef CHECK_H
#define CHECK_H

#include <stdio.h>
#include <string.h>

static int s_failures = 0;
static const char* s_where = ""; /* what is looked at, for those that go through a table */
static int s_case = 0;

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            if (s_where[0]) fprintf(stderr, "  %s, %d\n", s_where, s_case); \
            ++s_failures;                                                   \
        }                                                                   \
    } while (0)

/* Whether two texts, of which either may be NULL, are the same. */
static inline int same(const char* a, const char* b) { return a && b ? strcmp(a, b) == 0 : a == b; }

#endif
