#include <cmath>
#include <limits>

#include "vekdll/classifier/klassenelement.h"

// The distances compare two vectors feature by feature. Vectors of different
// lengths are compared over the shorter one; a missing partner gives
// not-a-number. All sums run from the first feature on in single precision.
namespace {

int CommonLength(const ZrCKlassenelement& a, const ZrCKlassenelement& b)
{
    return a.NumFeatures < b.NumFeatures ? a.NumFeatures : b.NumFeatures;
}

constexpr float kNoDistance = std::numeric_limits<float>::quiet_NaN();

} // namespace

float ZrCKlassenelement::d220()
{
    float sum = 0.0f;
    for (int i = 0; i < NumFeatures; ++i) sum += Features[i] * Features[i];
    return std::sqrt(sum);
}

float ZrCKlassenelement::d22(ZrCKlassenelement* o)
{
    if (o == nullptr) return kNoDistance;
    const int n = CommonLength(*this, *o);
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) {
        const float d = Features[i] - o->Features[i];
        sum += d * d;
    }
    return sum;
}

float ZrCKlassenelement::d22A(ZrCKlassenelement* o)
{
    if (o == nullptr) return kNoDistance;
    const int count = CommonLength(*this, *o);
    const float* a = Features;
    const float* b = o->Features;
    const float n = static_cast<float>(NumFeatures);

    float sa = 0.0f, sb = 0.0f, saa = 0.0f, sab = 0.0f;
    for (int i = 0; i < count; ++i) {
        sa += a[i];
        sb += b[i];
        saa += a[i] * a[i];
        sab += a[i] * b[i];
    }
    // The centring term pairs Sb with Sa, where the least-squares fit would
    // use Sa x Sa. Thresholds trained on this distance depend on the mixed
    // term, so the gain is only the least-squares gain when Sa equals Sb.
    const float c = sb * sa / n;
    const float denominator = saa - c;
    float gain = 1.0f;
    float offset = 0.0f;
    if (denominator != 0.0f) {
        gain = (sab - c) / denominator;
        offset = sb / n - gain * sa / n;
    }

    float sum = 0.0f;
    for (int i = 0; i < count; ++i) {
        const float d = gain * a[i] + offset - b[i];
        sum += d * d;
    }
    return sum;
}
