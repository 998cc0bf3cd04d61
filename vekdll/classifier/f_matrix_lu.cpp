#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "vekdll/classifier/f_matrix.h"

// Inverse and determinant share one LU decomposition with partial pivoting.
// It runs in double: the covariance matrices of the classifier are often
// badly conditioned (features of very different scales), and the float
// inputs are exact in double, so only the final result is rounded to float.
namespace {

struct LuDecomposition {
    int n = 0;
    std::vector<double> lu;   // L below the diagonal (unit diagonal implied), U on and above, row-major
    std::vector<int> pivot;   // row of the input that ended up in row i
    int sign = 1;             // +1 or -1: the parity of the row exchanges
    bool singular = false;    // a pivot column had nothing but zeros left

    double& At(int r, int c) { return lu[static_cast<std::size_t>(r) * static_cast<std::size_t>(n) + static_cast<std::size_t>(c)]; }
};

LuDecomposition Decompose(float** a, int n)
{
    LuDecomposition d;
    d.n = n;
    d.lu.resize(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    d.pivot.resize(n);
    for (int r = 0; r < n; ++r) {
        d.pivot[r] = r;
        for (int c = 0; c < n; ++c) d.At(r, c) = a[r][c];
    }
    for (int k = 0; k < n; ++k) {
        // Partial pivoting: the largest magnitude in column k at or below row k.
        int best = k;
        for (int r = k + 1; r < n; ++r) {
            if (std::fabs(d.At(r, k)) > std::fabs(d.At(best, k))) best = r;
        }
        if (d.At(best, k) == 0.0) {
            d.singular = true;
            return d;
        }
        if (best != k) {
            for (int c = 0; c < n; ++c) std::swap(d.At(k, c), d.At(best, c));
            std::swap(d.pivot[k], d.pivot[best]);
            d.sign = -d.sign;
        }
        for (int r = k + 1; r < n; ++r) {
            const double factor = d.At(r, k) / d.At(k, k);
            d.At(r, k) = factor;
            for (int c = k + 1; c < n; ++c) d.At(r, c) -= factor * d.At(k, c);
        }
    }
    return d;
}

bool IsSquare(float** a)
{
    return a != nullptr && CFMatrix::fmat_rows(a) == CFMatrix::fmat_columns(a);
}

} // namespace

double CFMatrix::fmat_det(float** a)
{
    if (!IsSquare(a)) return std::numeric_limits<double>::quiet_NaN();
    LuDecomposition d = Decompose(a, fmat_rows(a));
    if (d.singular) return 0.0;
    double det = d.sign;
    for (int k = 0; k < d.n; ++k) det *= d.At(k, k);
    return det;
}

float** CFMatrix::fmat_inv(float** a)
{
    if (!IsSquare(a)) return nullptr;
    const int n = fmat_rows(a);
    LuDecomposition d = Decompose(a, n);
    if (d.singular) return nullptr;

    float** result = fmat_creat(n, n, nullptr);
    std::vector<double> column(n);
    // Column j of the inverse solves L U x = P e_j.
    for (int j = 0; j < n; ++j) {
        for (int r = 0; r < n; ++r) {
            double sum = d.pivot[r] == j ? 1.0 : 0.0;
            for (int c = 0; c < r; ++c) sum -= d.At(r, c) * column[c];
            column[r] = sum;
        }
        for (int r = n - 1; r >= 0; --r) {
            double sum = column[r];
            for (int c = r + 1; c < n; ++c) sum -= d.At(r, c) * column[c];
            column[r] = sum / d.At(r, r);
        }
        for (int r = 0; r < n; ++r) result[r][j] = static_cast<float>(column[r]);
    }
    return result;
}
