#include <cmath>
#include <limits>
#include <memory>

#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/classifier/f_matrix.h"

namespace {

struct MatrixDeleter {
    void operator()(float** m) const { CFMatrix::fmat_free(m); }
};
using OwnedMatrix = std::unique_ptr<float*, MatrixDeleter>;

constexpr float kNoScore = std::numeric_limits<float>::quiet_NaN();
constexpr float kStartScore = -1000000000.0f;
constexpr float kRejectBelow = -5000.0f;

// 1 / numClasses - 0.5 log(det C) - 0.5 (x - m)' C^-1 (x - m) for one model.
// The first term is the plain fraction rather than the log prior: decisions
// and reject thresholds in use were tuned with it.
float DiscriminantScore(const ZrCKlassenmuster* model, float** x, int numClasses)
{
    const int n = CFMatrix::fmat_rows(x);
    float** covariance = model->Covariance;
    if (CFMatrix::fmat_rows(covariance) != n || CFMatrix::fmat_columns(covariance) != n) return kNoScore;

    const OwnedMatrix mean(CFMatrix::fmat_creat(n, 1, model->Mean));
    const OwnedMatrix d(CFMatrix::fmat_sub(x, mean.get()));
    const OwnedMatrix dT(CFMatrix::fmat_tran(d.get()));
    const OwnedMatrix inverse(CFMatrix::fmat_inv(covariance));
    const OwnedMatrix inverseTimesD(CFMatrix::fmat_mul(inverse.get(), d.get()));
    const OwnedMatrix q(CFMatrix::fmat_mul(dT.get(), inverseTimesD.get()));
    if (q == nullptr) return kNoScore; // a singular covariance

    const float logDet = static_cast<float>(std::log(CFMatrix::fmat_det(covariance)));
    return 1.0f / static_cast<float>(numClasses) - 0.5f * logDet - 0.5f * q.get()[0][0];
}

} // namespace

ZrCBayesKlassifikator::ZrCBayesKlassifikator() = default;

ZrCBayesKlassifikator::~ZrCBayesKlassifikator() = default;

int ZrCBayesKlassifikator::Classify(ZrCKlassenelement* e)
{
    if (e == nullptr || e->NumFeatures < NumFeatures) return -1;
    const OwnedMatrix x(CFMatrix::fmat_creat(NumFeatures, 1, e->Features));

    // The highest score wins, the lowest class on a tie. Models beyond
    // NumClasses have no class to speak for and are not visited.
    float best = kStartScore;
    int bestClass = 0;
    int c = 0;
    for (POSITION pos = Patterns.GetHeadPosition(); pos != nullptr && c < NumClasses; ++c) {
        const float score = DiscriminantScore(Patterns.GetNext(pos), x.get(), NumClasses);
        if (score > best) {
            best = score;
            bestClass = c;
        }
    }
    // Classes without a model keep the score 0; the first of them stands for all.
    if (c < NumClasses && 0.0f > best) {
        best = 0.0f;
        bestClass = c;
    }
    return kRejectBelow > best ? -1 : bestClass;
}
