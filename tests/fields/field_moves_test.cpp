#include "fields/field_storage.h"
#include "vekdll/fields/img_from_to_array.h"

namespace {

using namespace vek::test;

// Values that fit a byte and tell neighbouring positions apart in both rasters.
int Pattern(int x, int row)
{
    return ByteTag(x, row);
}

template <class Field>
class RasterMoves : public testing::Test {};
using Rasters = testing::Types<CSSEMatrix, CSSEcharMatrix>;
TYPED_TEST_SUITE(RasterMoves, Rasters);

// Under AddressSanitizer every read here would report an image released by
// the wrong party, and the end of each field a second release.
TYPED_TEST(RasterMoves, AMoveReleasesNothingTheTargetSharedAndTheTargetOwnsWhatItTook)
{
    using Field = TypeParam;
    const Field a = FieldOf<Field>(5, 40, Pattern);
    const auto image = AllStored(a);
    {
        // Handed on by assignment, then given another field: the image stays a's.
        Field b;
        b = a;
        b = Field();
        EXPECT_EQ(std::pair(b.GetMatrixDataDirectly() == nullptr, b.GetSizeX()), std::pair(true, 0));
    }
    EXPECT_EQ(AllStored(a), image);

    // A field made elsewhere outlives the temporary it came in; moved on, it
    // leaves an empty field behind that takes an image again.
    Field made;
    made = FieldOf<Field>(3, 20, Pattern);
    Field next(std::move(made));
    EXPECT_EQ(std::pair(made.GetMatrixDataDirectly() == nullptr, made.GetSizeY()), std::pair(true, 0));
    made = FieldOf<Field>(2, 2, Pattern);
    Field& same = next;
    next = std::move(same); // onto itself: nothing changes
    EXPECT_EQ(AllStored(next), AllStored(FieldOf<Field>(3, 20, Pattern)));
    EXPECT_EQ(AllStored(made), AllStored(FieldOf<Field>(2, 2, Pattern)));
}

TEST(CImgFromToArrayMoves, AMoveReleasesNothingTheTargetSharedAndTheTargetOwnsWhatItTook)
{
    // Every line changes at column 2 and back at column 5: the spans (2, 5).
    const CSSEMatrix field = FieldOf(7, 9, [](int x, int) { return x >= 2 && x <= 4 ? 5.0f : 0.0f; });
    const auto spanOf = [](const CImgFromToArray& spans, int line) {
        int from = -1;
        int to = -1;
        spans.GetFromToCoords(from, to, line, 1);
        return std::pair(from, to);
    };
    CImgFromToArray a;
    a.CalcArray(field, 0, 6);
    {
        CImgFromToArray b;
        b = a;
        b = CImgFromToArray();
        EXPECT_EQ(b.GetNumEntries(), 0);
    }
    EXPECT_EQ(std::tuple(a.GetNumEntries(), spanOf(a, 0), spanOf(a, 2)), std::tuple(3, std::pair(2, 5), std::pair(2, 5)));

    CImgFromToArray taken;
    {
        CImgFromToArray spans;
        spans.CalcArray(field, 0, 6);
        taken = std::move(spans);
        EXPECT_EQ(spans.GetNumEntries(), 0);
    }
    EXPECT_EQ(std::tuple(taken.GetNumEntries(), spanOf(taken, 2), taken.IsPositionInArray(5, 8, 1)), std::tuple(3, std::pair(2, 5), true));
}

} // namespace
