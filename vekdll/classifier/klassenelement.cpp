#include <cstring>

#include "vekdll/classifier/klassenelement.h"
#include "vekdll/foundation/safe_alloc.h"

namespace {

float* ZeroFeatures(int n)
{
    return static_cast<float*>(SafeCalloc(static_cast<std::uint64_t>(n > 0 ? n : 0), sizeof(float)));
}

// First index whose feature beats all earlier ones under `better`; later
// equal values don't replace it.
template <class Better>
int FirstExtreme(const float* features, int n, Better better)
{
    if (n <= 0) return -1;
    int index = 0;
    for (int i = 1; i < n; ++i) {
        if (better(features[i], features[index])) index = i;
    }
    return index;
}

void DivideAll(float* features, int n, float divisor)
{
    for (int i = 0; i < n; ++i) features[i] = features[i] / divisor;
}

} // namespace

ZrCKlassenelement::ZrCKlassenelement(int n, int classId)
    : NumFeatures(n > 0 ? n : 0), ClassId(classId), Features(ZeroFeatures(n))
{
}

ZrCKlassenelement::ZrCKlassenelement(ZrCKlassenelement* other)
    : ZrCKlassenelement(other != nullptr ? other->NumFeatures : 0, other != nullptr ? other->ClassId : 0)
{
    if (other != nullptr && other->Features != nullptr && NumFeatures > 0) {
        std::memcpy(Features, other->Features, static_cast<std::size_t>(NumFeatures) * sizeof(float));
    }
}

ZrCKlassenelement::ZrCKlassenelement(const ZrCKlassenelement& other)
    : ZrCKlassenelement(const_cast<ZrCKlassenelement*>(&other))
{
}

ZrCKlassenelement::~ZrCKlassenelement()
{
    if (Features != nullptr) SafeFree(Features);
}

ZrCKlassenelement& ZrCKlassenelement::operator=(const ZrCKlassenelement& other)
{
    NumFeatures = other.NumFeatures;
    ClassId = other.ClassId;
    Features = other.Features;
    return *this;
}

int ZrCKlassenelement::ArgMax()
{
    return FirstExtreme(Features, NumFeatures, [](float a, float b) { return a > b; });
}

int ZrCKlassenelement::ArgMin()
{
    return FirstExtreme(Features, NumFeatures, [](float a, float b) { return a < b; });
}

void ZrCKlassenelement::NormalizeMAX()
{
    const int index = ArgMax();
    if (index >= 0) DivideAll(Features, NumFeatures, Features[index]);
}

void ZrCKlassenelement::NormalizeMIN()
{
    const int index = ArgMin();
    if (index >= 0) DivideAll(Features, NumFeatures, Features[index]);
}

void ZrCKlassenelement::NormalizeSUM()
{
    float sum = 0.0f;
    for (int i = 0; i < NumFeatures; ++i) sum += Features[i];
    for (int i = 0; i < NumFeatures; ++i) Features[i] = (Features[i] / sum) * 1000.0f;
}
