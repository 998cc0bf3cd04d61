#pragma once

// Building blocks of the classifier tests: elements from literal values,
// Gaussian samples that are the same on every platform, and recorded message
// boxes and path requests.

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "vekdll/classifier/klassenelement.h"
#include "vekdll/platform/user_hooks.h"

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

// Records every message box and answers every path request with `reply`
// while it lives; the previous handlers come back afterwards.
class RecordedHooks {
public:
    explicit RecordedHooks(std::optional<std::string> reply = std::nullopt)
        : previousMessage_(SetMessageHandler([this](const std::string& text) { messages.push_back(text); })),
          previousPath_(SetPathHandler([this, reply](const PathRequest& request) {
              requests.push_back(request);
              return reply;
          }))
    {
    }
    ~RecordedHooks()
    {
        SetMessageHandler(previousMessage_);
        SetPathHandler(previousPath_);
    }
    RecordedHooks(const RecordedHooks&) = delete;
    RecordedHooks& operator=(const RecordedHooks&) = delete;

    std::vector<std::string> messages;
    std::vector<PathRequest> requests;

private:
    MessageHandler previousMessage_;
    PathHandler previousPath_;
};

} // namespace vek::test
