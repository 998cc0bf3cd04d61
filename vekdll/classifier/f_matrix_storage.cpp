#include <cstdint>
#include <cstring>

#include "vekdll/classifier/f_matrix.h"
#include "vekdll/foundation/safe_alloc.h"

// One allocation holds the header, the row pointers and the elements:
//
//     [ MatrixHeader, padded to 16 bytes ][ rows x float* ][ rows x columns x float ]
//                                          ^ the float** handed out
//
// so a matrix is released with one free, and the sizes travel with the
// pointer that every operation receives.
namespace {

struct MatrixHeader {
    int rows;
    int columns;
};

constexpr std::uint64_t kHeaderBytes = 16;
static_assert(sizeof(MatrixHeader) <= kHeaderBytes);
static_assert(kHeaderBytes % alignof(float*) == 0);

MatrixHeader* HeaderOf(float** m)
{
    return reinterpret_cast<MatrixHeader*>(reinterpret_cast<char*>(m) - kHeaderBytes);
}

} // namespace

float** CFMatrix::fmat_creat(int rows, int columns, const float* values)
{
    if (rows < 0 || columns < 0) return nullptr;
    // Both sizes are below 2^31, so neither product overflows 64 bits.
    const std::uint64_t elements = static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns);
    const std::uint64_t pointerBytes = static_cast<std::uint64_t>(rows) * sizeof(float*);
    const std::uint64_t total = kHeaderBytes + pointerBytes + elements * sizeof(float);
    char* block = static_cast<char*>(SafeMalloc(total));

    auto* header = reinterpret_cast<MatrixHeader*>(block);
    header->rows = rows;
    header->columns = columns;
    auto** m = reinterpret_cast<float**>(block + kHeaderBytes);
    auto* data = reinterpret_cast<float*>(block + kHeaderBytes + pointerBytes);
    for (int r = 0; r < rows; ++r) m[r] = data + static_cast<std::uint64_t>(r) * static_cast<std::uint64_t>(columns);

    const std::size_t dataBytes = static_cast<std::size_t>(elements * sizeof(float));
    if (values != nullptr) {
        if (dataBytes != 0) std::memcpy(data, values, dataBytes);
    } else {
        std::memset(data, 0, dataBytes);
    }
    return m;
}

void CFMatrix::fmat_free(float** m)
{
    if (m == nullptr) return;
    SafeFree(HeaderOf(m));
}

int CFMatrix::fmat_rows(float** m)
{
    return m != nullptr ? HeaderOf(m)->rows : 0;
}

int CFMatrix::fmat_columns(float** m)
{
    return m != nullptr ? HeaderOf(m)->columns : 0;
}
