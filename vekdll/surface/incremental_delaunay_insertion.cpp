// Building the triangulation one vertex at a time.
//
// There is no super-triangle. The triangulation starts from real vertices
// (or the corners of the bounding box) and a new vertex is placed in the one
// triangle that holds it, split into three, or into two on each side of an
// edge it lies on. A vertex beyond the border is joined on by a fan of new
// triangles to the border edges it sees. Then the edges among the triangles
// whose circumcircle held the vertex are flipped until the Delaunay rule
// holds. A vertex that coincides with an existing one lies on two sides of
// every triangle at once, finds no place and stays isolated in the store:
// that is how duplicates are treated.

#include <algorithm>
#include <cmath>
#include <vector>

#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/working_list_index.h"

// Empties every list for a new build; the new triangles live in the
// working list until finalized.
void ZrCIncrementalDelaunay2D::StartNewTriangulation()
{
    ReleaseRetiredTriangles();
    ClearAffectedTriangleList();
    ClearFinalTriangleList();
    ClearTriangleList();
    Finalized = false;
    LinksMayBeStale = false;
    FlipTouched.clear();
}

// Inserts every vertex below min(count, NumVertices) other than the first
// triangle's corners. The bound is read in every round: insertion may add or
// drop vertices.
void ZrCIncrementalDelaunay2D::InsertAllVerticesExcept(int first, int count, const int* skip, int numSkip)
{
    for (int i = first; i < std::min(count, NumVertices); ++i) {
        if (std::find(skip, skip + numSkip, i) != skip + numSkip) continue;
        InsertDuringTriangulate(i);
    }
}

void ZrCIncrementalDelaunay2D::Triangulate(int count, bool finalize, bool addCorners)
{
    if (NumVertices < 3) return;
    StartNewTriangulation();

    int firstInserted = 3;
    int corners[4] = {-1, -1, -1, -1};
    if (addCorners && StartFromBoxCorners(corners)) {
        firstInserted = 0;
    } else if (Predicates == vek::PlanarPredicates::Exact) {
        // The first three vertices that span a triangle; with none, every
        // point lies on one line, which has no triangulation.
        if (!StartFromFirstTriangle(count, corners)) corners[0] = corners[1] = corners[2] = -1;
        firstInserted = corners[0] >= 0 ? 0 : count;
    } else {
        t_hdelaunaytriangle* first = InitNewTriangle();
        first->Vertex[0] = 0;
        first->Vertex[1] = 1;
        first->Vertex[2] = 2;
        if (GetOrientation(first) == -1) FlipTriangleOrientation(first);
        CalcCircumCircle(first);
        TriangleList.AddTail(first);
    }

    InsertAllVerticesExcept(firstInserted, count, corners, 4);
    if (finalize) FinalizeTriangleList();
}

// The two triangles over the corners of the bounding box, each corner the
// vertex that sits there or a new one. In the exact mode a box without area
// (all points on one horizontal or vertical line) gives no triangles, and
// false.
bool ZrCIncrementalDelaunay2D::StartFromBoxCorners(int corners[4])
{
    SSEPoint min;
    SSEPoint max;
    int lowerLeftVertex = -1;
    int upperRightVertex = -1;
    if (Predicates == vek::PlanarPredicates::Exact) {
        // The box of the points at finite places: a point at infinity or
        // not-a-number cannot be a corner of any triangle.
        if (!FiniteBox(min, max) || !(min.x < max.x && min.y < max.y)) return false;
        lowerLeftVertex = PointIndex(min);
        upperRightVertex = PointIndex(max);
    } else {
        lowerLeftVertex = MinPointIndex(min);
        upperRightVertex = MaxPointIndex(max);
    }
    // The two other corners take their z from the same extreme as their x.
    SSEPoint upperLeft = min;
    upperLeft.y = max.y;
    SSEPoint lowerRight = max;
    lowerRight.y = min.y;
    const int lowerLeft = lowerLeftVertex >= 0 ? lowerLeftVertex : CornerIndex(min);
    const int upperRight = upperRightVertex >= 0 ? upperRightVertex : CornerIndex(max);
    const int upperLeftIndex = CornerIndex(upperLeft);
    const int lowerRightIndex = CornerIndex(lowerRight);
    corners[0] = lowerLeft;
    corners[1] = upperRight;
    corners[2] = upperLeftIndex;
    corners[3] = lowerRightIndex;

    t_hdelaunaytriangle* lower = InitNewTriangle();
    t_hdelaunaytriangle* upper = InitNewTriangle();
    lower->Vertex[0] = lowerRightIndex;
    lower->Vertex[1] = upperLeftIndex;
    lower->Vertex[2] = lowerLeft;
    upper->Vertex[0] = upperLeftIndex;
    upper->Vertex[1] = lowerRightIndex;
    upper->Vertex[2] = upperRight;
    lower->Neighbour[0] = upper;
    upper->Neighbour[0] = lower;
    CalcCircumCircle(lower);
    CalcCircumCircle(upper);
    TriangleList.AddTail(lower);
    TriangleList.AddTail(upper);
    return true;
}

