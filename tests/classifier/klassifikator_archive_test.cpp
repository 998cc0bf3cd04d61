#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>

#include "classifier/classifier_helpers.h"
#include "support/archive_bytes.h"
#include "vekdll/classifier/klassifikator.h"
#include "vekdll/platform/framework_exceptions.h"

using vek::test::LoadFromBytes;
using vek::test::NewElement;
using vek::test::StoreToBytes;

namespace {

std::vector<BYTE> Store(ZrCKlassifikator& k)
{
    return StoreToBytes([&](CArchive& ar) { k.Serialize(ar); });
}

void Load(ZrCKlassifikator& k, const std::vector<BYTE>& bytes)
{
    LoadFromBytes(bytes, [&](CArchive& ar) { k.Serialize(ar); });
}

// The training sets are equal element by element, in order.
void ExpectSameTrainingSet(ZrCKlassifikator& a, ZrCKlassifikator& b)
{
    EXPECT_EQ(a.NumClasses, b.NumClasses);
    ASSERT_EQ(a.TrainingSet.GetCount(), b.TrainingSet.GetCount());
    POSITION pa = a.TrainingSet.GetHeadPosition();
    POSITION pb = b.TrainingSet.GetHeadPosition();
    while (pa != nullptr) {
        const ZrCKlassenelement* ea = a.TrainingSet.GetNext(pa);
        const ZrCKlassenelement* eb = b.TrainingSet.GetNext(pb);
        ASSERT_EQ(ea->NumFeatures, eb->NumFeatures);
        EXPECT_EQ(ea->ClassId, eb->ClassId);
        for (int i = 0; i < ea->NumFeatures; ++i) EXPECT_EQ(ea->Features[i], eb->Features[i]);
    }
}

void ExpectEmpty(const ZrCKlassifikator& k)
{
    EXPECT_TRUE(k.TrainingSet.IsEmpty());
    EXPECT_EQ(k.NumClasses, 0);
    EXPECT_FALSE(k.Trained);
}

// Little-endian bytes of an int, for streams built by hand.
void AppendInt(std::vector<BYTE>& bytes, int value)
{
    const auto u = static_cast<unsigned>(value);
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<BYTE>(u >> shift));
}

int LoadFailureCause(const std::vector<BYTE>& bytes)
{
    ZrCKlassifikator k;
    k.AddEntryTrainingset(NewElement({7, 7}, 0));
    try {
        Load(k, bytes);
    } catch (const CArchiveException& e) {
        ExpectEmpty(k);
        return e.m_cause;
    }
    return CArchiveException::none;
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

TEST(ZrCKlassifikatorArchiveTest, RandomTrainingSetsSurviveARoundTrip)
{
    std::mt19937 engine(77);
    for (int trial = 0; trial < 20; ++trial) {
        ZrCKlassifikator k;
        k.setNumClasses(1 + static_cast<int>(engine() % 5));
        const int count = static_cast<int>(engine() % 300); // up to some 12 KB, past the archive buffer
        const int length = static_cast<int>(engine() % 10);
        for (int i = 0; i < count; ++i) {
            auto* e = new ZrCKlassenelement(length, static_cast<int>(engine() % 5));
            for (int f = 0; f < length; ++f) e->Features[f] = static_cast<float>(static_cast<int>(engine())) / 1024.0f;
            k.AddEntryTrainingset(e);
        }
        const std::vector<BYTE> bytes = Store(k);
        EXPECT_EQ(bytes.size(), 8u + static_cast<std::size_t>(count) * (8u + 4u * static_cast<std::size_t>(length)));
        ZrCKlassifikator loaded;
        Load(loaded, bytes);
        ExpectSameTrainingSet(loaded, k);
    }
}

TEST(ZrCKlassifikatorArchiveTest, MalformedStreamsThrowAndLeaveTheClassifierEmpty)
{
    ZrCKlassifikator k;
    k.setNumClasses(2);
    k.AddEntryTrainingset(NewElement({1, 2, 3}, 1));
    k.AddEntryTrainingset(NewElement({4, 5, 6}, 0));
    const std::vector<BYTE> valid = Store(k);

    // Cut at every length.
    for (std::size_t size = 0; size < valid.size(); ++size) {
        const std::vector<BYTE> truncated(valid.begin(), valid.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(LoadFailureCause(truncated), CArchiveException::none) << "cut at " << size;
    }

    auto header = [](int count, int numClasses) {
        std::vector<BYTE> bytes;
        AppendInt(bytes, count);
        AppendInt(bytes, numClasses);
        return bytes;
    };
    std::vector<BYTE> negativeCount = header(-1, 2);
    EXPECT_EQ(LoadFailureCause(negativeCount), CArchiveException::badIndex);

    std::vector<BYTE> negativeClasses = header(0, -3);
    EXPECT_EQ(LoadFailureCause(negativeClasses), CArchiveException::badIndex);

    // Counts far beyond the stream are refused before anything is allocated
    // for them (an attempt would end in CMemoryException instead).
    std::vector<BYTE> absurdCount = header(0x7FFFFFFF, 2);
    AppendInt(absurdCount, 1);
    AppendInt(absurdCount, 0);
    EXPECT_EQ(LoadFailureCause(absurdCount), CArchiveException::badIndex);

    std::vector<BYTE> absurdLength = header(1, 2);
    AppendInt(absurdLength, 0x7FFFFFFF);
    AppendInt(absurdLength, 0);
    EXPECT_EQ(LoadFailureCause(absurdLength), CArchiveException::badIndex);

    std::vector<BYTE> negativeLength = header(1, 2);
    AppendInt(negativeLength, -4);
    AppendInt(negativeLength, 0);
    EXPECT_EQ(LoadFailureCause(negativeLength), CArchiveException::badIndex);

    ZrCKlassifikator mixed;
    mixed.AddEntryTrainingset(NewElement({1, 2, 3}, 0));
    mixed.AddEntryTrainingset(NewElement({1, 2}, 1));
    EXPECT_EQ(LoadFailureCause(Store(mixed)), CArchiveException::badIndex);

    // A loaded stream with no elements is fine and keeps nothing.
    EXPECT_EQ(LoadFailureCause(header(0, 4)), CArchiveException::none);
}

TEST(ZrCKlassifikatorArchiveTest, RandomAndCorruptedBytesLoadOrThrowArchiveExceptions)
{
    ZrCKlassifikator k;
    k.setNumClasses(3);
    for (int i = 0; i < 6; ++i) k.AddEntryTrainingset(NewElement({1.0f * i, 2, 3, 4}, i % 3));
    const std::vector<BYTE> valid = Store(k);

    std::mt19937 engine(4711);
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<BYTE> bytes;
        if (trial % 2 == 0) {
            bytes.resize(engine() % 64);
            for (BYTE& b : bytes) b = static_cast<BYTE>(engine());
        } else {
            bytes = valid;
            for (int flips = 1 + static_cast<int>(engine() % 4); flips > 0; --flips) {
                bytes[engine() % bytes.size()] = static_cast<BYTE>(engine());
            }
        }
        ZrCKlassifikator loaded;
        try {
            Load(loaded, bytes);
            // Whatever loads is a consistent training set.
            for (POSITION pos = loaded.TrainingSet.GetHeadPosition(); pos != nullptr;) {
                EXPECT_EQ(loaded.TrainingSet.GetNext(pos)->NumFeatures, loaded.NumFeatures);
            }
        } catch (const CArchiveException&) {
            ExpectEmpty(loaded);
        }
    }
}

// ---------------------------------------------------------------- files

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

    static void Fill(ZrCKlassifikator& k)
    {
        k.setNumClasses(2);
        k.AddEntryTrainingset(NewElement({1, 2}, 0));
        k.AddEntryTrainingset(NewElement({3, 4}, 1));
    }

private:
    std::filesystem::path folder_;
};

