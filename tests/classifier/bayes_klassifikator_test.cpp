#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "classifier/classifier_helpers.h"
#include "support/archive_bytes.h"
#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/classifier/f_matrix.h"

using vek::test::NewElement;
using vek::test::NewSample;
using vek::test::NormalSource;

namespace {

ZrCKlassenmuster* ModelAt(ZrCKlassifikator& k, int index)
{
    return k.Patterns.GetAt(k.Patterns.FindIndex(index));
}

int ClassOf(ZrCKlassifikator& k, std::initializer_list<float> features)
{
    std::unique_ptr<ZrCKlassenelement> e(NewElement(features, 0));
    return k.Classify(e.get());
}

// Class 0: (1, 2) and (3, 6), mean (2, 4), covariance [[1, 2], [2, 4]].
// Class 1: (0, 0), (0, 0) and (3, 3), mean (1, 1), covariance 2 throughout.
void FillHandSet(ZrCKlassifikator& k)
{
    k.setNumClasses(2);
    for (auto [x, y, c] : {std::tuple{1, 2, 0}, {0, 0, 1}, {3, 6, 0}, {0, 0, 1}, {3, 3, 1}}) {
        k.AddEntryTrainingset(NewElement({static_cast<float>(x), static_cast<float>(y)}, c));
    }
}

TEST(ZrCBayesKlassifikatorTest, TrainingsGiveMeanAndCovarianceWithLoadOrFloor)
{
    ZrCBayesKlassifikator loaded;
    FillHandSet(loaded);
    loaded.Training(false);
    EXPECT_TRUE(loaded.Trained);
    ASSERT_EQ(loaded.Patterns.GetCount(), 2);
    const ZrCKlassenmuster* first = ModelAt(loaded, 0);
    EXPECT_EQ(first->Mean[0], 2.0f);
    EXPECT_EQ(first->Mean[1], 4.0f);
    EXPECT_FLOAT_EQ(first->Covariance[0][0], 1.1f);
    EXPECT_FLOAT_EQ(first->Covariance[1][0], 2.0f);
    EXPECT_FLOAT_EQ(first->Covariance[1][1], 4.1f);
    const ZrCKlassenmuster* second = ModelAt(loaded, 1);
    EXPECT_EQ(second->Mean[0], 1.0f);
    EXPECT_FLOAT_EQ(second->Covariance[0][1], 2.0f);
    EXPECT_FLOAT_EQ(second->Covariance[1][1], 2.1f);

    // Each element of class 0 adds 0.5 to the first variance: the floor of 2
    // lifts the first step to 2 and the second adds on top, 2.5. A floor on
    // the final sum only would give max(2, 1) = 2.
    ZrCBayesKlassifikator floored;
    FillHandSet(floored);
    float minVariance[2] = {2.0f, 0.5f};
    floored.Training(minVariance);
    EXPECT_EQ(ModelAt(floored, 0)->Covariance[0][0], 2.5f);
    EXPECT_EQ(ModelAt(floored, 0)->Covariance[1][1], 4.0f);
    EXPECT_EQ(ModelAt(floored, 0)->Covariance[0][1], 2.0f);

    // On an empty set only the floored training runs, with one model per class.
    ZrCBayesKlassifikator empty;
    empty.setNumClasses(2);
    empty.Training(false);
    EXPECT_FALSE(empty.Trained);
    empty.Training(minVariance);
    EXPECT_TRUE(empty.Trained);
    EXPECT_EQ(empty.Patterns.GetCount(), 2);
}

TEST(ZrCBayesKlassifikatorTest, ClassesWithoutAUsableModelScoreZeroOrNeverWin)
{
    ZrCBayesKlassifikator untrained;
    FillHandSet(untrained);
    EXPECT_EQ(ClassOf(untrained, {100, -100}), 0); // no models: every score is 0
    untrained.setNumClasses(0);
    EXPECT_EQ(ClassOf(untrained, {100, -100}), -1);

    // Classes beyond the trained models score 0 and beat far-off models.
    ZrCBayesKlassifikator partly;
    FillHandSet(partly);
    partly.Training(false);
    EXPECT_EQ(ClassOf(partly, {2}), -1); // too short for a decision
    partly.setNumClasses(4);
    EXPECT_EQ(ClassOf(partly, {50, 50}), 2);

    // A single element gives a zero covariance without a load: singular, so
    // its class loses even at its own point; alone it leaves no decision.
    ZrCBayesKlassifikator singular;
    singular.setNumClasses(2);
    singular.AddEntryTrainingset(NewElement({0, 0}, 0));
    for (auto [x, y] : {std::pair{10, 10}, {12, 10}, {10, 12}}) {
        singular.AddEntryTrainingset(NewElement({static_cast<float>(x), static_cast<float>(y)}, 1));
    }
    float noFloor[2] = {0.0f, 0.0f};
    singular.Training(noFloor);
    EXPECT_EQ(CFMatrix::fmat_det(ModelAt(singular, 0)->Covariance), 0.0);
    EXPECT_EQ(ClassOf(singular, {0, 0}), 1);
    singular.setNumClasses(1);
    EXPECT_EQ(ClassOf(singular, {0, 0}), -1);

    // Equal models tie, and the lower class wins.
    ZrCBayesKlassifikator twins;
    twins.setNumClasses(2);
    for (int c = 0; c < 2; ++c) {
        twins.AddEntryTrainingset(NewElement({1, 2}, c));
        twins.AddEntryTrainingset(NewElement({2, 0}, c));
    }
    twins.Training(false);
    EXPECT_EQ(ClassOf(twins, {3.0f, -1.0f}), 0);
}

TEST(ZrCBayesKlassifikatorTest, RejectThresholdUsesThePlainClassFraction)
{
    // One feature; class 0 from -1 and 1 has mean 0 and variance 1, so its
    // score is 1/NumClasses - 0.5 x^2. Class 1 sits far away near 1000.
    auto train = [](ZrCBayesKlassifikator& k, int numClasses) {
        k.setNumClasses(numClasses);
        for (auto [x, c] : {std::pair{-1, 0}, {1, 0}, {999, 1}, {1001, 1}}) {
            k.AddEntryTrainingset(NewElement({static_cast<float>(x)}, c));
        }
        float noFloor[1] = {0.0f};
        k.Training(noFloor);
    };
    ZrCBayesKlassifikator one;
    train(one, 1);
    ZrCBayesKlassifikator two;
    train(two, 2);

    // x^2 = 10000.9: 1 - 5000.45 and 0.5 - 5000.45 both stay above -5000.
    EXPECT_EQ(ClassOf(one, {100.0045f}), 0);
    EXPECT_EQ(ClassOf(two, {100.0045f}), 0);
    // x^2 = 10001.5: 1 - 5000.75 is kept, 0.5 - 5000.75 rejected. A log
    // prior (0 and -0.69) would reject both.
    EXPECT_EQ(ClassOf(one, {100.0075f}), 0);
    EXPECT_EQ(ClassOf(two, {100.0075f}), -1);
}

// Three clouds of standard deviation 1 in three features, at least 6 apart.
const std::vector<std::vector<float>> kCloudMeans = {{0, 0, 0}, {6, 0, 0}, {0, 6, 3}};

void FillClouds(ZrCKlassifikator& k, NormalSource& source, int perClass)
{
    k.setNumClasses(3);
    for (int i = 0; i < perClass; ++i) {
        for (int c = 0; c < 3; ++c) k.AddEntryTrainingset(NewSample(source, kCloudMeans[c], 1.0f, c));
    }
}

TEST(ZrCBayesKlassifikatorTest, SeparatesGaussianCloudsWithKnownMeans)
{
    NormalSource source(12345);
    ZrCBayesKlassifikator k;
    FillClouds(k, source, 200);
    k.Training(false);
    for (int c = 0; c < 3; ++c) {
        for (int f = 0; f < 3; ++f) EXPECT_NEAR(ModelAt(k, c)->Mean[f], kCloudMeans[c][f], 0.3f);
        for (int f = 0; f < 3; ++f) EXPECT_NEAR(ModelAt(k, c)->Covariance[f][f], 1.1f, 0.3f);
    }

    // Fresh samples: the clouds are three standard deviations from each
    // half-way plane, so about one sample in a thousand may go astray.
    int wrong = 0;
    for (int i = 0; i < 300; ++i) {
        for (int c = 0; c < 3; ++c) {
            std::unique_ptr<ZrCKlassenelement> e(NewSample(source, kCloudMeans[c], 1.0f, 0));
            wrong += k.Classify(e.get()) == c ? 0 : 1;
        }
    }
    EXPECT_LE(wrong, 9);
    EXPECT_EQ(ClassOf(k, {200, 200, 200}), -1); // far from every cloud
}

TEST(ZrCBayesKlassifikatorTest, ALoadedTrainingSetTrainsToTheSameDecisions)
{
    NormalSource source(99);
    ZrCBayesKlassifikator original;
    FillClouds(original, source, 60);
    const std::vector<BYTE> bytes = vek::test::StoreToBytes([&](CArchive& ar) { original.Serialize(ar); });
    ZrCBayesKlassifikator loaded;
    vek::test::LoadFromBytes(bytes, [&](CArchive& ar) { loaded.Serialize(ar); });
    original.Training(false);
    loaded.Training(false);

    NormalSource probes(7);
    for (int i = 0; i < 300; ++i) {
        std::unique_ptr<ZrCKlassenelement> e(NewSample(probes, {3, 3, 1.5f}, 6.0f, 0));
        EXPECT_EQ(loaded.Classify(e.get()), original.Classify(e.get()));
    }
}

TEST(ZrCBayesKlassifikatorTest, ShownTrainingReportHoldsTheFirstNineMeans)
{
    vek::test::MessageRecorder recorder;
    ZrCBayesKlassifikator k;
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1, 2, 3, 4, 5, 6, 7, 8, 10.5f, 99}, 0));
    k.AddEntryTrainingset(NewElement({1, 2, 3, 4, 5, 6, 7, 8, 9, 99}, 1));
    k.AddEntryTrainingset(NewElement({-1, 2, 3, 4, 5, 6, 7, 8, 9, 99}, 1));
    k.Training(true);
    ASSERT_EQ(recorder.messages.size(), 2u);
    EXPECT_EQ(recorder.messages[0], "Trainingsergebnis\n\n 1.0   2.0    3.0 \n 4.0   5.0    6.0 \n 7.0   8.0    10.5 ");
    EXPECT_EQ(recorder.messages[1], "Trainingsergebnis\n\n 0.0   2.0    3.0 \n 4.0   5.0    6.0 \n 7.0   8.0    9.0 ");

    // Without the flag, or with fewer than nine features, nothing is shown.
    ZrCBayesKlassifikator quiet;
    FillHandSet(quiet);
    quiet.Training(true);
    k.Training(false);
    EXPECT_EQ(recorder.messages.size(), 2u);
}

} // namespace
