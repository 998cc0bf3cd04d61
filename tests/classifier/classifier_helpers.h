#pragma once

// Building blocks shared by the classifier tests: elements from literal
// values, Gaussian samples that are the same on every platform, and a
// message handler that records instead of printing.

#include <cmath>
#include <cstdint>
#include <initializer_list>
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

// Standard normal samples by Box-Muller over the raw 32-bit output of
// mt19937, whose sequence the standard fixes (the library distributions are
// not fixed across implementations).
class NormalSource {
public:
    explicit NormalSource(std::uint32_t seed) : engine_(seed) {}

    double Next()
    {
        if (haveSpare_) {
            haveSpare_ = false;
            return spare_;
        }
        const double u1 = Uniform();
        const double u2 = Uniform();
        const double radius = std::sqrt(-2.0 * std::log(u1));
        const double angle = 2.0 * 3.14159265358979323846 * u2;
        spare_ = radius * std::sin(angle);
        haveSpare_ = true;
        return radius * std::cos(angle);
    }

private:
    // In (0, 1), never 0, so that the logarithm is finite.
    double Uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }

    std::mt19937 engine_;
    double spare_ = 0.0;
    bool haveSpare_ = false;
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

// Records every message box while it lives; the previous handler returns after.
class MessageRecorder {
public:
    MessageRecorder()
        : previous_(vek::SetMessageHandler([this](const std::string& text) { messages.push_back(text); }))
    {
    }
    ~MessageRecorder() { vek::SetMessageHandler(previous_); }
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    std::vector<std::string> messages;

private:
    vek::MessageHandler previous_;
};

} // namespace vek::test
