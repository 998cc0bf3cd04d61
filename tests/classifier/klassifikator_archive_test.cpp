#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>

#include "classifier/classifier_helpers.h"
#include "support/archive_bytes.h"
#include "vekdll/classifier/klassifikator.h"
#include "vekdll/platform/framework_exceptions.h"

using vek::test::FillTwoClasses;
using vek::test::NewElement;

namespace {

std::vector<BYTE> Store(ZrCKlassifikator& k)
{
    return vek::test::StoreToBytes([&](CArchive& ar) { k.Serialize(ar); });
}

void Load(ZrCKlassifikator& k, const std::vector<BYTE>& bytes)
{
    vek::test::LoadFromBytes(bytes, [&](CArchive& ar) { k.Serialize(ar); });
}

// The training sets agree in class count and element by element.
void ExpectSameTrainingSet(ZrCKlassifikator& a, ZrCKlassifikator& b)
{
    EXPECT_EQ(a.NumClasses, b.NumClasses);
    EXPECT_EQ(Store(a), Store(b));
}

// Loads `bytes` into a classifier that held data before; returns the cause
// of the CArchiveException, or none, and checks a failed load left it empty.
int LoadFailureCause(const std::vector<BYTE>& bytes)
{
    ZrCKlassifikator k;
    FillTwoClasses(k);
    try {
        Load(k, bytes);
    } catch (const CArchiveException& e) {
        EXPECT_TRUE(k.TrainingSet.IsEmpty());
        EXPECT_EQ(k.NumClasses, 0);
        return e.m_cause;
    }
    for (POSITION pos = k.TrainingSet.GetHeadPosition(); pos != nullptr;) {
        EXPECT_EQ(k.TrainingSet.GetNext(pos)->NumFeatures, k.NumFeatures);
    }
    return CArchiveException::none;
}

std::vector<BYTE> Ints(std::initializer_list<int> values)
{
    return vek::test::StoreToBytes([&](CArchive& ar) {
        for (int v : values) ar << v;
    });
}

TEST(ZrCKlassifikatorArchiveTest, TwoElementsOfThreeFeaturesTakeFortyEightBytes)
{
    ZrCKlassifikator k;
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1.0f, 2.0f, -0.5f}, 1));
    k.AddEntryTrainingset(NewElement({0.25f, 3.0f, 100.0f}, 0));
    const std::vector<BYTE> expected = {
        0x02, 0x00, 0x00, 0x00, // count
        0x02, 0x00, 0x00, 0x00, // NumClasses
        0x03, 0x00, 0x00, 0x00, // NumFeatures
        0x01, 0x00, 0x00, 0x00, // ClassId
        0x00, 0x00, 0x80, 0x3F, // 1.0
        0x00, 0x00, 0x00, 0x40, // 2.0
        0x00, 0x00, 0x00, 0xBF, // -0.5
        0x03, 0x00, 0x00, 0x00, // NumFeatures
        0x00, 0x00, 0x00, 0x00, // ClassId
        0x00, 0x00, 0x80, 0x3E, // 0.25
        0x00, 0x00, 0x40, 0x40, // 3.0
        0x00, 0x00, 0xC8, 0x42, // 100.0
    };
    EXPECT_EQ(Store(k), expected);

    ZrCKlassifikator loaded;
    loaded.AddEntryTrainingset(NewElement({9}, 5)); // replaced by the load
    Load(loaded, expected);
    ExpectSameTrainingSet(loaded, k);
    EXPECT_EQ(loaded.NumFeatures, 3);
    EXPECT_FALSE(loaded.Trained);
}

