// The adaptive stages of the exact predicates. Each first scales the
// coordinates by a power of two into a fixed working range, which changes
// no sign and keeps every exact product clear of overflow and underflow;
// then it evaluates the determinant exactly on the rounded coordinate
// differences, which decides unless the result is again within the rounding
// error of those differences; only then does it add the differences' own
// rounding errors and so evaluate the determinant exactly.

#include "vekdll/foundation/exact_predicates.h"

#include <limits>

#include "vekdll/foundation/float_expansion.h"

namespace vek::detail {
namespace {

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

double PowerOfTwo(int exponent)
{
    return std::ldexp(1.0, exponent);
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
    for (double c : coordinates) largest = std::fmax(largest, std::fabs(c));
    for (double c : coordinates) scaled.finite = scaled.finite && std::isfinite(c);
    if (!scaled.finite) return scaled;
    if (largest == 0.0) {
        scaled.allZero = true;
        return scaled;
    }
    scaled.shift = exponent - std::ilogb(largest);
    // The shift can exceed what one double power of two holds (a subnormal
    // largest coordinate), so it is applied in two halves.
    const int half = scaled.shift / 2;
    const double first = PowerOfTwo(half);
    const double second = PowerOfTwo(scaled.shift - half);
    for (int i = 0; i < Count; ++i) scaled.value[i] = coordinates[i] * first * second;
    return scaled;
}

// A value of the scaled problem back in the caller's units. Where that
// underflows, the smallest number of the right sign stands in for it.
double Unscale(double value, int degree, int shift)
{
    const double unscaled = std::ldexp(value, -degree * shift);
    if (unscaled == 0.0 && value != 0.0) return std::copysign(std::numeric_limits<double>::denorm_min(), value);
    return unscaled;
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
