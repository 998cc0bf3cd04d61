#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "vekdll/classifier/f_matrix.h"

namespace {

struct Free {
    void operator()(float** m) const { CFMatrix::fmat_free(m); }
};
using Matrix = std::unique_ptr<float*, Free>;

Matrix Make(int rows, int columns, std::vector<float> values)
{
    return Matrix(CFMatrix::fmat_creat(rows, columns, values.data()));
}

std::vector<float> Elements(const Matrix& m)
{
    return std::vector<float>(m.get()[0], m.get()[0] + CFMatrix::fmat_rows(m.get()) * CFMatrix::fmat_columns(m.get()));
}

// Laplace expansion along the first row of the row-major n x n matrix `a`:
// slow, but it shares nothing with elimination.
double LaplaceDeterminant(const std::vector<float>& a, int n)
{
    double det = n == 0 ? 1.0 : 0.0;
    for (int column = 0; column < n; ++column) {
        std::vector<float> minor;
        for (int i = n; i < n * n; ++i) {
            if (i % n != column) minor.push_back(a[i]);
        }
        det += (column % 2 == 0 ? 1.0 : -1.0) * a[column] * LaplaceDeterminant(minor, n - 1);
    }
    return det;
}

TEST(CFMatrix, ProductDifferenceAndTransposeByHandAndMisfitsGiveNull)
{
    const Matrix a = Make(2, 3, {1, 2, 3, 4, 5, 6}), b = Make(3, 2, {7, 8, 9, 10, 11, 12});
    const Matrix product(CFMatrix::fmat_mul(a.get(), b.get())), transposed(CFMatrix::fmat_tran(b.get()));
    EXPECT_EQ(CFMatrix::fmat_columns(product.get()), 2);
    EXPECT_EQ(Elements(product), (std::vector<float>{58, 64, 139, 154})); // 7 + 18 + 33, 8 + 20 + 36, ...
    EXPECT_EQ(Elements(Matrix(CFMatrix::fmat_sub(a.get(), transposed.get()))), (std::vector<float>{1 - 7, 2 - 9, 3 - 11, 4 - 8, 5 - 10, 6 - 12}));
    EXPECT_EQ(Elements(Matrix(CFMatrix::fmat_creat(2, 3, nullptr))), std::vector<float>(6, 0.0f));
    EXPECT_EQ(CFMatrix::fmat_sub(a.get(), b.get()), nullptr);
    EXPECT_EQ(CFMatrix::fmat_mul(a.get(), a.get()), nullptr);
    EXPECT_EQ(CFMatrix::fmat_inv(a.get()), nullptr);
    EXPECT_TRUE(std::isnan(CFMatrix::fmat_det(a.get())));
}

TEST(CFMatrix, InverseAndDeterminantOfRandomMatricesMatchIndependentChecks)
{
    std::mt19937 engine(20240611);
    for (int trial = 0; trial < 60; ++trial) {
        const int n = 1 + trial % 5;
        std::vector<float> values(n * n);
        // Small integers keep the expansion exact; zeros force row exchanges.
        for (float& v : values) v = static_cast<float>(static_cast<int>(engine() % 19) - 9);
        const Matrix a = Make(n, n, values);
        const double expected = LaplaceDeterminant(values, n);
        EXPECT_NEAR(CFMatrix::fmat_det(a.get()), expected, 1e-9 * std::max(1.0, std::fabs(expected))) << trial;
        if (expected == 0.0) continue;
        const Matrix inverse(CFMatrix::fmat_inv(a.get()));
        ASSERT_NE(inverse.get(), nullptr) << trial;
        for (int i = 0; i < n * n; ++i) {
            double sum = 0.0;
            for (int k = 0; k < n; ++k) sum += static_cast<double>(a.get()[i / n][k]) * inverse.get()[k][i % n];
            EXPECT_NEAR(sum, i / n == i % n ? 1.0 : 0.0, 1e-4) << trial;
        }
    }
    // Singular matrices have determinant exactly 0 and no inverse; the empty one is the identity.
    for (const Matrix& singular : {Make(3, 3, std::vector<float>(9, 0.0f)), Make(3, 3, {1, 2, 3, 2, 4, 6, 0, 1, 5})}) {
        EXPECT_EQ(CFMatrix::fmat_det(singular.get()), 0.0);
        EXPECT_EQ(CFMatrix::fmat_inv(singular.get()), nullptr);
    }
    EXPECT_EQ(CFMatrix::fmat_det(Make(0, 0, {}).get()), 1.0);
}

} // namespace
