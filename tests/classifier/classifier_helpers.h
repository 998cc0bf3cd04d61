#pragma once

// Classifier elements from literal values and Gaussian samples, and
// training sets of planar elements.

#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

#include "vekdll/classifier/klassifikator.h"

namespace vek::test {

inline ZrCKlassenelement* NewElement(const std::vector<float>& features, int classId)
{
    auto* e = new ZrCKlassenelement(static_cast<int>(features.size()), classId);
    std::copy(features.begin(), features.end(), e->Features);
    return e;
}

// A sample around `mean` with standard deviation `sigma` in every feature.
inline ZrCKlassenelement* NewSample(std::mt19937& engine, const std::vector<float>& mean, float sigma, int classId)
{
    std::normal_distribution<float> normal(0.0f, sigma);
    auto* e = new ZrCKlassenelement(static_cast<int>(mean.size()), classId);
    for (std::size_t i = 0; i < mean.size(); ++i) e->Features[i] = mean[i] + normal(engine);
    return e;
}

// Sets the class count and adds one element (x, y) of class c per entry.
inline void Fill(ZrCKlassifikator& k, int numClasses, const std::vector<std::tuple<float, float, int>>& elements)
{
    k.setNumClasses(numClasses);
    for (auto [x, y, c] : elements) k.AddEntryTrainingset(NewElement({x, y}, c));
}

} // namespace vek::test
