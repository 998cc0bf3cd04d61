#pragma once

#include "vekdll/export.h"

// Small dense float matrices for the classifier's statistics.
//
// A matrix is a `float**`: an array of row pointers, so that element (r, c)
// is m[r][c]. Its sizes sit in a hidden header just in front of the row
// pointers, which is why the operations below take no sizes. The elements of
// all rows are one contiguous block, row after row, so m[0] is also the whole
// matrix in row-major order (when it has at least one row).
//
// Every operation that makes a matrix returns a new one that the caller
// releases with fmat_free. Matrices of 0 rows or columns are valid. An
// operation that cannot produce a result (a null argument, sizes that don't
// fit together, a singular matrix to invert) returns null and touches
// nothing; fmat_free accepts null.
class VEKDLL_API CFMatrix {
public:
    // A rows x columns matrix. With `values` null it is zeroed, otherwise it
    // takes rows x columns values from `values`, row by row. Negative sizes
    // give null; a matrix too large for memory throws CMemoryException.
    static float** fmat_creat(int rows, int columns, const float* values);
    static void fmat_free(float** m);

    // The sizes kept in the header; 0 for a null matrix.
    static int fmat_rows(float** m);
    static int fmat_columns(float** m);

    // a - b, element by element; null unless both have the same sizes.
    static float** fmat_sub(float** a, float** b);
    // The product a x b; null unless a has as many columns as b has rows.
    // Each element is a dot product summed in double from the first term on.
    static float** fmat_mul(float** a, float** b);
    // The transpose.
    static float** fmat_tran(float** a);

    // The inverse, by LU decomposition with partial pivoting carried out in
    // double. Null if `a` is not square or is singular, that is, if a pivot
    // is exactly zero.
    static float** fmat_inv(float** a);
    // The determinant, from the same decomposition: exactly 0.0 for a
    // singular matrix, 1.0 for a 0 x 0 one, not-a-number for a null or
    // non-square matrix.
    static double fmat_det(float** a);
};
