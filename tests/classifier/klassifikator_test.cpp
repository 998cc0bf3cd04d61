#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

#include "classifier/classifier_helpers.h"
#include "support/archive_bytes.h"
#include "support/recorded_hooks.h"
#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/platform/framework_exceptions.h"

using namespace vek::test;

namespace {

const std::vector<std::tuple<float, float, int>> kTwoClasses = {{1, 2, 0}, {3, 4, 1}};

TEST(ZrCKlassifikator, EveryChangeOfTheDataClearsTrainedAndCopyFromTakesTheSetButNoModels)
{
    ZrCBayesKlassifikator k, source, copy;
    Fill(k, 2, kTwoClasses);
    k.Training(false);
    k.setNumClasses(2); // the same value is no change
    EXPECT_TRUE(k.Trained);
    // A list gives its first element's length and hands over all elements.
    CTypedPtrList<CPtrList, ZrCKlassenelement*> list;
    list.AddTail(NewElement({1, 2, 3, 4}, 0));
    list.AddTail(NewElement({1}, 1));
    k.AddEntriesTrainingset(&list);
    EXPECT_EQ(std::tuple(k.NumFeatures, k.Trained, k.TrainingSet.GetCount()), std::tuple(4, false, 4));

    Fill(source, 2, kTwoClasses);
    source.Training(false);
    copy.AddEntryTrainingset(NewElement({9, 9, 9}, 0));
    copy.CopyFrom(&source);
    copy.CopyFrom(&copy);
    EXPECT_EQ(std::tuple(copy.NumClasses, copy.NumFeatures, copy.Patterns.IsEmpty(), copy.Trained), std::tuple(2, 2, true, false));
    EXPECT_NE(copy.TrainingSet.GetHead(), source.TrainingSet.GetHead());
    EXPECT_EQ(SerializeToBytes(copy), SerializeToBytes(source));
    EXPECT_THROW(copy.CopyFrom(nullptr), CInvalidArgException);
}

TEST(ZrCKlassifikatorArchive, TwoElementsOfThreeFeaturesTakeFortyEightBytes)
{
    ZrCKlassifikator k, loaded;
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1.0f, 2.0f, -0.5f}, 1));
    k.AddEntryTrainingset(NewElement({0.25f, 3.0f, 100.0f}, 0));
    const std::vector<BYTE> expected = {
        2, 0, 0, 0, 2, 0, 0, 0,                                                 // count, NumClasses
        3, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0, 0, 0x40, 0, 0, 0, 0xBF,       // 3, class 1: 1.0, 2.0, -0.5
        3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x3E, 0, 0, 0x40, 0x40, 0, 0, 0xC8, 0x42, // 3, class 0: 0.25, 3.0, 100.0
    };
    EXPECT_EQ(SerializeToBytes(k), expected);
    loaded.AddEntryTrainingset(NewElement({9}, 5)); // replaced by the load
    SerializeFromBytes(loaded, expected);
    EXPECT_EQ(std::pair(loaded.NumClasses, loaded.NumFeatures), std::pair(2, 3));
    EXPECT_EQ(SerializeToBytes(loaded), expected);
}

// Loads `bytes` into a classifier that held data before; returns the cause of
// the refusal, or none, and checks what either outcome leaves: half a
// training set would train wrong models.
int Refused(const std::vector<BYTE>& bytes)
{
    ZrCKlassifikator k;
    Fill(k, 2, kTwoClasses);
    const int cause = LoadFailureCause(k, bytes);
    EXPECT_TRUE(cause == CArchiveException::none || (k.TrainingSet.IsEmpty() && k.NumClasses == 0));
    if (!k.TrainingSet.IsEmpty()) {
        EXPECT_EQ(k.TrainingSet.GetTail()->NumFeatures, k.NumFeatures);
    }
    return cause;
}

