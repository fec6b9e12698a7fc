// How alike one stretch of samples is to each place of a longer one: a sum of products for each shift, by
// three transforms in place of a product of lengths.
#pragma once

#include <cstddef>

// sums[k], k from 0 to countB - countA, is the sum of a[i] * b[i + k]. Throws std::bad_alloc.
void Correlate(const float* a, size_t countA, const float* b, size_t countB, float* sums);