// The lane-wise extremes of the vertices whose x and y are finite; false if
// there is none.
bool ZrCIncrementalDelaunay2D::FiniteBox(SSEPoint& min, SSEPoint& max) const
{
    bool any = false;
    for (int i = 0; i < NumVertices; ++i) {
        const SSEPoint& v = Vertices[i];
        if (!std::isfinite(v.x) || !std::isfinite(v.y)) continue;
        min.sse = any ? _mm_min_ps(min.sse, v.sse) : v.sse;
        max.sse = any ? _mm_max_ps(max.sse, v.sse) : v.sse;
        any = true;
    }
    return any;
}

// The exact mode's first triangle: the first vertex at a finite place, the
// next one at another place, and the next one off the line through both,
// turned counter-clockwise. Their indices go to `corners`; false if every
// vertex below the bound lies on one line (or is not finite).
bool ZrCIncrementalDelaunay2D::StartFromFirstTriangle(int count, int corners[4])
{
    const int end = std::min(count, NumVertices);
    const auto finite = [this](int i) { return std::isfinite(Vertices[i].x) && std::isfinite(Vertices[i].y); };
    int first = 0;
    while (first < end && !finite(first)) ++first;
    int second = first + 1;
    while (second < end &&
           (!finite(second) || (Vertices[second].x == Vertices[first].x && Vertices[second].y == Vertices[first].y)))
        ++second;
    int third = second + 1;
    while (third < end && SideTest(Vertices[first], Vertices[second], Vertices[third]) == 0.0f) ++third;
    if (third >= end) return false;
    t_hdelaunaytriangle* triangle = InitNewTriangle();
    triangle->Vertex[0] = first;
    triangle->Vertex[1] = second;
    triangle->Vertex[2] = third;
    if (SideTest(Vertices[first], Vertices[second], Vertices[third]) < 0.0f) FlipTriangleOrientation(triangle);
    CalcCircumCircle(triangle);
    TriangleList.AddTail(triangle);
    corners[0] = first;
    corners[1] = second;
    corners[2] = third;
    return true;
}

// The polygon's points are the first vertices of the store, in order
// (AddPolygon), so polygon indices name vertices. The first triangle joins
// the points of least x, greatest x and greatest y, each point taking at most
// one role in that order; a role no point took falls to vertex 0, the value
// of a fresh record.
void ZrCIncrementalDelaunay2D::Triangulate(CSSE3dPolygon& polygon, int count, int finalize)
{
    if (NumVertices < 3) return;
    StartNewTriangulation();

    int minXIndex = -1;
    int maxXIndex = -1;
    int maxYIndex = -1;
    float minX = 999999.9f;
    float maxX = -999999.9f;
    float maxY = -999999.9f;
    for (int i = 0; i < polygon.GetNumPoints(); ++i) {
        float x = 0.0f;
        float y = 0.0f;
        polygon.GetPointXY(i, x, y);
        if (x > maxX) {
            maxX = x;
            maxXIndex = i;
        } else if (x < minX) {
            minX = x;
            minXIndex = i;
        } else if (y > maxY) {
            maxY = y;
            maxYIndex = i;
        }
    }
    t_hdelaunaytriangle* first = InitNewTriangle();
    const int corners[3] = {std::max(minXIndex, 0), std::max(maxXIndex, 0), std::max(maxYIndex, 0)};
    std::copy(corners, corners + 3, first->Vertex);
    if (GetOrientation(first) == -1) std::swap(first->Vertex[0], first->Vertex[1]);
    CalcCircumCircle(first);
    TriangleList.AddTail(first);

    InsertAllVerticesExcept(0, count, corners, 3);
    MarkTrianglesOutsidePolygon(polygon);
    if (finalize == 1) FinalizeTriangleList();
}