// Answers path requests with a fixed reply and records them.
class PathAnswer {
public:
    explicit PathAnswer(std::optional<std::string> reply)
        : previous_(vek::SetPathHandler([this, reply](const vek::PathRequest& request) {
              requests.push_back(request);
              return reply;
          }))
    {
    }
    ~PathAnswer() { vek::SetPathHandler(previous_); }
    PathAnswer(const PathAnswer&) = delete;
    PathAnswer& operator=(const PathAnswer&) = delete;

    std::vector<vek::PathRequest> requests;

private:
    vek::PathHandler previous_;
};

TEST_F(TrainingFileTest, SavedFileLoadsBackAndAMissingFileChangesNothing)
{
    ZrCKlassifikator k;
    Fill(k);
    const std::string path = PathOf("set.cls");
    k.SaveTrainingsData(path);
    EXPECT_EQ(std::filesystem::file_size(path), 8u + 2u * (8u + 8u));

    ZrCKlassifikator loaded;
    loaded.LoadTrainingsData(path);
    ExpectSameTrainingSet(loaded, k);

    loaded.Trained = true;
    loaded.LoadTrainingsData(PathOf("missing.cls"));
    loaded.LoadTrainingsData(PathOf("")); // the folder itself is no training file
    EXPECT_TRUE(loaded.Trained);
    ExpectSameTrainingSet(loaded, k);
}

TEST_F(TrainingFileTest, AFileThatCannotBeCreatedIsReportedWithTheLiteralText)
{
    vek::test::MessageRecorder recorder;
    ZrCKlassifikator k;
    Fill(k);
    const std::string path = PathOf("no/such/folder/set.cls");
    k.SaveTrainingsData(path);
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0], "ZrCKlassifikator::SaveTrainingsData: File could not be opened %s\n");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TrainingFileTest, DialogFormsAskForAClsPathAndDoNothingWhenCancelled)
{
    ZrCKlassifikator k;
    Fill(k);
    const std::string path = PathOf("asked.cls");
    {
        PathAnswer answer(path);
        k.SaveTrainingsData();
        ASSERT_EQ(answer.requests.size(), 1u);
        EXPECT_FALSE(answer.requests[0].forOpening);
        EXPECT_TRUE(answer.requests[0].promptOverwrite);
        EXPECT_EQ(answer.requests[0].defaultExtension, "cls");
        EXPECT_EQ(answer.requests[0].filter, "Classifier Files (*.cls)|*.cls||");

        ZrCKlassifikator loaded;
        loaded.LoadTrainingsData();
        ASSERT_EQ(answer.requests.size(), 2u);
        EXPECT_TRUE(answer.requests[1].forOpening);
        EXPECT_EQ(answer.requests[1].filter, "Classifier Files (*.cls)|*.cls||");
        ExpectSameTrainingSet(loaded, k);
    }
    for (const std::optional<std::string>& reply : {std::optional<std::string>(), std::optional<std::string>("")}) {
        PathAnswer answer(reply);
        vek::test::MessageRecorder recorder;
        ZrCKlassifikator untouched;
        Fill(untouched);
        untouched.LoadTrainingsData();
        untouched.SaveTrainingsData();
        EXPECT_EQ(answer.requests.size(), 2u);
        EXPECT_TRUE(recorder.messages.empty());
        ExpectSameTrainingSet(untouched, k);
    }
}

} // namespace
