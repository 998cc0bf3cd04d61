#pragma once

// Building blocks of the classifier tests: elements from literal values and
// Gaussian samples.

#include <initializer_list>
#include <random>
#include <vector>

#include "vekdll/classifier/klassenelement.h"

namespace vek::test {

inline ZrCKlassenelement* NewElement(std::initializer_list<float> features, int classId)
{
    auto* e = new ZrCKlassenelement(static_cast<int>(features.size()), classId);
    int i = 0;
    for (float f : features) e->Features[i++] = f;
    return e;
}

// A sample around `mean` with standard deviation `sigma` in every feature.
// The tests ask only for properties of the clouds, which hold whatever
// normal generator the standard library brings.
inline ZrCKlassenelement* NewSample(std::mt19937& engine, const std::vector<float>& mean, float sigma, int classId)
{
    std::normal_distribution<float> normal(0.0f, sigma);
    auto* e = new ZrCKlassenelement(static_cast<int>(mean.size()), classId);
    for (std::size_t i = 0; i < mean.size(); ++i) e->Features[i] = mean[i] + normal(engine);
    return e;
}

} // namespace vek::test