// A triangle whose centroid the polygon doesn't hold is Outside.
void ZrCIncrementalDelaunay2D::MarkTrianglesOutsidePolygon(CSSE3dPolygon& polygon)
{
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        SSEPoint centroid;
        const __m128 sum = _mm_add_ps(_mm_add_ps(Vertices[triangle->Vertex[0]].sse, Vertices[triangle->Vertex[1]].sse),
                                      Vertices[triangle->Vertex[2]].sse);
        centroid.sse = _mm_div_ps(sum, _mm_set1_ps(3.0f));
        if (!polygon.PointInLineInnerArea(centroid, 1)) triangle->Outside = true;
    }
}

void ZrCIncrementalDelaunay2D::InsertDuringTriangulate(int i)
{
    CalcAffectedTriangles(i);
    ProcessAffectedTriangles(i);
    ClearAffectedTriangleList();
}

// The vertex at a corner of the bounding box: the first one there, or a new
// one. The store grows by one if it is full, so that the corner is not lost.
int ZrCIncrementalDelaunay2D::CornerIndex(const SSEPoint& corner)
{
    const int existing = PointIndex(corner);
    if (existing >= 0) return existing;
    if (NumVertices >= MaxNumVertices) ReallocSize(NumVertices + 1);
    AppendVertex(corner);
    return NumVertices - 1;
}

void ZrCIncrementalDelaunay2D::InsertVertexIntoTriangulation(int index)
{
    ClearAffectedTriangleList();
    if (IsStoredVertex(index)) InsertStoredVertex(index, true);
    ClearAffectedTriangleList();
}

// Locates a stored vertex and places it; a vertex inside no circle is
// joined from outside and legalized by the sweep that `checkFan` names.
void ZrCIncrementalDelaunay2D::InsertStoredVertex(int index, bool checkFan)
{
    if (CalcAffectedTriangles(index) < 1) {
        AppendExteriorPoint(index);
        SweepAffected(checkFan);
        SettleInsertion();
    } else {
        ProcessAffectedTriangles(index);
    }
}

// Stores (x, y, 0) and inserts it. On a full store the point is lost and
// nothing is inserted; a caller grows the store first.
void ZrCIncrementalDelaunay2D::InsertVertexIntoTriangulation(float x, float y, bool finalize)
{
    ClearAffectedTriangleList();
    if (Finalized) CopyFinalTriangleListToTriangleList();
    const int index = NumVertices;
    SSEPoint point;
    point.sse = _mm_setr_ps(x, y, 0.0f, 0.0f);
    AppendVertex(point);
    if (index < NumVertices) InsertStoredVertex(index, false);
    ClearAffectedTriangleList();
    if (finalize) FinalizeTriangleList();
}

void ZrCIncrementalDelaunay2D::InsertVertexIntoTriangulationNoExterior(int index)
{
    ClearAffectedTriangleList();
    if (!IsStoredVertex(index)) return;
    if (CalcAffectedTriangles(index) >= 1)
        ProcessAffectedTrianglesNoExterior(index);
    else
        DropIfLastVertex(index);
    ClearAffectedTriangleList();
}

// Through the search index where it can answer: a vertex at a position
// that is not finite meets no circle anyway, and is left to the walk.
int ZrCIncrementalDelaunay2D::CalcAffectedTriangles(int v)
{
    AffectedTriangleList.RemoveAll();
    if (!IsStoredVertex(v)) return 0;
    const float x = Vertices[v].x;
    const float y = Vertices[v].y;
    vek::detail::WorkingListIndex<t_hdelaunaytriangle>* index =
        std::isfinite(x) && std::isfinite(y) ? SearchIndexAt(x, y) : nullptr;
    if (index == nullptr) return ScanAffectedTriangles(v);
    SearchScratch.clear();
    index->TakeAffected(
        TriangleList, x, y,
        [x, y](const vek::detail::CircleGrid::Entry& circle) {
            // The float circle test on the circle as filed; a distance whose
            // square overflows is left to the triangle's own test, which the
            // exact mode needs (its filed circles are only bounds).
            const float dx = x - circle.centreX;
            const float dy = y - circle.centreY;
            const float distance2 = dx * dx + dy * dy;
            return circle.radius2 > distance2 || std::isinf(distance2);
        },
        [this, v](const t_hdelaunaytriangle* t) { return !t->Ignore && !t->IgnoreSearch && InCircumCircle(v, t); },
        SearchScratch);
    for (t_hdelaunaytriangle* triangle : SearchScratch) AffectedTriangleList.AddTail(triangle);
    return static_cast<int>(SearchScratch.size());
}

