#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "vekdll/classifier/f_matrix.h"

namespace {

// Owns a matrix for the length of a test.
struct Matrix {
    explicit Matrix(float** m) : m(m) {}
    Matrix(int rows, int columns, std::vector<float> values) : m(CFMatrix::fmat_creat(rows, columns, values.data())) {}
    ~Matrix() { CFMatrix::fmat_free(m); }
    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;
    float** m;
};

// Determinant as the Leibniz sum over all permutations: slow, but it shares
// nothing with elimination.
double LeibnizDeterminant(float** a, int n)
{
    std::vector<int> p(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) p[i] = i;
    double det = 0.0;
    do {
        double product = 1.0;
        for (int i = 0; i < n; ++i) {
            product *= a[i][p[i]];
            for (int j = i + 1; j < n; ++j) product *= p[i] > p[j] ? -1.0 : 1.0;
        }
        det += product;
    } while (std::next_permutation(p.begin(), p.end()));
    return det;
}

TEST(CFMatrixTest, ElementwiseProductAndTransposeFollowTheHandCalculation)
{
    Matrix zero(CFMatrix::fmat_creat(2, 3, 0));
    EXPECT_EQ(CFMatrix::fmat_rows(zero.m), 2);
    EXPECT_EQ(CFMatrix::fmat_columns(zero.m), 3);
    EXPECT_EQ(zero.m[1][2], 0.0f);

    Matrix a(2, 3, {1, 2, 3, 4, 5, 6});
    Matrix b(3, 2, {7, 8, 9, 10, 11, 12});
    Matrix product(CFMatrix::fmat_mul(a.m, b.m));
    ASSERT_EQ(CFMatrix::fmat_rows(product.m), 2);
    ASSERT_EQ(CFMatrix::fmat_columns(product.m), 2);
    EXPECT_EQ(product.m[0][0], 58.0f);  // 7 + 18 + 33
    EXPECT_EQ(product.m[0][1], 64.0f);  // 8 + 20 + 36
    EXPECT_EQ(product.m[1][0], 139.0f); // 28 + 45 + 66
    EXPECT_EQ(product.m[1][1], 154.0f); // 32 + 50 + 72

    Matrix transposed(CFMatrix::fmat_tran(b.m));
    Matrix difference(CFMatrix::fmat_sub(a.m, transposed.m));
    ASSERT_EQ(CFMatrix::fmat_rows(difference.m), 2);
    EXPECT_EQ(difference.m[0][1], 2.0f - 9.0f);
    EXPECT_EQ(difference.m[1][2], 6.0f - 12.0f);

    // Sizes that don't fit, and null arguments, give null or not-a-number.
    EXPECT_EQ(CFMatrix::fmat_sub(a.m, b.m), nullptr);
    EXPECT_EQ(CFMatrix::fmat_mul(a.m, a.m), nullptr);
    EXPECT_EQ(CFMatrix::fmat_inv(a.m), nullptr);
    EXPECT_TRUE(std::isnan(CFMatrix::fmat_det(a.m)));
    EXPECT_EQ(CFMatrix::fmat_tran(nullptr), nullptr);
    EXPECT_EQ(CFMatrix::fmat_creat(-1, 2, nullptr), nullptr);
    CFMatrix::fmat_free(nullptr);
}

TEST(CFMatrixTest, InverseAndDeterminantOfRandomMatricesMatchIndependentChecks)
{
    std::mt19937 engine(20240611);
    for (int trial = 0; trial < 60; ++trial) {
        const int n = 1 + trial % 5;
        std::vector<float> values(static_cast<std::size_t>(n * n));
        // Small integers keep the Leibniz sum exact; zeros force row exchanges.
        for (float& v : values) v = static_cast<float>(static_cast<int>(engine() % 19) - 9);
        Matrix a(n, n, values);

        const double expected = LeibnizDeterminant(a.m, n);
        EXPECT_NEAR(CFMatrix::fmat_det(a.m), expected, 1e-9 * std::max(1.0, std::fabs(expected))) << trial;
        if (expected == 0.0) continue;
        Matrix inverse(CFMatrix::fmat_inv(a.m));
        ASSERT_NE(inverse.m, nullptr) << trial;
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < n; ++c) {
                double sum = 0.0;
                for (int k = 0; k < n; ++k) sum += static_cast<double>(a.m[r][k]) * inverse.m[k][c];
                EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-4) << trial;
            }
        }
    }
}

TEST(CFMatrixTest, SingularMatricesHaveDeterminantZeroAndNoInverse)
{
    Matrix zero(CFMatrix::fmat_creat(3, 3, nullptr));
    EXPECT_EQ(CFMatrix::fmat_det(zero.m), 0.0);
    EXPECT_EQ(CFMatrix::fmat_inv(zero.m), nullptr);

    Matrix dependentRows(3, 3, {1, 2, 3, 2, 4, 6, 0, 1, 5});
    EXPECT_EQ(CFMatrix::fmat_det(dependentRows.m), 0.0);
    EXPECT_EQ(CFMatrix::fmat_inv(dependentRows.m), nullptr);

    // The empty matrix is the identity of size 0.
    Matrix empty(CFMatrix::fmat_creat(0, 0, nullptr));
    EXPECT_EQ(CFMatrix::fmat_det(empty.m), 1.0);
}

} // namespace
