#include <gtest/gtest.h>

#include <memory>

#include "classifier/classifier_helpers.h"
#include "support/archive_bytes.h"
#include "support/recorded_hooks.h"
#include "vekdll/classifier/bayes_klassifikator.h"

using namespace vek::test;

namespace {

// Class 0: (1, 2) and (3, 6), mean (2, 4), covariance [[1, 2], [2, 4]].
// Class 1: (0, 0), (0, 0) and (3, 3), mean (1, 1), covariance 2 throughout.
const std::vector<std::tuple<float, float, int>> kHandSet = {{1, 2, 0}, {0, 0, 1}, {3, 6, 0}, {0, 0, 1}, {3, 3, 1}};

// Mean and covariance of the first model, and the last variance of the second.
std::vector<float> ModelValues(ZrCKlassifikator& k)
{
    const ZrCKlassenmuster *first = k.Patterns.GetHead(), *second = k.Patterns.GetTail();
    const float* c = first->Covariance[0];
    return {first->Mean[0], first->Mean[1], c[0], c[1], c[2], c[3], second->Covariance[1][1]};
}

int ClassOf(ZrCKlassifikator& k, std::initializer_list<float> features)
{
    std::unique_ptr<ZrCKlassenelement> e(NewElement(features, 0));
    return k.Classify(e.get());
}

TEST(ZrCBayesKlassifikator, TrainingsGiveMeanAndCovarianceWithTheLoadOrTheFloorAtEveryStep)
{
    ZrCBayesKlassifikator loaded, floored, empty;
    Fill(loaded, 2, kHandSet);
    loaded.Training(false);
    ASSERT_EQ(loaded.Patterns.GetCount(), 2);
    EXPECT_EQ(ModelValues(loaded), (std::vector<float>{2, 4, 1.1f, 2, 2, 4.1f, 2.1f}));
    // Each element of class 0 adds 0.5 to the first variance: a floor of 2 at
    // every step gives 2 + 0.5, a floor on the final sum max(2, 1). In class 1
    // the steps 1/3, 1/3, 4/3 meet the floor 0.5 at the first one.
    Fill(floored, 2, kHandSet);
    float minVariance[2] = {2.0f, 0.5f};
    floored.Training(minVariance);
    EXPECT_EQ(ModelValues(floored), (std::vector<float>{2, 4, 2.5f, 2, 2, 4, 0.5f + 1.0f / 3 + 4.0f / 3}));
    // On an empty set only the floored training runs, with one model per class.
    empty.setNumClasses(2);
    empty.Training(false);
    EXPECT_FALSE(empty.Trained);
    empty.Training(minVariance);
    EXPECT_EQ(empty.Patterns.GetCount(), 2);
}

TEST(ZrCBayesKlassifikator, ClassesWithoutAUsableModelScoreZeroOrNeverWinAndTiesGoToTheLowerClass)
{
    ZrCBayesKlassifikator partly, singular, twins;
    Fill(partly, 2, kHandSet);
    partly.Training(false);
    EXPECT_EQ(ClassOf(partly, {2}), -1); // too short for a decision
    partly.setNumClasses(4);             // classes beyond the models score 0 and beat far-off models
    EXPECT_EQ(ClassOf(partly, {50, 50}), 2);
    // A single element without a load gives a singular covariance: its class
    // loses even at its own point, and alone it leaves no decision.
    Fill(singular, 2, {{0, 0, 0}, {10, 10, 1}, {12, 10, 1}, {10, 12, 1}});
    float noFloor[2] = {0.0f, 0.0f};
    singular.Training(noFloor);
    EXPECT_EQ(ClassOf(singular, {0, 0}), 1);
    singular.setNumClasses(1);
    EXPECT_EQ(ClassOf(singular, {0, 0}), -1);
    Fill(twins, 2, {{1, 2, 0}, {2, 0, 0}, {1, 2, 1}, {2, 0, 1}});
    twins.Training(false);
    EXPECT_EQ(ClassOf(twins, {3.0f, -1.0f}), 0);
}

TEST(ZrCBayesKlassifikator, RejectThresholdUsesThePlainClassFraction)
{
    // One feature; class 0 from -1 and 1 has mean 0 and variance 1, so its
    // score is 1/NumClasses - 0.5 x^2. Class 1 sits far away near 1000.
    ZrCBayesKlassifikator one, two;
    for (auto [k, numClasses] : {std::pair{&one, 1}, {&two, 2}}) {
        k->setNumClasses(numClasses);
        for (auto [x, c] : {std::pair{-1.0f, 0}, {1.0f, 0}, {999.0f, 1}, {1001.0f, 1}}) k->AddEntryTrainingset(NewElement({x}, c));
        float noFloor[1] = {0.0f};
        k->Training(noFloor);
    }
    // x^2 = 10000.9: 1 - 5000.45 and 0.5 - 5000.45 both stay above -5000.
    EXPECT_EQ(std::pair(ClassOf(one, {100.0045f}), ClassOf(two, {100.0045f})), std::pair(0, 0));
    // x^2 = 10001.5: 1 - 5000.75 is kept, 0.5 - 5000.75 rejected. A log prior
    // (0 and -0.69) would reject both.
    EXPECT_EQ(std::pair(ClassOf(one, {100.0075f}), ClassOf(two, {100.0075f})), std::pair(0, -1));
}

TEST(ZrCBayesKlassifikator, SeparatesGaussianCloudsAndALoadedTrainingSetTrainsToTheSameDecisions)
{
    // Three clouds of standard deviation 1 in three features, at least 6 apart.
    const std::vector<std::vector<float>> means = {{0, 0, 0}, {6, 0, 0}, {0, 6, 3}};
    std::mt19937 engine(12345);
    ZrCBayesKlassifikator k, loaded;
    k.setNumClasses(3);
    for (int i = 0; i < 600; ++i) k.AddEntryTrainingset(NewSample(engine, means[i % 3], 1.0f, i % 3));
    SerializeFromBytes(loaded, SerializeToBytes(k));
    k.Training(false);
    loaded.Training(false);
    // Three standard deviations from each half-way plane: about one sample in
    // a thousand may go astray.
    int wrong = 0;
    for (int i = 0; i < 900; ++i) {
        std::unique_ptr<ZrCKlassenelement> e(NewSample(engine, means[i % 3], 1.0f, 0)), probe(NewSample(engine, {3, 3, 1.5f}, 6.0f, 0));
        wrong += k.Classify(e.get()) == i % 3 ? 0 : 1;
        EXPECT_EQ(loaded.Classify(probe.get()), k.Classify(probe.get()));
    }
    EXPECT_LE(wrong, 9);
}

TEST(ZrCBayesKlassifikator, ShownTrainingReportHoldsTheFirstNineMeans)
{
    RecordedHooks hooks;
    ZrCBayesKlassifikator k, quiet;
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1, 2, 3, 4, 5, 6, 7, 8, 10.5f, 99}, 0));
    k.AddEntryTrainingset(NewElement({1, 2, 3, 4, 5, 6, 7, 8, 9, 99}, 1));
    k.AddEntryTrainingset(NewElement({-1, 2, 3, 4, 5, 6, 7, 8, 9, 99}, 1));
    k.Training(true);
    // Without the flag, or with fewer than nine features, nothing is shown.
    Fill(quiet, 2, kHandSet);
    quiet.Training(true);
    k.Training(false);
    EXPECT_EQ(hooks.messages, (std::vector<std::string>{"Trainingsergebnis\n\n 1.0   2.0    3.0 \n 4.0   5.0    6.0 \n 7.0   8.0    10.5 ",
                                                         "Trainingsergebnis\n\n 0.0   2.0    3.0 \n 4.0   5.0    6.0 \n 7.0   8.0    9.0 "}));
}

} // namespace
