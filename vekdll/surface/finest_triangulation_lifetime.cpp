// Life of the finest triangulation: construction, its rows, the take-over of
// a band, the deep copy, and the geometry of the whole.

#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/finest_neighbour_links.h"
#include "vekdll/surface/finest_triangulation.h"

ZrCFinestTriangulation::ZrCFinestTriangulation()
{
    AllocatePointBlock();
}

ZrCFinestTriangulation::ZrCFinestTriangulation(int numVertices) : Base(numVertices)
{
    AllocatePointBlock();
}

// The rows name the triangles that TriangleList owns, so they go first and
// the triangles with the list. Edge records other than the graph's stay
// with ClearEdgeList.
ZrCFinestTriangulation::~ZrCFinestTriangulation()
{
    SafeAlignedFree(MinPoint);
    if (AllRowsTriangleList != nullptr) FreeListPointer();
    ClearTriangleList();
}

void ZrCFinestTriangulation::AllocatePointBlock()
{
    MinPoint = static_cast<SSEPoint*>(SafeAlignedAlloc(2 * sizeof(SSEPoint), 16));
    std::memset(static_cast<void*>(MinPoint), 0, 2 * sizeof(SSEPoint));
    MaxPoint = MinPoint + 1;
}

void ZrCFinestTriangulation::FlipEdge(t_hfinestedge* edge)
{
    if (edge == nullptr) return;
    std::swap(edge->Vertex[0], edge->Vertex[1]);
    std::swap(edge->Used, edge->Mark1);
}

void ZrCFinestTriangulation::SetRowBands(int bands)
{
    RowBands = bands < 1 ? 1 : bands > kRowBands ? kRowBands : bands;
}

// ---- rows

void ZrCFinestTriangulation::FreeListPointer()
{
    if (AllRowsTriangleList == nullptr) return;
    for (POSITION pos = AllRowsTriangleList->GetHeadPosition(); pos != nullptr;)
        delete AllRowsTriangleList->GetNext(pos);
    AllRowsTriangleList->RemoveAll();
    delete AllRowsTriangleList;
    AllRowsTriangleList = nullptr;
}

void ZrCFinestTriangulation::CopyTrianglesInTriangleList(TriangleRows* from, TriangleRows* to)
{
    if (from == nullptr || to == nullptr || from == to) return;
    while (!from->IsEmpty()) {
        CList<t_hfinesttriangle*>* row = from->RemoveHead();
        if (row != nullptr) to->AddTail(row);
    }
}

void ZrCFinestTriangulation::CopyDataFromOtherTriangulation(ZrCFinestTriangulation& other, int start, int count)
{
    if (&other == this || start < 0) return;
    if (count > other.NumVertices) count = other.NumVertices;
    if (count < 0) count = 0;
    if (start + count > MaxNumVertices) ReallocSize(start + count + 100);
    while (NumVertices < start + count) AppendVertex(other.Vertices[NumVertices - start]);
    for (int i = 0; i < count; ++i) Vertices[start + i] = other.Vertices[i];
    NoteVerticesChanged();
    // The band's triangles are named in its rows; its own list may hold
    // more, made outside the rows, and a triangle in both is taken once.
    std::unordered_set<const t_hfinesttriangle*> inRows;
    const bool alsoListed = !other.TriangleList.IsEmpty();
    const auto take = [&](t_hfinesttriangle* triangle) {
        if (triangle == nullptr) return;
        for (int& corner : triangle->Vertex) corner += start;
        TriangleList.AddTail(triangle);
    };
    if (other.AllRowsTriangleList != nullptr) {
        for (POSITION rows = other.AllRowsTriangleList->GetHeadPosition(); rows != nullptr;) {
            const CList<t_hfinesttriangle*>* row = other.AllRowsTriangleList->GetNext(rows);
            if (row == nullptr) continue;
            for (POSITION pos = row->GetHeadPosition(); pos != nullptr;) {
                t_hfinesttriangle* triangle = row->GetNext(pos);
                if (alsoListed && !inRows.insert(triangle).second) continue;
                take(triangle);
            }
        }
        if (AllRowsTriangleList == nullptr) AllRowsTriangleList = new TriangleRows(10);
        CopyTrianglesInTriangleList(other.AllRowsTriangleList, AllRowsTriangleList);
        other.FreeListPointer();
    }
    for (POSITION pos = other.TriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hfinesttriangle* triangle = other.TriangleList.GetNext(pos);
        if (inRows.count(triangle) == 0) take(triangle);
    }
    other.TriangleList.RemoveAll();
}

