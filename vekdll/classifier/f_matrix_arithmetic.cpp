#include "vekdll/classifier/f_matrix.h"

float** CFMatrix::fmat_sub(float** a, float** b)
{
    if (a == nullptr || b == nullptr) return nullptr;
    const int rows = fmat_rows(a);
    const int columns = fmat_columns(a);
    if (fmat_rows(b) != rows || fmat_columns(b) != columns) return nullptr;
    float** result = fmat_creat(rows, columns, nullptr);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) result[r][c] = a[r][c] - b[r][c];
    }
    return result;
}

float** CFMatrix::fmat_mul(float** a, float** b)
{
    if (a == nullptr || b == nullptr) return nullptr;
    const int rows = fmat_rows(a);
    const int inner = fmat_columns(a);
    const int columns = fmat_columns(b);
    if (fmat_rows(b) != inner) return nullptr;
    float** result = fmat_creat(rows, columns, nullptr);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            double sum = 0.0;
            for (int k = 0; k < inner; ++k) sum += static_cast<double>(a[r][k]) * static_cast<double>(b[k][c]);
            result[r][c] = static_cast<float>(sum);
        }
    }
    return result;
}

float** CFMatrix::fmat_tran(float** a)
{
    if (a == nullptr) return nullptr;
    const int rows = fmat_rows(a);
    const int columns = fmat_columns(a);
    float** result = fmat_creat(columns, rows, nullptr);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) result[c][r] = a[r][c];
    }
    return result;
}
