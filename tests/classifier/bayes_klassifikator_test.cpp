#include <gtest/gtest.h>

#include <cmath>
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
    ZrCKlassenelement e(static_cast<int>(features.size()), 0);
    int i = 0;
    for (float f : features) e.Features[i++] = f;
    return k.Classify(&e);
}

// Class 0: (1, 2) and (3, 6), mean (2, 4), covariance [[1, 2], [2, 4]].
// Class 1: (0, 0), (0, 0) and (3, 3), mean (1, 1), covariance 2 throughout.
void FillHandSet(ZrCKlassifikator& k)
{
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1, 2}, 0));
    k.AddEntryTrainingset(NewElement({0, 0}, 1));
    k.AddEntryTrainingset(NewElement({3, 6}, 0));
    k.AddEntryTrainingset(NewElement({0, 0}, 1));
    k.AddEntryTrainingset(NewElement({3, 3}, 1));
}

TEST(ZrCBayesKlassifikatorTest, DiagonalLoadTrainingGivesMeanAndCovariancePlusATenth)
{
    ZrCBayesKlassifikator k;
    FillHandSet(k);
    k.Training(false);
    EXPECT_TRUE(k.Trained);
    ASSERT_EQ(k.Patterns.GetCount(), 2);

    const ZrCKlassenmuster* first = ModelAt(k, 0);
    EXPECT_EQ(first->Mean[0], 2.0f);
    EXPECT_EQ(first->Mean[1], 4.0f);
    EXPECT_FLOAT_EQ(first->Covariance[0][0], 1.1f);
    EXPECT_FLOAT_EQ(first->Covariance[0][1], 2.0f);
    EXPECT_FLOAT_EQ(first->Covariance[1][0], 2.0f);
    EXPECT_FLOAT_EQ(first->Covariance[1][1], 4.1f);

    const ZrCKlassenmuster* second = ModelAt(k, 1);
    EXPECT_EQ(second->Mean[0], 1.0f);
    EXPECT_FLOAT_EQ(second->Covariance[0][0], 2.1f);
    EXPECT_FLOAT_EQ(second->Covariance[0][1], 2.0f);
    EXPECT_FLOAT_EQ(second->Covariance[1][1], 2.1f);
}

TEST(ZrCBayesKlassifikatorTest, VarianceFloorHoldsAtEveryStepOfTheSum)
{
    ZrCBayesKlassifikator k;
    FillHandSet(k);
    float minVariance[2] = {2.0f, 0.5f};
    k.Training(minVariance);
    EXPECT_TRUE(k.Trained);
    const ZrCKlassenmuster* first = ModelAt(k, 0);
    // Each element of class 0 adds 0.5 to the first variance: the floor lifts
    // the first step to 2 and the second adds on top, 2.5. A floor applied to
    // the final sum only would give max(2, 1) = 2.
    EXPECT_EQ(first->Covariance[0][0], 2.5f);
    EXPECT_EQ(first->Covariance[1][1], 4.0f);
    EXPECT_EQ(first->Covariance[0][1], 2.0f); // off the diagonal no floor, no load
}

TEST(ZrCBayesKlassifikatorTest, EmptySetsAndRepeatedTrainings)
{
    ZrCBayesKlassifikator k;
    k.setNumClasses(2);
    k.Training(false);
    EXPECT_FALSE(k.Trained);
    EXPECT_TRUE(k.Patterns.IsEmpty());

    float minVariance[1] = {1.0f};
    k.Training(minVariance);
    EXPECT_TRUE(k.Trained);
    EXPECT_EQ(k.Patterns.GetCount(), 2);

    // A class without elements has a not-a-number mean and never wins.
    ZrCBayesKlassifikator oneEmpty;
    oneEmpty.setNumClasses(2);
    oneEmpty.AddEntryTrainingset(NewElement({1, 1}, 1));
    oneEmpty.AddEntryTrainingset(NewElement({2, 3}, 1));
    oneEmpty.Training(false);
    EXPECT_TRUE(std::isnan(ModelAt(oneEmpty, 0)->Mean[0]));
    EXPECT_EQ(ClassOf(oneEmpty, {1.5f, 2.0f}), 1);

    // A second training appends; the first NumClasses models decide.
    ZrCBayesKlassifikator twice;
    FillHandSet(twice);
    twice.Training(false);
    const int before = ClassOf(twice, {2, 4});
    twice.Training(false);
    EXPECT_EQ(twice.Patterns.GetCount(), 4);
    EXPECT_EQ(ClassOf(twice, {2, 4}), before);
}

TEST(ZrCBayesKlassifikatorTest, WithoutModelsEveryClassScoresZero)
{
    ZrCBayesKlassifikator k;
    FillHandSet(k);
    EXPECT_EQ(ClassOf(k, {100, -100}), 0);
    k.setNumClasses(0);
    EXPECT_EQ(ClassOf(k, {100, -100}), -1);

    // Classes beyond the trained models score 0: a model far below 0 loses to
    // the first class without a model.
    ZrCBayesKlassifikator partly;
    FillHandSet(partly);
    partly.Training(false);
    partly.setNumClasses(4);
    EXPECT_EQ(ClassOf(partly, {50, 50}), 2);

    EXPECT_EQ(k.Classify(nullptr), -1);
    ZrCBayesKlassifikator trained;
    FillHandSet(trained);
    trained.Training(false);
    EXPECT_EQ(ClassOf(trained, {2}), -1); // too short for a decision
}

