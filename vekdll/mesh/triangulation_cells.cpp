// One cell of a height raster to triangles.

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/mesh/cell_split.h"
#include "vekdll/mesh/triangulation.h"

namespace {

using namespace vek::detail;

SSEPoint Point(float x, float y, float z)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

} // namespace

void CHTriangulation::AppendTriangle(int leftMask, int rightMask, float x0, float x1, float y0, float y1, float zA,
                                     float zC, float zB, float zD, int& index, bool flipNormals, bool fillCell)
{
    if (fillCell) {
        leftMask = FilledMask(leftMask);
        rightMask = FilledMask(rightMask);
    }
    const CellSplit split = SplitCell(leftMask, rightMask);
    if (split.count == 0) return;

    const SSEPoint corners[4] = {Point(x0, y0, zA), Point(x1, y0, zB), Point(x0, y1, zC), Point(x1, y1, zD)};
    // Corner normals from the height differences along the cell's edges, in
    // grid units and raw heights, whether or not the neighbouring corners
    // are valid.
    const float dTop = zA - zB;
    const float dBottom = zC - zD;
    const float dLeft = zA - zC;
    const float dRight = zB - zD;
    const SSEPoint rawNormals[4] = {Point(dTop, dLeft, 1.0f), Point(dTop, dRight, 1.0f), Point(dBottom, dLeft, 1.0f),
                                    Point(dBottom, dRight, 1.0f)};

    t_htriangle* written[2] = {nullptr, nullptr};
    for (int k = 0; k < split.count; ++k) {
        t_htriangle& t = Triangles[index];
        SSEPoint* const positions[3] = {t.P0, t.P1, t.P2};
        SSEPoint* const normals[3] = {t.N0, t.N1, t.N2};
        for (int corner = 0; corner < 3; ++corner) {
            const CellCorner c = split.corners[k][corner];
            *positions[corner] = corners[c];
            __m128 normal = CSSEFns::normalizevector(rawNormals[c].sse);
            if (flipNormals) normal = _mm_sub_ps(_mm_setzero_ps(), normal);
            normals[corner]->sse = normal;
        }
        t.MainNormal->sse = CSSEFns::normalizevector(_mm_add_ps(_mm_add_ps(t.N0->sse, t.N1->sse), t.N2->sse));
        written[k] = &t;
        ++index;
    }
    // The two halves of a full cell meet along A-D: P0-P1 of the first,
    // P2-P0 of the second.
    if (split.count == 2) {
        written[0]->Neighbour0 = written[1];
        written[1]->Neighbour2 = written[0];
    }
}
