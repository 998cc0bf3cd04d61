#include <cstdint>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/safe_alloc.h"

// Thinning to a skeleton of width one by two alternating sub-iterations.
// Compared with the textbook method, a pixel needs at least three set
// neighbours (not two) to be removed, so two-neighbour corners and the inner
// pixels of a one-pixel line stay; and the second sub-iteration runs
// backwards.

namespace {

constexpr int kMaxRounds = 1000;
constexpr int kFewestNeighbours = 3;
constexpr int kMostNeighbours = 6;

// One int per pixel, zeroed, from the library's allocation (one spare int,
// so that an empty field still gets a valid block).
class IntPlane {
public:
    IntPlane(int width, int height)
        : width_(width), data_(static_cast<int*>(SafeCalloc(static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) + 1, sizeof(int))))
    {
    }
    ~IntPlane() { SafeFree(data_); }
    IntPlane(const IntPlane&) = delete;
    IntPlane& operator=(const IntPlane&) = delete;

    int& At(int x, int y) { return data_[static_cast<std::int64_t>(y) * width_ + x]; }

private:
    int width_;
    int* data_;
};

// The eight neighbours of a pixel, clockwise from the one above.
struct Neighbours {
    int n, ne, e, se, s, sw, w, nw;

    Neighbours(IntPlane& image, int x, int y)
        : n(image.At(x, y - 1)), ne(image.At(x + 1, y - 1)), e(image.At(x + 1, y)), se(image.At(x + 1, y + 1)),
          s(image.At(x, y + 1)), sw(image.At(x - 1, y + 1)), w(image.At(x - 1, y)), nw(image.At(x - 1, y - 1))
    {
    }

    // A: the rises from 0 to 1 once round, back to the one above.
    int Rises() const
    {
        const int ring[] = {n, ne, e, se, s, sw, w, nw, n};
        int rises = 0;
        for (int k = 0; k < 8; ++k) rises += ring[k] == 0 && ring[k + 1] == 1;
        return rises;
    }

    // B: how many are set.
    int Count() const { return n + ne + e + se + s + sw + w + nw; }
};

enum class SubIteration { First, Second };

bool IsRemovable(const Neighbours& p, SubIteration which)
{
    const int count = p.Count();
    if (p.Rises() != 1 || count < kFewestNeighbours || count > kMostNeighbours) return false;
    if (which == SubIteration::First) return p.n * p.e * p.s == 0 && p.w * p.s * p.e == 0;
    return p.n * p.e * p.w == 0 && p.n * p.w * p.s == 0;
}

// Marks the removable pixels of the inner area, forward in the first
// sub-iteration and backward in the second, then clears them from the image.
// Returns how many were cleared.
int ThinningStep(IntPlane& image, IntPlane& mark, int sizeX, int sizeY, SubIteration which)
{
    const bool forward = which == SubIteration::First;
    for (int i = 0; i < sizeY - 2; ++i) {
        const int y = forward ? 1 + i : sizeY - 2 - i;
        for (int k = 0; k < sizeX - 2; ++k) {
            const int x = forward ? 1 + k : sizeX - 2 - k;
            if (image.At(x, y) > 0 && IsRemovable(Neighbours(image, x, y), which)) mark.At(x, y) = 1;
        }
    }
    int cleared = 0;
    for (int y = 1; y < sizeY - 1; ++y) {
        for (int x = 1; x < sizeX - 1; ++x) {
            if (mark.At(x, y) == 0) continue;
            image.At(x, y) = 0;
            mark.At(x, y) = 0;
            ++cleared;
        }
    }
    return cleared;
}

} // namespace

void CSSEMatrix::ZhangSuen(float threshold)
{
    if (MatrixData == nullptr) return;
    // Out of memory for the two planes passes through as CMemoryException,
    // with the field unchanged.
    IntPlane image(SizeX, SizeY);
    IntPlane mark(SizeX, SizeY);
    for (int y = 0; y < SizeY; ++y) {
        for (int x = 0; x < SizeX; ++x) image.At(x, y) = *PixelAddress(x, y) > threshold ? 1 : 0;
    }
    for (int round = 0; round < kMaxRounds; ++round) {
        if (ThinningStep(image, mark, SizeX, SizeY, SubIteration::First) == 0) break;
        if (ThinningStep(image, mark, SizeX, SizeY, SubIteration::Second) == 0) break;
    }
    // The skeleton as 1.0 on 0; the outermost frame and the padding are 0.
    SetAllPixelValuesToZero();
    for (int y = 1; y < SizeY - 1; ++y) {
        for (int x = 1; x < SizeX - 1; ++x) {
            if (image.At(x, y) != 0) *PixelAddress(x, y) = 1.0f;
        }
    }
}
