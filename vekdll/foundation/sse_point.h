#pragma once

#include <smmintrin.h>

// A point or vector as one four-lane register: x, y, z in lanes 0 to 2 and w
// in lane 3, which is 0 for a plain point. The vector functions sum all four
// lanes, so a point used in three dimensions must keep w at 0.
union alignas(16) SSEPoint {
    __m128 sse;
    float lane[4];
    __extension__ struct {
        float x;
        float y;
        float z;
        float w;
    };
};
static_assert(sizeof(SSEPoint) == 16 && alignof(SSEPoint) == 16);

// A 3 x 4 transform: each row holds in its lanes the coefficients of one
// output coordinate; lane 3 acts as a translation for inputs with w = 1.
struct alignas(16) t_ssematrix3 {
    __m128 row0;
    __m128 row1;
    __m128 row2;
};
static_assert(sizeof(t_ssematrix3) == 48);
