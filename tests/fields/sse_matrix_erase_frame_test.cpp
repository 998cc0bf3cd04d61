#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fields/field_from_rows.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::CreateFromRows;
using vek::test::RowsOf;

TEST(FieldEraseFrame, PeelsOnePixelOffEachAreaReadingTheFieldAsItWas)
{
    CSSEMatrix m;
    CreateFromRows(m, {
        "1111111",
        "1111111",
        "1122211",
        "1122211",
        "1122211",
        "1111111",
        "11111..",
    });
    CSSEMatrix removed;
    removed.Create(7, 7);
    m.EraseFrame(&removed);
    // Nothing is 0 in the interior but the corner, so only the pixels next to
    // it go; the outermost frame is never touched, and the pixels peeled in
    // this pass do not peel their own neighbours.
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{
                             "1111111",
                             "1111111",
                             "1122211",
                             "1122211",
                             "1122211",
                             "11111.1",
                             "11111..",
                         }));
    EXPECT_EQ(removed.GetPoint(5, 5), 1.0f);
    EXPECT_EQ(removed.GetPoint(4, 5), 0.0f);

    // An area inside empty space loses its rim; a value close to 0 is data.
    CSSEMatrix island;
    CreateFromRows(island, {
        ".......",
        ".33333.",
        ".33333.",
        ".33333.",
        ".......",
    });
    island.SetPoint(3, 2, 1e-30f); // shown as '0'
    CSSEMatrix wrongSize;
    wrongSize.Create(3, 3);
    island.EraseFrame(&wrongSize); // used only if the sizes match
    EXPECT_EQ(RowsOf(island), (std::vector<std::string>{".......", ".......", "..303..", ".......", "......."}));
    EXPECT_EQ(wrongSize.GetPoint(1, 1), 0.0f);
    island.EraseFrame(nullptr);
    EXPECT_EQ(RowsOf(island), (std::vector<std::string>{".......", ".......", ".......", ".......", "......."}));
}

TEST(FieldEraseFrame, MaskNeighboursDecideAndTheMaskCentreIsNotRead)
{
    CSSEMatrix m;
    CreateFromRows(m, {"55555", "55555", "55555", "55555", "55555"});
    CSSEMatrix mask;
    CreateFromRows(mask, {
        "11111",
        "11.11", // an empty mask pixel erases its four neighbours, not itself
        "11111",
        "11111",
        "1111.", // a corner is nobody's four-neighbour in the interior
    });
    m.EraseFrameWithMask(&mask);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"55555", "5.5.5", "55.55", "55555", "55555"}));

    m.EraseFrameWithMask(nullptr);
    CSSEMatrix narrow;
    CreateFromRows(narrow, {"55", "55", "55"});
    CSSEMatrix emptyMask;
    CreateFromRows(emptyMask, {"..", "..", ".."});
    narrow.EraseFrameWithMask(&emptyMask);
    EXPECT_EQ(RowsOf(narrow), (std::vector<std::string>{"55", "55", "55"}));
}

TEST(FieldEraseFrame, EraseWithMatrixSetsInnerPixelsWhereTheOtherFieldWins)
{
    CSSEMatrix other;
    CreateFromRows(other, {
        "99999",
        "93199",
        "99999",
        "99999",
    });
    CSSEMatrix m;
    CreateFromRows(m, {
        "22222",
        "22272",
        "22222",
        "22222",
    });
    CSSEMatrix forMin;
    forMin.CopyFromSSEMatrix(m);

    // Max: inner pixels (rows 1 and 2, columns 1 to 3) where other > p and
    // p != 7 become 7. (3, 1) already holds 7; (2, 1) has other 1 < 2.
    m.EraseWithMatrixMax(&other, 7.0f);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"22222", "27272", "27772", "22222"}));

    // Min: only (2, 1), where other is smaller, becomes 0.
    forMin.EraseWithMatrixMin(&other, 0.0f);
    EXPECT_EQ(RowsOf(forMin), (std::vector<std::string>{"22222", "22.72", "22222", "22222"}));

    forMin.EraseWithMatrixMin(nullptr, 0.0f);
    CSSEMatrix narrow;
    CreateFromRows(narrow, {"22", "22", "22"});
    CSSEMatrix high;
    CreateFromRows(high, {"99", "99", "99"});
    narrow.EraseWithMatrixMax(&high, 7.0f);
    EXPECT_EQ(RowsOf(narrow), (std::vector<std::string>{"22", "22", "22"}));
}

} // namespace
