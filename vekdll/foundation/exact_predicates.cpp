// The adaptive stages of the exact predicates. Points on a common grid,
// such as raster cells, give exact coordinate differences that are short
// integers on that grid; the determinant of those is evaluated exactly in
// 128-bit integers, which settles the collinear and cocircular sets of
// gridded data quickly. Any other input is scaled by a power of two into a
// fixed working range, which changes no sign and keeps every exact product
// clear of overflow and underflow; then the determinant is evaluated
// exactly on the rounded coordinate differences, which decides unless the
// result is again within the rounding error of those differences; only then
// are the differences' own rounding errors added, which gives the exact value.

#include "vekdll/foundation/exact_predicates.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "vekdll/foundation/float_expansion.h"

namespace vek::detail {
namespace {

__extension__ typedef __int128 Int128;

// Error bounds of the stage on rounded differences: what the rounding of
// the differences themselves can change, relative to the permanent.
constexpr double kOrientDifferencesBound = (2.0 + 12.0 * kRoundoff) * kRoundoff;
constexpr double kInCircleDifferencesBound = (4.0 + 48.0 * kRoundoff) * kRoundoff;

// The binary exponent to which the largest coordinate is brought. The
// orientation's exact terms grow to 2^(2e+6) and the in-circle's to
// 2^(4e+13), which must stay below 2^1024; the smaller the exponent, the
// sooner the products of the smallest coordinates' last bits would
// underflow, so each takes about the largest that is safe.
constexpr int kOrientWorkingExponent = 500;
constexpr int kInCircleWorkingExponent = 250;

// Coordinates scaled by 2^Shift, where the exact stages work.
template <int Count>
struct ScaledCoordinates {
    double value[Count] = {};
    int shift = 0;
    bool allZero = false;
    bool finite = true;
};

// 2^exponent for an exponent of the normal range, -1022 to 1023.
double NormalPowerOfTwo(int exponent)
{
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// The binary exponent of a positive finite number: 2^e <= x < 2^(e+1).
int BinaryExponent(double x)
{
    const int biased = static_cast<int>(std::bit_cast<std::uint64_t>(x) >> 52) & 0x7FF;
    return biased != 0 ? biased - 1023 : std::ilogb(x);
}

// Multiplies every coordinate by the power of two that brings the largest
// magnitude to [2^exponent, 2^(exponent+1)). Scaling by a power of two is
// exact as long as no coordinate drops below the normal range, and it
// multiplies a determinant of degree k by 2^(k * shift), so no sign changes.
template <int Count>
ScaledCoordinates<Count> ScaleToWorkingRange(const double (&coordinates)[Count], int exponent)
{
    ScaledCoordinates<Count> scaled;
    double largest = 0.0;
    for (double c : coordinates) {
        scaled.finite = scaled.finite && std::isfinite(c);
        largest = std::max(largest, std::fabs(c));
    }
    if (!scaled.finite) return scaled;
    if (largest == 0.0) {
        scaled.allZero = true;
        return scaled;
    }
    scaled.shift = exponent - BinaryExponent(largest);
    // The shift can exceed the range of one power of two (for a subnormal
    // largest coordinate), but each half stays within it.
    const double first = NormalPowerOfTwo(scaled.shift / 2);
    const double second = NormalPowerOfTwo(scaled.shift - scaled.shift / 2);
    for (int i = 0; i < Count; ++i) scaled.value[i] = coordinates[i] * first * second;
    return scaled;
}

// A value of the scaled problem back in the caller's units. Where that
// underflows, the smallest number of the right sign stands in for it.
double Unscale(double value, int degree, int shift)
{
    const int exponent = -degree * shift;
    const double unscaled =
        exponent >= -1022 && exponent <= 1023 ? value * NormalPowerOfTwo(exponent) : std::ldexp(value, exponent);
    if (unscaled == 0.0 && value != 0.0) return std::copysign(std::numeric_limits<double>::denorm_min(), value);
    return unscaled;
}

// A finite double as mantissa * 2^exponent with an odd mantissa, or 0.
struct Dyadic {
    std::uint64_t mantissa;
    int exponent;
    bool negative;
};

Dyadic DyadicOf(double v)
{
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(v);
    const int biased = static_cast<int>(bits >> 52) & 0x7FF;
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    Dyadic d{biased == 0 ? fraction : fraction | (std::uint64_t{1} << 52), biased == 0 ? -1074 : biased - 1075,
             (bits >> 63) != 0};
    if (d.mantissa != 0) {
        const int zeros = std::countr_zero(d.mantissa);
        d.mantissa >>= zeros;
        d.exponent += zeros;
    }
    return d;
}

// The differences a[i] - b[i] as integers on their common grid 2^Exponent.
template <int Count>
struct GridDifferences {
    std::int64_t units[Count];
    int exponent = 0;
};

// True, with `grid` filled, if every difference is exact in double and all
// are below 2^bits units of the finest grid that holds them all.
template <int Count>
bool DifferencesOnGrid(const double (&a)[Count], const double (&b)[Count], int bits, GridDifferences<Count>& grid)
{
    Dyadic d[Count];
    int lowest = std::numeric_limits<int>::max();
    int highest = std::numeric_limits<int>::min();
    for (int i = 0; i < Count; ++i) {
        const ExactPair difference = TwoDiff(a[i], b[i]);
        if (difference.lo != 0.0 || !std::isfinite(difference.hi)) return false;
        d[i] = DyadicOf(difference.hi);
        if (d[i].mantissa == 0) continue;
        lowest = std::min(lowest, d[i].exponent);
        highest = std::max(highest, d[i].exponent + static_cast<int>(std::bit_width(d[i].mantissa)));
    }
    if (lowest == std::numeric_limits<int>::max()) lowest = highest = 0; // all differences 0
    if (highest - lowest > bits) return false;
    for (int i = 0; i < Count; ++i) {
        const std::int64_t units =
            d[i].mantissa == 0 ? 0 : static_cast<std::int64_t>(d[i].mantissa << (d[i].exponent - lowest));
        grid.units[i] = d[i].negative ? -units : units;
    }
    grid.exponent = lowest;
    return true;
}

// Differences of up to 2^62 units keep the orientation's products below
// 2^124; up to 2^30 units keep the in-circle lifts and cross terms below
// 2^61 and its whole determinant below 2^124.
constexpr int kOrientGridBits = 62;
constexpr int kInCircleGridBits = 30;

double OrientOnGrid(const GridDifferences<4>& g)
{
    const std::int64_t* u = g.units; // acx, acy, bcx, bcy
    const Int128 det = Int128{u[0]} * u[3] - Int128{u[1]} * u[2];
    return Unscale(static_cast<double>(det), 2, -g.exponent);
}

double InCircleOnGrid(const GridDifferences<6>& g)
{
    const std::int64_t* u = g.units; // adx, ady, bdx, bdy, cdx, cdy
    Int128 det = 0;
    for (int p = 0; p < 3; ++p) {
        const std::int64_t* first = u + 2 * ((p + 1) % 3);
        const std::int64_t* second = u + 2 * ((p + 2) % 3);
        const std::int64_t lift = u[2 * p] * u[2 * p] + u[2 * p + 1] * u[2 * p + 1];
        const std::int64_t cross = first[0] * second[1] - second[0] * first[1];
        det += Int128{lift} * cross;
    }
    return Unscale(static_cast<double>(det), 4, -g.exponent);
}

// The determinants, on coordinate differences given as expansions: single
// rounded doubles for the stage on rounded differences, exact pairs of a
// difference and its rounding error for the exact stage. One formula serves
// both, so the two stages cannot disagree on what they evaluate.
template <int K>
auto OrientOf(const Expansion<K>& acx, const Expansion<K>& acy, const Expansion<K>& bcx, const Expansion<K>& bcy)
{
    return acx * bcy - acy * bcx;
}

template <int K>
auto LiftOf(const Expansion<K>& dx, const Expansion<K>& dy)
{
    return dx * dx + dy * dy;
}

template <int K>
auto InCircleOf(const Expansion<K> (&dx)[3], const Expansion<K> (&dy)[3])
{
    const auto aTerm = LiftOf(dx[0], dy[0]) * (dx[1] * dy[2] - dx[2] * dy[1]);
    const auto bTerm = LiftOf(dx[1], dy[1]) * (dx[2] * dy[0] - dx[0] * dy[2]);
    const auto cTerm = LiftOf(dx[2], dy[2]) * (dx[0] * dy[1] - dx[1] * dy[0]);
    return aTerm + bTerm + cTerm;
}

// The exact difference a - b as an expansion of up to two components.
Expansion<2> ExactDifference(double a, double b)
{
    return Expansion<2>(TwoDiff(a, b));
}

} // namespace

double Orient2DAdaptive(double ax, double ay, double bx, double by, double cx, double cy)
{
    GridDifferences<4> grid;
    if (DifferencesOnGrid({ax, ay, bx, by}, {cx, cy, cx, cy}, kOrientGridBits, grid)) return OrientOnGrid(grid);
    const auto scaled = ScaleToWorkingRange({ax, ay, bx, by, cx, cy}, kOrientWorkingExponent);
    if (!scaled.finite) return std::numeric_limits<double>::quiet_NaN();
    if (scaled.allZero) return 0.0;
    const double* v = scaled.value;
    // Points a, b and c relative to c: x differences at even, y at odd indices.
    const double acx = v[0] - v[4];
    const double acy = v[1] - v[5];
    const double bcx = v[2] - v[4];
    const double bcy = v[3] - v[5];

    const auto rounded = OrientOf(Expansion<1>(acx), Expansion<1>(acy), Expansion<1>(bcx), Expansion<1>(bcy));
    const double estimate = rounded.Estimate();
    const double bound = kOrientDifferencesBound * (std::fabs(acx * bcy) + std::fabs(acy * bcx));
    if (estimate > bound || -estimate > bound) return Unscale(estimate, 2, scaled.shift);

    const auto acxExact = ExactDifference(v[0], v[4]);
    const auto acyExact = ExactDifference(v[1], v[5]);
    const auto bcxExact = ExactDifference(v[2], v[4]);
    const auto bcyExact = ExactDifference(v[3], v[5]);
    if (acxExact.Size() + acyExact.Size() + bcxExact.Size() + bcyExact.Size() == 4) {
        // The differences were exact, so the stage before was exact too.
        return Unscale(rounded.MostSignificant(), 2, scaled.shift);
    }
    return Unscale(OrientOf(acxExact, acyExact, bcxExact, bcyExact).MostSignificant(), 2, scaled.shift);
}

double InCircleAdaptive(double ax, double ay, double bx, double by, double cx, double cy, double dx, double dy)
{
    GridDifferences<6> grid;
    if (DifferencesOnGrid({ax, ay, bx, by, cx, cy}, {dx, dy, dx, dy, dx, dy}, kInCircleGridBits, grid)) {
        return InCircleOnGrid(grid);
    }
    const auto scaled = ScaleToWorkingRange({ax, ay, bx, by, cx, cy, dx, dy}, kInCircleWorkingExponent);
    if (!scaled.finite) return std::numeric_limits<double>::quiet_NaN();
    if (scaled.allZero) return 0.0;
    const double* v = scaled.value;
    // Points a, b and c relative to d.
    Expansion<1> roundedX[3];
    Expansion<1> roundedY[3];
    Expansion<2> exactX[3];
    Expansion<2> exactY[3];
    bool differencesExact = true;
    double permanentLift[3];
    for (int p = 0; p < 3; ++p) {
        exactX[p] = ExactDifference(v[2 * p], v[6]);
        exactY[p] = ExactDifference(v[2 * p + 1], v[7]);
        roundedX[p] = Expansion<1>(exactX[p].MostSignificant());
        roundedY[p] = Expansion<1>(exactY[p].MostSignificant());
        differencesExact = differencesExact && exactX[p].Size() == 1 && exactY[p].Size() == 1;
        const double x = exactX[p].MostSignificant();
        const double y = exactY[p].MostSignificant();
        permanentLift[p] = x * x + y * y;
    }

    const auto rounded = InCircleOf(roundedX, roundedY);
    double permanent = 0.0;
    for (int p = 0; p < 3; ++p) {
        const int q = (p + 1) % 3;
        const int r = (p + 2) % 3;
        const double cross = std::fabs(roundedX[q].MostSignificant() * roundedY[r].MostSignificant()) +
                             std::fabs(roundedX[r].MostSignificant() * roundedY[q].MostSignificant());
        permanent += cross * permanentLift[p];
    }
    const double estimate = rounded.Estimate();
    const double bound = kInCircleDifferencesBound * permanent;
    if (estimate > bound || -estimate > bound) return Unscale(estimate, 4, scaled.shift);
    if (differencesExact) return Unscale(rounded.MostSignificant(), 4, scaled.shift);
    return Unscale(InCircleOf(exactX, exactY).MostSignificant(), 4, scaled.shift);
}

} // namespace vek::detail
