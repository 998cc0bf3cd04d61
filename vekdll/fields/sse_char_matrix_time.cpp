#include <algorithm>
#include <memory>
#include <vector>

#include "vekdll/fields/byte_lanes.h"
#include "vekdll/fields/curve_smoothing.h"
#include "vekdll/fields/sse_char_matrix.h"

// Analysis of a field whose x axis is time: column profiles, the count of
// humps along x, differences along x and a measure of spread.

namespace {

// The state machine counts rises that are each separated from the one before
// by a fall.
enum class Slope { Start, Rising, Fallen };

int CountRises(const std::vector<int>& slopeClass, int first, int end)
{
    int count = 0;
    Slope state = Slope::Start;
    for (int i = first; i < end; ++i) {
        const bool rises = slopeClass[i] > 1;
        const bool falls = slopeClass[i] < -1;
        if ((state == Slope::Start || state == Slope::Fallen) && rises) {
            state = Slope::Rising;
            ++count;
        } else if (state == Slope::Rising && falls) {
            state = Slope::Fallen;
        }
    }
    return count;
}

// The spread of the five samples around the middle one, for the four bytes
// of each quarter of the vectors as 32-bit lanes: m the truncated mean of the
// five, r = truncate(sqrt(5 (first - m)^2)) - 63, limited to -63 ... 63. Only
// the deviation of the first sample is taken, scaled by 5; that is the
// measure, not a variance over all five.
__m128i SpreadOfFiveQuarter(const __m128i* five, int quarter)
{
    __m128i samples[5];
    for (int k = 0; k < 5; ++k) {
        __m128i shifted = five[k];
        switch (quarter) {
        case 1: shifted = _mm_srli_si128(shifted, 4); break;
        case 2: shifted = _mm_srli_si128(shifted, 8); break;
        case 3: shifted = _mm_srli_si128(shifted, 12); break;
        default: break;
        }
        samples[k] = _mm_cvtepi8_epi32(shifted);
    }
    const __m128i sum = _mm_add_epi32(_mm_add_epi32(_mm_add_epi32(samples[0], samples[1]), _mm_add_epi32(samples[2], samples[3])), samples[4]);
    // The sum lies within -640 ... 635: its float quotient by 5 is never so
    // close to an integer that truncating it differs from integer division.
    const __m128i mean = _mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(sum), _mm_set1_ps(5.0f)));
    const __m128i deviation = _mm_sub_epi32(samples[0], mean);
    const __m128i scaledSquare = _mm_mullo_epi32(_mm_mullo_epi32(deviation, deviation), _mm_set1_epi32(5));
    const __m128i root = _mm_cvttps_epi32(_mm_sqrt_ps(_mm_cvtepi32_ps(scaledSquare)));
    const __m128i centred = _mm_sub_epi32(root, _mm_set1_epi32(63));
    return _mm_max_epi32(_mm_set1_epi32(-63), _mm_min_epi32(_mm_set1_epi32(63), centred));
}

__m128i SpreadOfFive(const __m128i* five)
{
    const __m128i low = _mm_packs_epi32(SpreadOfFiveQuarter(five, 0), SpreadOfFiveQuarter(five, 1));
    const __m128i high = _mm_packs_epi32(SpreadOfFiveQuarter(five, 2), SpreadOfFiveQuarter(five, 3));
    return _mm_packs_epi16(low, high);
}

} // namespace

t_intvector CSSEcharMatrix::GetIntegralVectorFromMatrix(int offset, int maxRow) const
{
    t_intvector profile;
    profile.Length = SSESizeX;
    profile.Data = new int[static_cast<std::size_t>(std::max(SSESizeX, 0))]();
    if (!HasImage()) return profile;

    const int lines = std::min(maxRow >> 4, SSESizeY);
    const __m128i raise = vek::detail::BroadcastByte(offset);
    for (int line = 0; line < lines; ++line) {
        const __m128i* vectors = MatrixData[line];
        for (int x = 0; x < SSESizeX; ++x) {
            const __m128i raised = _mm_add_epi8(vectors[x], raise);
            profile.Data[x] += static_cast<int>(vek::detail::AddHalves(vek::detail::BiasedSignedByteSums(raised))) - vek::detail::kSignedByteSumBias;
        }
    }
    // The divisor counts every line, summed or not.
    const int bytesPerColumn = SSESizeY * 16;
    for (int x = 0; x < SSESizeX; ++x) profile.Data[x] /= bytesPerColumn;
    return profile;
}

