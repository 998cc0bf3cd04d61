// Fields returned from functions and assigned from temporaries: the move
// operations hand the image over instead of sharing it, so that AddressSanitizer
// sees neither a double release nor a leak.

#include <gtest/gtest.h>

#include <utility>

#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

CSSEMatrix RampField(int w, int h)
{
    CSSEMatrix field;
    field.Create(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) field.SetPoint(x, y, static_cast<float>(x + 100 * y));
    field.SetRowProcessed(h - 2);
    field.GetFromToArray().CalcArray(field, 0, w - 1);
    return field;
}

TEST(FieldMoves, FloatFieldTakesOverImageSpansAndRowState)
{
    CSSEMatrix target;
    target.Create(3, 3); // its own image must be released, not leaked
    target = RampField(40, 130);
    EXPECT_EQ(target.GetSizeX(), 40);
    EXPECT_EQ(target.GetSizeY(), 130);
    EXPECT_EQ(target.GetFields(), 2);
    EXPECT_EQ(target.GetPoint(39, 129), 39.0f + 12900.0f);
    EXPECT_EQ(target.GetRowProcessed(), 128);
    EXPECT_EQ(target.GetFromToArray().GetNumEntries(), (130 + 3) >> 2);

    CSSEMatrix moved(std::move(target));
    EXPECT_EQ(moved.GetPoint(5, 7), 705.0f);
    EXPECT_EQ(target.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(target.GetSizeX(), 0);
    EXPECT_EQ(target.GetFromToArray().GetNumEntries(), 0);
    target = std::move(moved); // the emptied field is usable again
    EXPECT_EQ(target.GetPoint(5, 7), 705.0f);
}

TEST(FieldMoves, ByteFieldTakesOverItsImage)
{
    CSSEcharMatrix target(4, 4);
    CSSEcharMatrix source(20, 40);
    source.SetPoint(19, 39, 7);
    target = std::move(source);
    EXPECT_EQ(target.GetSizeX(), 20);
    EXPECT_EQ(target.GetPoint(19, 39), 7);
    CSSEcharMatrix moved(std::move(target));
    EXPECT_EQ(moved.GetPoint(19, 39), 7);
}

} // namespace
