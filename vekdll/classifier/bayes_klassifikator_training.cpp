#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/platform/user_hooks.h"

namespace {

// The load that keeps a covariance invertible when a class has fewer
// elements than features or a feature that never varies.
constexpr double kDiagonalLoad = 0.1;
constexpr int kShownMeans = 9;

bool TakesPart(const ZrCKlassenelement* e, int classId, int numFeatures)
{
    return e->ClassId == classId && e->NumFeatures >= numFeatures;
}

// "Trainingsergebnis" and the first nine means, three to a line.
void ShowMeans(const float* mean)
{
    std::string text = "Trainingsergebnis\n";
    for (int line = 0; line < kShownMeans / 3; ++line) {
        char buffer[256];
        std::snprintf(buffer, sizeof buffer, "\n %3.1f   %3.1f    %3.1f ", static_cast<double>(mean[3 * line]),
                      static_cast<double>(mean[3 * line + 1]), static_cast<double>(mean[3 * line + 2]));
        text += buffer;
    }
    vek::ShowMessage(text);
}

} // namespace

void ZrCBayesKlassifikator::Training(float* minVariance)
{
    BuildModels(minVariance, false, false);
}

void ZrCBayesKlassifikator::Training(bool show)
{
    if (TrainingSet.IsEmpty()) return;
    BuildModels(nullptr, true, show);
}

void ZrCBayesKlassifikator::BuildModels(const float* minVariance, bool loadDiagonal, bool show)
{
    for (int c = 0; c < NumClasses; ++c) Patterns.AddTail(BuildModel(c, minVariance, loadDiagonal, show));
    Trained = true;
}

ZrCKlassenmuster* ZrCBayesKlassifikator::BuildModel(int classId, const float* minVariance, bool loadDiagonal,
                                                    bool show)
{
    const int n = NumFeatures;
    auto model = std::make_unique<ZrCKlassenmuster>(n);
    float* mean = model->Mean;
    float** covariance = model->Covariance;

    int count = 0;
    for (POSITION pos = TrainingSet.GetHeadPosition(); pos != nullptr;) {
        const ZrCKlassenelement* e = TrainingSet.GetNext(pos);
        if (!TakesPart(e, classId, n)) continue;
        for (int i = 0; i < n; ++i) mean[i] += e->Features[i];
        ++count;
    }
    // An empty class divides 0 by 0: its model is not-a-number and never wins.
    for (int i = 0; i < n; ++i) mean[i] /= static_cast<float>(count);
    if (show && n >= kShownMeans) ShowMeans(mean);

    const float weight = 1.0f / static_cast<float>(count);
    std::vector<float> d(static_cast<std::size_t>(n));
    for (POSITION pos = TrainingSet.GetHeadPosition(); pos != nullptr;) {
        const ZrCKlassenelement* e = TrainingSet.GetNext(pos);
        if (!TakesPart(e, classId, n)) continue;
        for (int i = 0; i < n; ++i) d[i] = e->Features[i] - mean[i];
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                covariance[i][j] += d[j] * (d[i] * weight);
                // The floor holds at every step, not only for the final sum,
                // so a variance never dips below it on the way.
                if (i == j && minVariance != nullptr) {
                    covariance[i][i] = minVariance[i] > covariance[i][i] ? minVariance[i] : covariance[i][i];
                }
            }
        }
    }
    if (loadDiagonal) {
        for (int i = 0; i < n; ++i) covariance[i][i] = static_cast<float>(covariance[i][i] + kDiagonalLoad);
    }
    return model.release();
}
