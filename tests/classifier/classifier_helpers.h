#pragma once

// Building blocks shared by the classifier tests: elements from literal
// values, Gaussian samples that are the same on every platform, and
// handlers that record message boxes and answer path requests.

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vekdll/classifier/klassenelement.h"
#include "vekdll/classifier/klassifikator.h"
#include "vekdll/platform/user_hooks.h"

namespace vek::test {

inline ZrCKlassenelement* NewElement(std::initializer_list<float> features, int classId)
{
    auto* e = new ZrCKlassenelement(static_cast<int>(features.size()), classId);
    int i = 0;
    for (float f : features) e->Features[i++] = f;
    return e;
}

// Standard normal samples by Box-Muller over the raw 32-bit output of
// mt19937, whose sequence the standard fixes (the library distributions are
// not fixed across implementations).
class NormalSource {
public:
    explicit NormalSource(std::uint32_t seed) : engine_(seed) {}

    double Next()
    {
        const double radius = std::sqrt(-2.0 * std::log(Uniform()));
        return radius * std::cos(2.0 * 3.14159265358979323846 * Uniform());
    }

private:
    // In (0, 1), never 0, so that the logarithm is finite.
    double Uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }

    std::mt19937 engine_;
};

// A sample around `mean` with standard deviation `sigma` in every feature.
inline ZrCKlassenelement* NewSample(NormalSource& source, const std::vector<float>& mean, float sigma, int classId)
{
    auto* e = new ZrCKlassenelement(static_cast<int>(mean.size()), classId);
    for (std::size_t i = 0; i < mean.size(); ++i) {
        e->Features[i] = mean[i] + sigma * static_cast<float>(source.Next());
    }
    return e;
}

// Installs a handler for the life of the object and restores the previous one.
template <class Handler, Handler (*Install)(Handler)>
class ScopedHandler {
public:
    explicit ScopedHandler(Handler handler) : previous_(Install(std::move(handler))) {}
    ~ScopedHandler() { Install(std::move(previous_)); }
    ScopedHandler(const ScopedHandler&) = delete;
    ScopedHandler& operator=(const ScopedHandler&) = delete;

private:
    Handler previous_;
};

// Records every message box while it lives.
class MessageRecorder {
public:
    std::vector<std::string> messages;

private:
    ScopedHandler<vek::MessageHandler, &vek::SetMessageHandler> scope_{
        [this](const std::string& text) { messages.push_back(text); }};
};

// Answers every path request with `reply` while it lives, and records them.
class PathAnswer {
public:
    explicit PathAnswer(std::optional<std::string> reply)
        : scope_([this, reply](const vek::PathRequest& request) {
              requests.push_back(request);
              return reply;
          })
    {
    }

    std::vector<vek::PathRequest> requests;

private:
    ScopedHandler<vek::PathHandler, &vek::SetPathHandler> scope_;
};

// Two classes of one element each: (1, 2) in class 0 and (3, 4) in class 1.
inline void FillTwoClasses(ZrCKlassifikator& k)
{
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1, 2}, 0));
    k.AddEntryTrainingset(NewElement({3, 4}, 1));
}

} // namespace vek::test