TEST(ZrCBayesKlassifikatorTest, RejectThresholdUsesThePlainClassFraction)
{
    // One feature; class 0 from -1 and 1 has mean 0 and variance 1, so its
    // score is 1/NumClasses - 0.5 x^2. Class 1 sits far away and never
    // competes near x = 100.
    auto train = [](ZrCBayesKlassifikator& k, int numClasses) {
        k.setNumClasses(numClasses);
        k.AddEntryTrainingset(NewElement({-1}, 0));
        k.AddEntryTrainingset(NewElement({1}, 0));
        k.AddEntryTrainingset(NewElement({999}, 1));
        k.AddEntryTrainingset(NewElement({1001}, 1));
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
    // x^2 = 10001.5: 1 - 5000.75 = -4999.75 is kept, 0.5 - 5000.75 rejected.
    // A log prior (0 and -0.69) would reject both.
    EXPECT_EQ(ClassOf(one, {100.0075f}), 0);
    EXPECT_EQ(ClassOf(two, {100.0075f}), -1);
    EXPECT_EQ(ClassOf(one, {-100.02f}), -1);
}

TEST(ZrCBayesKlassifikatorTest, TiesGoToTheLowerClassAndSingularModelsNeverWin)
{
    ZrCBayesKlassifikator twins;
    twins.setNumClasses(2);
    for (int c = 0; c < 2; ++c) {
        twins.AddEntryTrainingset(NewElement({1, 2}, c));
        twins.AddEntryTrainingset(NewElement({2, 0}, c));
    }
    twins.Training(false);
    EXPECT_EQ(ClassOf(twins, {1.5f, 1.0f}), 0);
    EXPECT_EQ(ClassOf(twins, {3.0f, -1.0f}), 0);

    // Class 0 has one element, hence a zero covariance that cannot be
    // inverted without a load; class 1 is regular but far away.
    ZrCBayesKlassifikator singular;
    singular.setNumClasses(2);
    singular.AddEntryTrainingset(NewElement({0, 0}, 0));
    singular.AddEntryTrainingset(NewElement({10, 10}, 1));
    singular.AddEntryTrainingset(NewElement({12, 10}, 1));
    singular.AddEntryTrainingset(NewElement({10, 12}, 1));
    float noFloor[2] = {0.0f, 0.0f};
    singular.Training(noFloor);
    EXPECT_EQ(CFMatrix::fmat_det(ModelAt(singular, 0)->Covariance), 0.0);
    EXPECT_EQ(ClassOf(singular, {0, 0}), 1);

    singular.setNumClasses(1);
    EXPECT_EQ(ClassOf(singular, {0, 0}), -1);
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
        const ZrCKlassenmuster* model = ModelAt(k, c);
        for (int f = 0; f < 3; ++f) EXPECT_NEAR(model->Mean[f], kCloudMeans[c][f], 0.3f);
        for (int f = 0; f < 3; ++f) EXPECT_NEAR(model->Covariance[f][f], 1.1f, 0.3f);
    }

    // Fresh samples: the clouds overlap by three standard deviations at the
    // least, so about one sample in a thousand may go astray.
    int wrong = 0;
    for (int i = 0; i < 300; ++i) {
        for (int c = 0; c < 3; ++c) {
            ZrCKlassenelement* e = NewSample(source, kCloudMeans[c], 1.0f, 0);
            wrong += k.Classify(e) == c ? 0 : 1;
            delete e;
        }
    }
    EXPECT_LE(wrong, 9);

    // Far from every cloud: rejected.
    EXPECT_EQ(ClassOf(k, {200, 200, 200}), -1);
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

    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(ModelAt(loaded, c)->Mean[i], ModelAt(original, c)->Mean[i]);
            for (int j = 0; j < 3; ++j) {
                EXPECT_EQ(ModelAt(loaded, c)->Covariance[i][j], ModelAt(original, c)->Covariance[i][j]);
            }
        }
    }
    NormalSource probes(7);
    for (int i = 0; i < 300; ++i) {
        ZrCKlassenelement* e = NewSample(probes, {3, 3, 1.5f}, 6.0f, 0);
        EXPECT_EQ(loaded.Classify(e), original.Classify(e));
        delete e;
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
    EXPECT_EQ(recorder.messages[0], "Trainingsergebnis\n"
                                    "\n 1.0   2.0    3.0 "
                                    "\n 4.0   5.0    6.0 "
                                    "\n 7.0   8.0    10.5 ");
    EXPECT_EQ(recorder.messages[1], "Trainingsergebnis\n"
                                    "\n 0.0   2.0    3.0 "
                                    "\n 4.0   5.0    6.0 "
                                    "\n 7.0   8.0    9.0 ");

    // Without the flag, or with fewer than nine features, nothing is shown.
    ZrCBayesKlassifikator quiet;
    quiet.setNumClasses(1);
    quiet.AddEntryTrainingset(NewElement({1, 2, 3}, 0));
    quiet.Training(true);
    k.ClearAll();
    k.setNumClasses(1);
    k.AddEntryTrainingset(NewElement({1, 2, 3, 4, 5, 6, 7, 8, 9}, 0));
    k.Training(false);
    EXPECT_EQ(recorder.messages.size(), 2u);
}

} // namespace