// ---- deep copy

void ZrCFinestTriangulation::DeepCopyTriangulation(const ZrCFinestTriangulation& source, CSSEMatrix* field, bool flag)
{
    if (&source == this) return;
    FreeListPointer();
    ClearTriangleList();
    // The copy links by its own search mode, not by the source's.
    const vek::SearchMode mode = GetSearchMode();
    ZrCSSEVertexContainer::operator=(source);
    SetSearchMode(mode);
    if (field != nullptr && field->GetMatrixDataDirectly() != nullptr) {
        for (int i = 0; i < NumVertices; ++i) {
            const float z = field->GetPoint(static_cast<int>(Vertices[i].x + 0.5f), static_cast<int>(Vertices[i].y + 0.5f));
            if (z != 0.0f) Vertices[i].z = z;
        }
        NoteVerticesChanged();
    }
    std::unordered_map<const t_hfinesttriangle*, t_hfinesttriangle*> copyOf;
    std::vector<t_hfinesttriangle*> copies;
    for (POSITION pos = source.TriangleList.GetHeadPosition(); pos != nullptr;) {
        const t_hfinesttriangle* original = source.TriangleList.GetNext(pos);
        if (original == nullptr) continue;
        t_hfinesttriangle* copy = InitNewTriangle();
        CopyTriangle(original, copy);
        copy->Neighbour[0] = copy->Neighbour[1] = copy->Neighbour[2] = nullptr;
        TriangleList.AddTail(copy);
        copyOf[original] = copy;
        copies.push_back(copy);
    }
    // Each copy against the others in list order until its slots are full.
    const auto link = [](t_hfinesttriangle* a, t_hfinesttriangle* b) { FindNeighbours(a, b); };
    if (GetSearchMode() == vek::SearchMode::LinearScan)
        vek::detail::LinkByScan(copies, copies, vek::detail::LinkOrder::CandidateSecond, link);
    else
        vek::detail::LinkBySides(copies, copies, vek::detail::LinkOrder::CandidateSecond, link);
    if (flag && source.AllRowsTriangleList != nullptr) {
        AllRowsTriangleList = new TriangleRows(10);
        for (POSITION rows = source.AllRowsTriangleList->GetHeadPosition(); rows != nullptr;) {
            const CList<t_hfinesttriangle*>* row = source.AllRowsTriangleList->GetNext(rows);
            if (row == nullptr) continue;
            auto* copyRow = new CList<t_hfinesttriangle*>(10);
            for (POSITION pos = row->GetHeadPosition(); pos != nullptr;) {
                const auto found = copyOf.find(row->GetNext(pos));
                if (found != copyOf.end()) copyRow->AddTail(found->second);
            }
            AllRowsTriangleList->AddTail(copyRow);
        }
    }
}

// ---- geometry

void ZrCFinestTriangulation::CalcBoundingBox()
{
    BoxOfCorners(TriangleList, *MinPoint, *MaxPoint);
}

void ZrCFinestTriangulation::CalcCenterPoint(SSEPoint& result) const
{
    result.sse = MeanOfVertices();
}

void ZrCFinestTriangulation::ComputeNormalVectorOfTriangle(const t_hfinesttriangle& triangle, SSEPoint& result) const
{
    result.sse = UnitNormalOf(triangle);
}

// The mean of the unit normals, taken in list order.
bool ZrCFinestTriangulation::CalcNormalDirection() const
{
    __m128 sum = _mm_setzero_ps();
    int count = 0;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const t_hfinesttriangle* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        SSEPoint normal;
        ComputeNormalVectorOfTriangle(*triangle, normal);
        sum = _mm_add_ps(sum, normal.sse);
        ++count;
    }
    SSEPoint mean;
    mean.sse = _mm_div_ps(sum, _mm_set1_ps(static_cast<float>(count)));
    return mean.z >= 0.0f;
}