int CSSEcharMatrix::CalcNumSyllables() const
{
    const t_intvector integral = GetIntegralVectorFromMatrix(-40, 2000000000);
    const std::unique_ptr<int[]> owned(integral.Data);
    const int n = integral.Length;
    // Fewer columns leave no room between the margins of the count below.
    if (n < 9) return 0;
    std::vector<int> v(integral.Data, integral.Data + n);

    // Smoothed profile; the first entry keeps its raw value, the margins
    // become 0.
    std::vector<int> w(static_cast<std::size_t>(n), 0);
    vek::detail::FivePointMeans(v, w);
    std::copy(w.begin() + 1, w.end(), v.begin() + 1);

    // Everything below a fifth of the way from the lowest to the highest
    // value is ground; the rest is measured from there.
    int lowest = 1000000;
    int highest = -1000000;
    for (int value : v) {
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    const int ground = lowest + (highest - lowest) / 5;
    for (int& value : v) value = value < ground ? 0 : value - ground;

    int firstRaised = 0;
    for (int i = 3; i < n; ++i) {
        if (v[i] >= 3) {
            firstRaised = i;
            break;
        }
    }
    int lastRaised = n - 1;
    for (int i = n - 3; i >= 1; --i) {
        if (v[i] >= 3) {
            lastRaised = i;
            break;
        }
    }

    // Central differences, then each position classed as rising (2),
    // falling (-2) or flat (0) by the sum of three differences around it.
    // The last difference stays at the 0 of the smoothing's margin.
    w[0] = 0;
    for (int i = 1; i <= n - 2; ++i) w[i] = v[i + 1] - v[i - 1];
    w[n - 1] = 0;
    v[0] = v[1] = v[n - 2] = v[n - 1] = 0;
    for (int i = 1; i <= n - 2; ++i) {
        const int s = w[i - 1] + w[i] + w[i + 1];
        v[i] = s >= 6 ? 2 : (s / 3 < -1 ? -2 : 0);
    }

    const int first = std::max(firstRaised, 4);
    const int end = std::min(lastRaised, n - 4);
    if (first >= end) return 0;
    return CountRises(v, first, end);
}

void CSSEcharMatrix::CalcPDResult()
{
    if (!HasImage() || SSESizeX < 3) return;
    // Each inner vector takes its own central difference (wrapping) added
    // with saturation; the difference reads the left neighbour as it was.
    for (int line = 0; line < SSESizeY; ++line) {
        __m128i* vectors = MatrixData[line];
        __m128i left = vectors[0];
        for (int x = 1; x <= SSESizeX - 2; ++x) {
            const __m128i here = vectors[x];
            vectors[x] = _mm_adds_epi8(here, _mm_sub_epi8(vectors[x + 1], left));
            left = here;
        }
    }
}

void CSSEcharMatrix::CalcDerivative()
{
    if (!HasImage() || SSESizeX < 1) return;
    const __m128i zero = _mm_setzero_si128();
    for (int line = 0; line < SSESizeY; ++line) {
        __m128i* vectors = MatrixData[line];
        __m128i left = vectors[0];
        for (int x = 1; x <= SSESizeX - 2; ++x) {
            const __m128i here = vectors[x];
            vectors[x] = _mm_subs_epi8(vectors[x + 1], left);
            left = here;
        }
        // The first and the last column have no central difference.
        vectors[0] = zero;
        vectors[SSESizeX - 1] = zero;
    }
}

void CSSEcharMatrix::CalcTimeVariance(const CSSEcharMatrix& src)
{
    CSSEcharMatrix spread;
    spread.Create(src.SizeX, src.SizeY);
    if (src.HasImage()) {
        for (int line = 0; line < src.SSESizeY; ++line) {
            const __m128i* samples = src.MatrixData[line];
            __m128i* out = spread.MatrixData[line];
            for (int x = 2; x <= src.SizeX - 3; ++x) out[x] = SpreadOfFive(samples + x - 2);
        }
    }
    SwapImage(spread);
}
