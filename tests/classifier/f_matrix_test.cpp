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

// Determinant by the Leibniz sum over all permutations: slow, but shares
// nothing with elimination.
double LeibnizDeterminant(float** a, int n)
{
    std::vector<int> p(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) p[i] = i;
    double det = 0.0;
    do {
        int inversions = 0;
        for (int i = 0; i < n; ++i) {
            for (int j = i + 1; j < n; ++j) inversions += p[i] > p[j] ? 1 : 0;
        }
        double product = inversions % 2 == 0 ? 1.0 : -1.0;
        for (int i = 0; i < n; ++i) product *= a[i][p[i]];
        det += product;
    } while (std::next_permutation(p.begin(), p.end()));
    return det;
}

TEST(CFMatrixTest, CreatedMatricesKnowTheirSizesAndHoldRowsContiguously)
{
    Matrix zero(CFMatrix::fmat_creat(2, 3, 0));
    ASSERT_NE(zero.m, nullptr);
    EXPECT_EQ(CFMatrix::fmat_rows(zero.m), 2);
    EXPECT_EQ(CFMatrix::fmat_columns(zero.m), 3);
    for (int r = 0; r < 2; ++r) {
        for (int c = 0; c < 3; ++c) EXPECT_EQ(zero.m[r][c], 0.0f);
    }

    Matrix filled(2, 3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(filled.m[0][2], 3.0f);
    EXPECT_EQ(filled.m[1][0], 4.0f);
    EXPECT_EQ(filled.m[1], filled.m[0] + 3); // one block, row after row

    Matrix empty(CFMatrix::fmat_creat(0, 4, nullptr));
    ASSERT_NE(empty.m, nullptr);
    EXPECT_EQ(CFMatrix::fmat_rows(empty.m), 0);
    EXPECT_EQ(CFMatrix::fmat_columns(empty.m), 4);

    EXPECT_EQ(CFMatrix::fmat_creat(-1, 2, nullptr), nullptr);
    EXPECT_EQ(CFMatrix::fmat_creat(2, -1, nullptr), nullptr);
    EXPECT_EQ(CFMatrix::fmat_rows(nullptr), 0);
    CFMatrix::fmat_free(nullptr);
}

TEST(CFMatrixTest, DifferenceProductAndTransposeFollowTheHandCalculation)
{
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
    ASSERT_EQ(CFMatrix::fmat_columns(difference.m), 3);
    const float expected[2][3] = {{1 - 7, 2 - 9, 3 - 11}, {4 - 8, 5 - 10, 6 - 12}};
    for (int r = 0; r < 2; ++r) {
        for (int c = 0; c < 3; ++c) EXPECT_EQ(difference.m[r][c], expected[r][c]);
    }

    // A row vector times a column vector is the dot product.
    Matrix row(1, 3, {1, 2, 3});
    Matrix column(3, 1, {4, 5, 6});
    Matrix dot(CFMatrix::fmat_mul(row.m, column.m));
    EXPECT_EQ(dot.m[0][0], 32.0f);
}

TEST(CFMatrixTest, MismatchedSizesAndNullArgumentsGiveNull)
{
    Matrix a(2, 3, {1, 2, 3, 4, 5, 6});
    Matrix b(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(CFMatrix::fmat_sub(a.m, b.m), nullptr);
    EXPECT_EQ(CFMatrix::fmat_mul(a.m, b.m), nullptr); // 3 columns against 2 rows
    EXPECT_EQ(CFMatrix::fmat_sub(nullptr, b.m), nullptr);
    EXPECT_EQ(CFMatrix::fmat_mul(b.m, nullptr), nullptr);
    EXPECT_EQ(CFMatrix::fmat_tran(nullptr), nullptr);
    EXPECT_EQ(CFMatrix::fmat_inv(a.m), nullptr);
    EXPECT_EQ(CFMatrix::fmat_inv(nullptr), nullptr);
    EXPECT_TRUE(std::isnan(CFMatrix::fmat_det(a.m)));
    EXPECT_TRUE(std::isnan(CFMatrix::fmat_det(nullptr)));
}

TEST(CFMatrixTest, InverseAndDeterminantOfRandomMatricesMatchIndependentChecks)
{
    std::mt19937 engine(20240611);
    for (int trial = 0; trial < 60; ++trial) {
        const int n = 1 + trial % 5;
        std::vector<float> values(static_cast<std::size_t>(n * n));
        // Small integers keep the Leibniz sum exact in double.
        for (float& v : values) v = static_cast<float>(static_cast<int>(engine() % 19) - 9);
        Matrix a(n, n, values);

        const double det = CFMatrix::fmat_det(a.m);
        const double expected = LeibnizDeterminant(a.m, n);
        EXPECT_NEAR(det, expected, 1e-9 * std::max(1.0, std::fabs(expected))) << "trial " << trial;

        Matrix inverse(CFMatrix::fmat_inv(a.m));
        if (expected == 0.0) continue; // singular draws are covered below
        ASSERT_NE(inverse.m, nullptr) << "trial " << trial;
        // A x A^-1 = I, up to the float rounding of the inverse.
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < n; ++c) {
                double sum = 0.0;
                for (int k = 0; k < n; ++k) sum += static_cast<double>(a.m[r][k]) * inverse.m[k][c];
                EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-4) << "trial " << trial;
            }
        }
    }
}

TEST(CFMatrixTest, PivotingHandlesAZeroLeadingElement)
{
    // Without row exchanges the first pivot would be 0.
    Matrix swap(2, 2, {0, 2, 3, 0});
    EXPECT_EQ(CFMatrix::fmat_det(swap.m), -6.0);
    Matrix inverse(CFMatrix::fmat_inv(swap.m));
    ASSERT_NE(inverse.m, nullptr);
    EXPECT_FLOAT_EQ(inverse.m[0][0], 0.0f);
    EXPECT_FLOAT_EQ(inverse.m[0][1], 1.0f / 3.0f);
    EXPECT_FLOAT_EQ(inverse.m[1][0], 0.5f);
    EXPECT_FLOAT_EQ(inverse.m[1][1], 0.0f);
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
    Matrix emptyInverse(CFMatrix::fmat_inv(empty.m));
    EXPECT_NE(emptyInverse.m, nullptr);
}

} // namespace