TEST(ZrCKlassifikatorArchive, TruncatedNegativeAbsurdMixedAndRandomStreamsThrowAndLeaveItEmpty)
{
    ZrCKlassifikator k;
    Fill(k, 2, kTwoClasses);
    const std::vector<BYTE> valid = SerializeToBytes(k);
    for (std::size_t size = 0; size < valid.size(); ++size) {
        EXPECT_NE(Refused(std::vector<BYTE>(valid.begin(), valid.begin() + static_cast<long>(size))), CArchiveException::none) << size;
    }
    // Negative counts, classes and lengths, and counts far beyond the stream,
    // refused before anything is allocated for them; a second element whose
    // length reaches beyond the stream, after a first of another length.
    for (const auto& ints : {BytesOf(-1, 2), BytesOf(0, -3), BytesOf(1, 2, -4, 0), BytesOf(0x7FFFFFFF, 2, 1, 0),
                             BytesOf(1, 2, 0x7FFFFFFF, 0), BytesOf(2, 2, 1, 0, 0, 3, 0, 0, 0)}) {
        EXPECT_EQ(Refused(ints), CArchiveException::badIndex) << ints.size() << " bytes";
    }
    EXPECT_EQ(Refused(BytesOf(0, 4)), CArchiveException::none);
    EXPECT_EQ(Refused(BytesOf(2, 2, 1, 0, 0, 2, 0, 0, 0)), CArchiveException::none) << "lengths 1 and 2 in one set";
    // Random streams and valid ones with a few bytes changed; the check is in Refused.
    std::mt19937 engine(4711);
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<BYTE> bytes = valid;
        if (trial % 2 == 0) bytes.assign(engine() % 64, 0);
        for (BYTE& b : bytes) b = trial % 2 == 0 || engine() % 8 == 0 ? static_cast<BYTE>(engine()) : b;
        Refused(bytes);
    }
}

TEST(ZrCKlassifikatorFiles, SavedFilesLoadBackMissingOnesChangeNothingAndDialogsAskForAClsPath)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / ("vekdll_cls_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    ZrCKlassifikator k, loaded;
    Fill(k, 2, kTwoClasses);
    {
        RecordedHooks hooks((folder / "set.cls").string());
        k.SaveTrainingsData();
        loaded.LoadTrainingsData();
        EXPECT_EQ(SerializeToBytes(loaded), SerializeToBytes(k));
        std::string asked; // opening, overwrite prompt, extension and filter of each request
        for (const vek::PathRequest& r : hooks.requests) asked += std::to_string(r.forOpening) + std::to_string(r.promptOverwrite) + r.defaultExtension + r.filter + " ";
        EXPECT_EQ(asked, "01clsClassifier Files (*.cls)|*.cls|| 10clsClassifier Files (*.cls)|*.cls|| ");
    }
    // Cancelled or empty answers, a missing file and a folder change nothing and say nothing.
    for (std::optional<std::string> reply : {std::optional<std::string>(), std::optional<std::string>("")}) {
        RecordedHooks cancelled(reply);
        loaded.Trained = true;
        k.SaveTrainingsData();
        loaded.LoadTrainingsData();
        loaded.LoadTrainingsData((folder / "missing.cls").string());
        loaded.LoadTrainingsData(folder.string());
        EXPECT_TRUE(loaded.Trained && cancelled.messages.empty());
    }
    RecordedHooks hooks;
    k.SaveTrainingsData((folder / "no/such/folder/set.cls").string());
    EXPECT_EQ(hooks.messages, std::vector<std::string>{"ZrCKlassifikator::SaveTrainingsData: File could not be opened %s\n"});
    std::filesystem::remove_all(folder);
}

// Length, class and features of each element, in list order.
std::vector<std::pair<int, std::vector<float>>> ElementsOf(const ZrCKlassifikator& k)
{
    std::vector<std::pair<int, std::vector<float>>> elements;
    for (POSITION pos = k.TrainingSet.GetHeadPosition(); pos != nullptr;) {
        const ZrCKlassenelement* e = k.TrainingSet.GetNext(pos);
        elements.emplace_back(e->ClassId, std::vector<float>(e->Features, e->Features + e->NumFeatures));
    }
    return elements;
}

TEST(ZrCKlassifikatorFiles, ASetOfMixedLengthsLoadsBackElementByElementWithTheLastLength)
{
    const std::filesystem::path file = std::filesystem::temp_directory_path() / ("vekdll_mixed_" + std::to_string(::getpid()) + ".cls");
    const std::vector<std::pair<int, std::vector<float>>> shortFirst = {{1, {1.5f, -2.0f}}, {0, {3.0f, 4.0f, 5.0f}}};
    // NumFeatures follows the last element, not the longest one.
    for (const auto& [elements, lastLength] : {std::pair{shortFirst, 3}, std::pair{decltype(shortFirst){shortFirst[1], shortFirst[0]}, 2}}) {
        ZrCKlassifikator k, loaded;
        k.setNumClasses(2);
        for (const auto& [classId, features] : elements) k.AddEntryTrainingset(NewElement(features, classId));
        k.SaveTrainingsData(file.string());
        loaded.Trained = true;
        ASSERT_NO_THROW(loaded.LoadTrainingsData(file.string()));
        EXPECT_EQ(ElementsOf(loaded), elements);
        EXPECT_EQ(std::tuple(loaded.NumFeatures, loaded.NumClasses, loaded.Trained), std::tuple(lastLength, 2, false));
    }
    std::filesystem::remove(file);
}

} // namespace