int ZrCIncrementalDelaunay2D::ScanAffectedTriangles(int v)
{
    int moved = 0;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || triangle->Ignore || triangle->IgnoreSearch) continue;
        if (!InCircumCircle(v, triangle)) continue;
        AffectedTriangleList.AddTail(triangle);
        TriangleList.RemoveAt(current);
        ++moved;
    }
    return moved;
}

void ZrCIncrementalDelaunay2D::ProcessAffectedTriangles(int v)
{
    ProcessAffected(v, true);
}

// Inserts only inside the present triangulation: a vertex that would have
// to be joined on from outside is taken back instead.
void ZrCIncrementalDelaunay2D::ProcessAffectedTrianglesNoExterior(int v)
{
    ProcessAffected(v, false);
}

void ZrCIncrementalDelaunay2D::ProcessAffected(int v, bool joinFromOutside)
{
    if (!IsStoredVertex(v)) {
        AddNewTrianglesToList();  // the affected triangles go back unchanged
        return;
    }
    if (AffectedTriangleList.IsEmpty()) {
        if (!joinFromOutside) {
            DropIfLastVertex(v);
            return;
        }
        AppendExteriorPoint(v);
        LegalizeEdgesWithNeighbourCheck();
        SettleInsertion();
        return;
    }
    if (!PlaceInAffectedTriangle(v)) {
        if (joinFromOutside)
            AppendExteriorPoint(v);
        else
            DropIfLastVertex(v);
    }
    KillIgnoredTriangles();
    LegalizeEdgesWithNeighbourCheck();
    SettleInsertion();
}

// An index outside the vertices in use names no point: the entry points
// pass it over rather than read beyond the store.
bool ZrCIncrementalDelaunay2D::IsStoredVertex(int v) const
{
    return v >= 0 && v < NumVertices;
}

// Taking a vertex back is only possible for the last one of the store: any
// other index may be a corner of triangles, so it stays, isolated.
void ZrCIncrementalDelaunay2D::DropIfLastVertex(int v)
{
    if (v == NumVertices - 1) --NumVertices;
}

// Walks the triangles that were affected when the walk began (not those it
// adds) and splits the first that holds v. The split triangle is freed at
// once; its neighbour across an edge split in two is marked and freed by
// KillIgnoredTriangles. The new triangles go to the end of the list.
bool ZrCIncrementalDelaunay2D::PlaceInAffectedTriangle(int v)
{
    const INT_PTR affectedAtStart = AffectedTriangleList.GetCount();
    POSITION pos = AffectedTriangleList.GetHeadPosition();
    for (INT_PTR walked = 0; walked < affectedAtStart && pos != nullptr; ++walked) {
        const POSITION current = pos;
        t_hdelaunaytriangle* triangle = AffectedTriangleList.GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        const EPointWhere where = PointWhere(v, triangle);
        if (where == ePointOutside) continue;

        t_hdelaunaytriangle* made[4] = {};
        if (where == ePointInside) {
            made[0] = InitNewTriangle();
            made[1] = InitNewTriangle();
            made[2] = InitNewTriangle();
            SplitTriangleIntoThree(v, triangle, made[0], made[1], made[2]);
        } else {
            SplitAcrossSide(v, triangle, where - ePointOnSide0, made);
        }
        RetireTriangle(triangle);
        AffectedTriangleList.RemoveAt(current);
        for (t_hdelaunaytriangle* part : made) {
            if (part != nullptr) AffectedTriangleList.AddTail(part);
        }
        return true;
    }
    return false;
}

