#include <gtest/gtest.h>

#include "classifier/classifier_helpers.h"
#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/classifier/klassifikator.h"
#include "vekdll/platform/framework_exceptions.h"

using vek::test::FillTwoClasses;
using vek::test::NewElement;

namespace {

TEST(ZrCKlassifikatorTest, EveryChangeOfDataClearsTrained)
{
    ZrCBayesKlassifikator k;
    FillTwoClasses(k);
    k.Training(false);
    ASSERT_TRUE(k.Trained);
    k.setNumClasses(2);
    EXPECT_TRUE(k.Trained); // the same value is no change
    k.setNumClasses(3);
    EXPECT_FALSE(k.Trained);

    // A vector of another length changes NumFeatures; older ones keep theirs.
    k.Trained = true;
    k.AddEntryTrainingset(NewElement({1, 2, 3}, 0));
    EXPECT_EQ(k.NumFeatures, 3);
    EXPECT_EQ(k.TrainingSet.GetHead()->NumFeatures, 2);
    EXPECT_FALSE(k.Trained);

    // A list gives its first element's length and hands over all elements;
    // an empty list changes nothing.
    CTypedPtrList<CPtrList, ZrCKlassenelement*> list;
    k.Trained = true;
    k.AddEntriesTrainingset(&list);
    EXPECT_TRUE(k.Trained);
    list.AddTail(NewElement({1, 2, 3, 4}, 0));
    list.AddTail(NewElement({1}, 1));
    k.AddEntriesTrainingset(&list);
    EXPECT_EQ(k.NumFeatures, 4);
    EXPECT_EQ(k.TrainingSet.GetCount(), 5);
    EXPECT_FALSE(k.Trained);

    k.ClearAll();
    EXPECT_EQ(k.NumClasses, 0);
    EXPECT_EQ(k.NumFeatures, 4);
    EXPECT_TRUE(k.TrainingSet.IsEmpty());
    EXPECT_TRUE(k.Patterns.IsEmpty());

    ZrCKlassifikator base;
    FillTwoClasses(base);
    base.Training();
    EXPECT_FALSE(base.Trained);
    EXPECT_EQ(base.Classify(base.TrainingSet.GetHead()), -1);
}

TEST(ZrCKlassifikatorTest, CopyFromDuplicatesTheTrainingSetButNotTheModels)
{
    ZrCBayesKlassifikator src;
    FillTwoClasses(src);
    src.Training(false);

    ZrCBayesKlassifikator copy;
    copy.AddEntryTrainingset(NewElement({9, 9, 9}, 0));
    copy.CopyFrom(&src);
    EXPECT_EQ(copy.NumClasses, 2);
    EXPECT_EQ(copy.NumFeatures, 2);
    EXPECT_FALSE(copy.Trained);
    EXPECT_TRUE(copy.Patterns.IsEmpty());
    ASSERT_EQ(copy.TrainingSet.GetCount(), 2);
    EXPECT_NE(copy.TrainingSet.GetHead(), src.TrainingSet.GetHead());
    EXPECT_EQ(copy.TrainingSet.GetHead()->Features[1], 2.0f);
    EXPECT_EQ(copy.TrainingSet.GetTail()->ClassId, 1);

    copy.CopyFrom(&copy);
    EXPECT_EQ(copy.TrainingSet.GetCount(), 2);
    EXPECT_THROW(copy.CopyFrom(nullptr), CInvalidArgException);
}

} // namespace