TEST(ZrCKlassifikatorArchiveTest, MalformedStreamsThrowAndLeaveTheClassifierEmpty)
{
    ZrCKlassifikator k;
    FillTwoClasses(k);
    const std::vector<BYTE> valid = Store(k);
    for (std::size_t size = 0; size < valid.size(); ++size) {
        const std::vector<BYTE> truncated(valid.begin(), valid.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(LoadFailureCause(truncated), CArchiveException::none) << "cut at " << size;
    }

    EXPECT_EQ(LoadFailureCause(Ints({-1, 2})), CArchiveException::badIndex);         // negative count
    EXPECT_EQ(LoadFailureCause(Ints({0, -3})), CArchiveException::badIndex);         // negative classes
    EXPECT_EQ(LoadFailureCause(Ints({1, 2, -4, 0})), CArchiveException::badIndex);   // negative length
    // Counts far beyond the stream are refused before anything is allocated
    // for them; an attempt would end in CMemoryException instead.
    EXPECT_EQ(LoadFailureCause(Ints({0x7FFFFFFF, 2, 1, 0})), CArchiveException::badIndex);
    EXPECT_EQ(LoadFailureCause(Ints({1, 2, 0x7FFFFFFF, 0})), CArchiveException::badIndex);

    ZrCKlassifikator mixed;
    mixed.AddEntryTrainingset(NewElement({1, 2, 3}, 0));
    mixed.AddEntryTrainingset(NewElement({1, 2}, 1));
    EXPECT_EQ(LoadFailureCause(Store(mixed)), CArchiveException::badIndex);

    EXPECT_EQ(LoadFailureCause(Ints({0, 4})), CArchiveException::none);
}

TEST(ZrCKlassifikatorArchiveTest, RandomAndCorruptedBytesLoadOrThrowArchiveExceptions)
{
    ZrCKlassifikator k;
    k.setNumClasses(3);
    for (int i = 0; i < 6; ++i) k.AddEntryTrainingset(NewElement({1.0f * i, 2, 3, 4}, i % 3));
    const std::vector<BYTE> valid = Store(k);

    std::mt19937 engine(4711);
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<BYTE> bytes = valid;
        if (trial % 2 == 0) {
            bytes.resize(engine() % 64);
            for (BYTE& b : bytes) b = static_cast<BYTE>(engine());
        } else {
            for (int flips = 1 + static_cast<int>(engine() % 4); flips > 0; --flips) {
                bytes[engine() % bytes.size()] = static_cast<BYTE>(engine());
            }
        }
        LoadFailureCause(bytes); // checks the classifier either way
    }
}

class TrainingFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        folder_ = std::filesystem::temp_directory_path() /
                  ("vekdll_cls_" + std::to_string(::getpid()) + "_" + info->name());
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }

private:
    std::filesystem::path folder_;
};

TEST_F(TrainingFileTest, SavedFilesLoadBackWhileMissingOrUncreatableOnesChangeNothing)
{
    vek::test::MessageRecorder recorder;
    ZrCKlassifikator k;
    FillTwoClasses(k);
    const std::string path = PathOf("set.cls");
    k.SaveTrainingsData(path);
    EXPECT_EQ(std::filesystem::file_size(path), 8u + 2u * (8u + 8u));

    ZrCKlassifikator loaded;
    loaded.LoadTrainingsData(path);
    ExpectSameTrainingSet(loaded, k);
    loaded.Trained = true;
    loaded.LoadTrainingsData(PathOf("missing.cls"));
    loaded.LoadTrainingsData(PathOf("")); // the folder itself
    EXPECT_TRUE(loaded.Trained);
    ExpectSameTrainingSet(loaded, k);
    EXPECT_TRUE(recorder.messages.empty());

    k.SaveTrainingsData(PathOf("no/such/folder/set.cls"));
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0], "ZrCKlassifikator::SaveTrainingsData: File could not be opened %s\n");
}

TEST_F(TrainingFileTest, DialogFormsAskForAClsPathAndDoNothingWhenCancelled)
{
    ZrCKlassifikator k;
    FillTwoClasses(k);
    {
        vek::test::PathAnswer answer(PathOf("asked.cls"));
        k.SaveTrainingsData();
        ZrCKlassifikator loaded;
        loaded.LoadTrainingsData();
        ExpectSameTrainingSet(loaded, k);
        ASSERT_EQ(answer.requests.size(), 2u);
        EXPECT_FALSE(answer.requests[0].forOpening);
        EXPECT_TRUE(answer.requests[0].promptOverwrite);
        EXPECT_TRUE(answer.requests[1].forOpening);
        for (const vek::PathRequest& request : answer.requests) {
            EXPECT_EQ(request.defaultExtension, "cls");
            EXPECT_EQ(request.filter, "Classifier Files (*.cls)|*.cls||");
        }
    }
    for (const char* reply : {static_cast<const char*>(nullptr), ""}) {
        vek::test::PathAnswer answer(reply != nullptr ? std::optional<std::string>(reply) : std::nullopt);
        vek::test::MessageRecorder recorder;
        ZrCKlassifikator untouched;
        FillTwoClasses(untouched);
        untouched.LoadTrainingsData();
        untouched.SaveTrainingsData();
        EXPECT_EQ(answer.requests.size(), 2u);
        EXPECT_TRUE(recorder.messages.empty());
        ExpectSameTrainingSet(untouched, k);
    }
}

} // namespace
