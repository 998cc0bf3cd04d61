#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

// Every operation of the arithmetic and the filters on fields too small for
// their loops, on a field released but still reporting its size, and on one
// never created. Under the sanitizers this shows that none reaches outside
// its storage; the filters that clear their frame leave such fields at 0.
TEST(FieldOperationsOnSmallFields, StayInsideTheStorageAndClearWhatTheyCannotCompute)
{
    CSSEMatrix other;
    other.Create(2, 3);
    other.Fill(7.0f);
    const std::vector<std::function<void(CSSEMatrix&)>> operations{
        [](CSSEMatrix& m) { m.Absolute(); },
        [](CSSEMatrix& m) { m.OffsetMatrixAbove(0.5f, 1.0f); },
        [](CSSEMatrix& m) { m.ReplaceLineAbove(0.5f, 2.0f, 3); },
        [](CSSEMatrix& m) { m.TresholdBelow(0.5f, 2.0f, 1); },
        [](CSSEMatrix& m) { m.EraseOtherValuePixels(1.0f, 0.1f); },
        [&](CSSEMatrix& m) { m.EraseWithMatrixMax(&other, 3.0f); },
        [&](CSSEMatrix& m) { m.EraseFrame(&other); },
        [&](CSSEMatrix& m) { m.EraseFrameWithMask(&other); },
        [&](CSSEMatrix& m) { m.AddMatrixOffsetedConstrained(other, 0.5f, 1.0f, 1.0f); },
        [&](CSSEMatrix& m) { m.Stencil(other, 0.5f, 2.0f); },
        [&](CSSEMatrix& m) { m.CalcDifferenceMatrixConstrained(m, other, true, false); },
        [&](CSSEMatrix& m) { EXPECT_GE(m.NumValuesAbove(&other), 0); },
        [](CSSEMatrix& m) { EXPECT_GE(m.CalcAbsSum(), 0.0f); },
        [](CSSEMatrix& m) {
            float max = 0.0f;
            float min = 0.0f;
            m.CalcMinMaxValuesExcludeZero(&max, &min);
            m.CalcMaxValueOfPatch(&max, -5, 50, -5, 50);
            int box[4];
            m.CalcBoundingBox(box[0], box[1], box[2], box[3], 0.5f, false);
        },
        [](CSSEMatrix& m) { m.SimpleMaximumFilter(); },
        [](CSSEMatrix& m) { m.SimpleMedianFilter(); },
        [&](CSSEMatrix& m) { m.BoxFilter(other, true); },
        [&](CSSEMatrix& m) { m.MaskFilter(other, m, true); },
        [](CSSEMatrix& m) { m.Chamfer(); },
        [](CSSEMatrix& m) { m.ZhangSuen(0.5f); },
        [](CSSEMatrix& m) { m.CalcDerivativeX(); },
        [](CSSEMatrix& m) { m.CalcDerivativeY(); },
        [&](CSSEMatrix& m) {
            CFilters::Median5x5(other, m, -3, 9, -3, 9);
            CFilters::Median3x3(m, other, 0, 2, 0, 3);
        },
    };
    const std::pair<int, int> sizes[] = {{0, 0}, {1, 1}, {2, 2}, {3, 1}, {1, 5}, {2, 9}};
    for (std::size_t i = 0; i < operations.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "operation " << i);
        for (const auto& [sizeX, sizeY] : sizes) {
            CSSEMatrix m;
            m.Create(sizeX, sizeY);
            m.Fill(1.0f);
            operations[i](m);
            CSSEMatrix released;
            released.Create(sizeX, sizeY);
            released.FreeImageMemoryOnly();
            operations[i](released);
            EXPECT_EQ(released.GetMatrixDataDirectly() == nullptr, i != 10) << "only the difference creates a field";
            CSSEMatrix never;
            operations[i](never);
        }
    }

    // The neighbourhood filters that clear their frame clear all of a field
    // without inner pixels.
    for (const auto& filter : {&CSSEMatrix::SimpleMaximumFilter, &CSSEMatrix::SimpleMinimumFilter}) {
        CSSEMatrix narrow;
        narrow.Create(2, 6);
        narrow.Fill(4.0f);
        (narrow.*filter)();
        EXPECT_EQ(vek::test::AllLanes(narrow), std::vector<float>(16, 0.0f));
    }
    CSSEMatrix low;
    low.Create(6, 2);
    low.Fill(4.0f);
    low.ZhangSuen(1.0f);
    EXPECT_EQ(vek::test::AllLanes(low), std::vector<float>(24, 0.0f));
}

} // namespace