// v lies on `side` of T: T splits into t1, t2 and its neighbour N across the
// side into t3, t4, and the four halves are linked across the two halves of
// the old edge. N is marked for removal and brought into the affected list
// if it is not there yet. At a border there is no N, and the outer slots of
// t1 and t2 stay null.
void ZrCIncrementalDelaunay2D::SplitAcrossSide(int v, t_hdelaunaytriangle* triangle, int side,
                                               t_hdelaunaytriangle* made[4])
{
    made[0] = InitNewTriangle();
    made[1] = InitNewTriangle();
    SplitTriangleIntoTwo(v, side, triangle, made[0], made[1]);
    t_hdelaunaytriangle* across = triangle->Neighbour[side];
    const ESharedSide sideOfAcross = FindCommonSide(side, triangle, across);
    if (sideOfAcross != eSideNone) {
        made[2] = InitNewTriangle();
        made[3] = InitNewTriangle();
        SplitTriangleIntoTwo(v, sideOfAcross, across, made[2], made[3]);
        across->Ignore = true;
        if (AffectedTriangleList.Find(across) == nullptr) {
            RemoveFromWorkingList(across);
            AffectedTriangleList.AddTail(across);
        }
    }
    FindNeighbours(made[0], made[2]);
    FindNeighbours(made[0], made[3]);
    FindNeighbours(made[1], made[2]);
    FindNeighbours(made[1], made[3]);
}

// Joins a vertex beyond the border: each border side that v sees strictly
// from outside gets a new triangle on it, in the order of the affected list
// and then of the working list, sides 0, 1, 2. The new triangles are linked
// among themselves into a fan and go to the affected list. There is no hull
// structure: the border stays convex only in so far as a point sees all
// edges of a convex border. A vertex that sees no side stays isolated.
//
// The search index keeps the listed triangles that have an open side, in
// list order, so the working list is walked only where the index cannot
// serve (the linear search mode, a position that is not finite).
void ZrCIncrementalDelaunay2D::AppendExteriorPoint(int v)
{
    if (!IsStoredVertex(v)) return;
    std::vector<t_hdelaunaytriangle*> made;
    for (POSITION pos = AffectedTriangleList.GetHeadPosition(); pos != nullptr;)
        JoinSidesSeenFrom(v, AffectedTriangleList.GetNext(pos), made);
    const float x = Vertices[v].x;
    const float y = Vertices[v].y;
    vek::detail::WorkingListIndex<t_hdelaunaytriangle>* index =
        std::isfinite(x) && std::isfinite(y) ? SearchIndexAt(x, y) : nullptr;
    if (index != nullptr) {
        SearchScratch.clear();
        index->OpenTriangles(SearchScratch);
        for (t_hdelaunaytriangle* triangle : SearchScratch) JoinSidesSeenFrom(v, triangle, made);
    } else {
        for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;)
            JoinSidesSeenFrom(v, TriangleList.GetNext(pos), made);
    }
    for (std::size_t i = 0; i < made.size(); ++i) {
        for (std::size_t j = i + 1; j < made.size(); ++j) FindNeighbours(made[i], made[j]);
    }
    for (t_hdelaunaytriangle* outer : made) AffectedTriangleList.AddTail(outer);
}

void ZrCIncrementalDelaunay2D::JoinSidesSeenFrom(int v, t_hdelaunaytriangle* triangle,
                                                 std::vector<t_hdelaunaytriangle*>& made)
{
    if (triangle == nullptr || triangle->IgnoreSearch) return;
    const SSEPoint& p = Vertices[v];
    for (int side = 0; side < 3; ++side) {
        if (triangle->Neighbour[side] != nullptr) continue;
        const int start = triangle->Vertex[side];
        const int end = triangle->Vertex[(side + 1) % 3];
        if (!(SideTest(Vertices[start], Vertices[end], p) < 0.0f)) continue;
        // The new triangle holds the side reversed in the same slot
        // number, with v opposite: (b, a, v), (v, c, b) or (c, v, a).
        t_hdelaunaytriangle* outer = InitNewTriangle();
        outer->Vertex[side] = end;
        outer->Vertex[(side + 1) % 3] = start;
        outer->Vertex[(side + 2) % 3] = v;
        outer->Neighbour[side] = triangle;
        triangle->Neighbour[side] = outer;
        CalcCircumCircle(outer);
        made.push_back(outer);
    }
}
