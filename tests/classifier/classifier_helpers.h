#pragma once

// Building blocks of the classifier tests: elements from literal values and
// Gaussian samples that are the same on every platform.

#include <cmath>
#include <cstdint>
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

// A sample around `mean` with standard deviation `sigma` in every feature, by
// Box-Muller over the raw output of mt19937, whose sequence the standard fixes
// (the library's distributions are not fixed across implementations).
inline ZrCKlassenelement* NewSample(std::mt19937& engine, const std::vector<float>& mean, float sigma, int classId)
{
    const auto uniform = [&engine] { return (static_cast<double>(engine()) + 0.5) / 4294967296.0; };
    auto* e = new ZrCKlassenelement(static_cast<int>(mean.size()), classId);
    for (std::size_t i = 0; i < mean.size(); ++i) {
        const double radius = std::sqrt(-2.0 * std::log(uniform()));
        e->Features[i] = mean[i] + sigma * static_cast<float>(radius * std::cos(2.0 * 3.14159265358979323846 * uniform()));
    }
    return e;
}

} // namespace vek::test
