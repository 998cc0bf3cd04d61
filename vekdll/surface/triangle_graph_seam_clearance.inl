// Clearing a surface where a seam is to run: corners too near the rim move
// off, triangles on the rim go, and what lies under the other surface is
// peeled away from the opening. Beside it the deletion tests for images,
// and the collapse of slivers.

#include <algorithm>
#include <cmath>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/polygon_proximity_walk.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// The clearance between an old surface and the rim of the surface laid in.
inline constexpr float kSeamClearance = 3.0f;

// The smallest distance from p to the points index - 100 .. index + 99 of
// `polygon`, the indices wrapping round; `start` where there are none.
inline float DistanceAroundIndex(const CSSE3dPolygon& polygon, const SSEPoint& p, int index, float start)
{
    const int count = polygon.GetNumPoints();
    float best = start;
    if (count < 1) return best;
    for (int i = index - 100; i < index + 100; ++i) {
        int k = i;
        if (k < 0) k += count;
        if (k >= count) k -= count;
        if (k < 0 || k >= count) continue;
        SSEPoint q;
        polygon.GetPointSSE(k, q);
        best = std::min(best, CSSEFns::euclideandistance(q.sse, p.sse));
    }
    return best;
}

inline SSEPoint Along(const SSEPoint& from, const __m128& direction, int k)
{
    SSEPoint p;
    p.sse = _mm_add_ps(from.sse, _mm_mul_ps(direction, _mm_set1_ps(static_cast<float>(k))));
    return p;
}

// Whether (x, y) lies in the triangle a, b, c in x-y, its sides included.
inline bool InTriangleXY(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c, const SSEPoint& p)
{
    const float f0 = SideValue(a, b, p);
    const float f1 = SideValue(b, c, p);
    const float f2 = SideValue(c, a, p);
    return (f0 >= 0.0f && f1 >= 0.0f && f2 >= 0.0f) || (f0 <= 0.0f && f1 <= 0.0f && f2 <= 0.0f);
}

// Calls `visit` on each entry of `list` in order, also on those that a
// visit appends: the next position is read only after the visit.
template <class Record, class Visit>
void ForEachGrowing(CList<Record*>& list, Visit visit)
{
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        visit(list.GetAt(current));
        pos = current;
        list.GetNext(pos);
    }
}

} // namespace vek::detail

namespace vek {

// Walks from `from` towards `to` in steps of min(length / 5, 0.1) and
// measures each place against the polygon points around `index`. The first
// place at least `distance` away is taken, or with `closest` the one of
// them that comes nearest to `distance` (the first of equal ones); where
// none is, `to` - 0.5 in every lane.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::ShiftAlongInterval(SSEPoint& from, SSEPoint& result, SSEPoint& to, float distance,
                                                CSSE3dPolygon& polygon, int index, bool closest)
{
    const __m128 delta = _mm_sub_ps(to.sse, from.sse);
    const float length = CSSEFns::vectorlen(delta);
    const float step = std::min(length / 5.0f, 0.1f);
    const float steps = step > 0.0f ? length / step : 0.0f;
    const int n = std::isfinite(steps) ? static_cast<int>(steps) : 0;
    // `result` may be `from` or `to`: it is written once, at the end.
    SSEPoint kept;
    kept.sse = _mm_sub_ps(to.sse, _mm_set1_ps(0.5f));
    bool found = false;
    float nearest = 0.0f;
    if (n >= 1) {
        const __m128 direction = _mm_mul_ps(_mm_div_ps(delta, _mm_set1_ps(length)), _mm_set1_ps(step));
        for (int k = 1; k <= n && !(found && !closest); ++k) {
            const SSEPoint p = detail::Along(from, direction, k);
            const float d = detail::DistanceAroundIndex(polygon, p, index, D::kBorderDistanceSearchStart);
            if (!(d >= distance) || (found && !(d < nearest))) continue;
            kept = p;
            found = true;
            nearest = d;
        }
    }
    result = kept;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ShiftVertexWithDistanceInInterval(SSEPoint& from, SSEPoint& result, SSEPoint& to,
                                                               float distance, CSSE3dPolygon& polygon, int index)
{
    ShiftAlongInterval(from, result, to, distance, polygon, index, false);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ShiftVertexWithDistanceInIntervalMinimize(SSEPoint& from, SSEPoint& result, SSEPoint& to,
                                                                       float distance, CSSE3dPolygon& polygon,
                                                                       int index)
{
    ShiftAlongInterval(from, result, to, distance, polygon, index, true);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BildAffectedTriangleListForDeleteAndShift(TriangleListType* in, TriangleListType* out,
                                                                       float distance, CSSE3dPolygon& polygon)
{
    if (in == nullptr || out == nullptr) return;
    for (POSITION pos = in->GetHeadPosition(); pos != nullptr;) {
        T* triangle = in->GetNext(pos);
        if (triangle == nullptr) continue;
        triangle->Visited = true;
        out->AddTail(triangle);
    }
    in->RemoveAll();
    for (bool marked = true; marked;) {
        marked = false;
        detail::ForEachGrowing(*out, [&](T* triangle) {
            if (triangle == nullptr || triangle->Processed) return;
            detail::CheckTriangleNearPolygon(Vertices, triangle, out, distance, 0.0f, polygon);
            marked = marked || triangle->Ignore;
        });
    }
    for (POSITION pos = out->GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = out->GetNext(pos);
        if (triangle == nullptr) continue;
        if (!triangle->Ignore) {
            triangle->Processed = false;
            continue;
        }
        triangle->Visited = false;
        out->RemoveAt(current);
    }
}

// The triangles that share `vertex` with `triangle`, reached over their
// links, `triangle` first.
template <class D, class T, class E>
std::vector<T*> TriangleGraph<D, T, E>::TrianglesAroundVertex(T* triangle, int vertex)
{
    std::vector<T*> fan{triangle};
    for (std::size_t k = 0; k < fan.size(); ++k) {
        for (T* neighbour : fan[k]->Neighbour) {
            if (neighbour == nullptr || !IsVertexInTriangle(neighbour, vertex)) continue;
            if (std::find(fan.begin(), fan.end(), neighbour) == fan.end()) fan.push_back(neighbour);
        }
    }
    return fan;
}

// Moves `vertex` to `place` unless a triangle around it would turn over or
// collapse in x-y; false if it stays.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::MoveVertexIfNoFold(T* triangle, int vertex, const SSEPoint& place)
{
    const std::vector<T*> fan = TrianglesAroundVertex(triangle, vertex);
    const SSEPoint old = Vertices[vertex];
    const auto turn = [this](const T* t) {
        return detail::SideValue(Vertices[t->Vertex[0]], Vertices[t->Vertex[1]], Vertices[t->Vertex[2]]);
    };
    std::vector<float> before;
    for (const T* t : fan) before.push_back(turn(t));
    Vertices[vertex] = place;
    bool folds = false;
    for (std::size_t k = 0; k < fan.size(); ++k) {
        const float after = turn(fan[k]);
        folds = folds || std::fabs(after) <= detail::kOnEdgeTolerance || (after > 0.0f) != (before[k] > 0.0f);
    }
    Vertices[vertex] = old;
    if (folds) return false;
    *GetVertexPtr(vertex) = place;
    for (T* t : fan) RefreshCircle(t);
    return true;
}

// Moves the near corner `k` of `triangle` off the rim, along the side from
// its far corner `f`: from the far corner on, to the first place at the
// clearance (`fromFar`), or up to the last place before the clearance is
// broken. A move that would fold the surface is not made.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::MoveCornerOffRim(T* triangle, int k, int f, int farIndex, CSSE3dPolygon& rim, bool fromFar)
{
    SSEPoint nearCorner = Vertices[triangle->Vertex[k]];
    SSEPoint farCorner = Vertices[triangle->Vertex[f]];
    SSEPoint place;
    if (fromFar) {
        ShiftVertexWithDistanceInInterval(farCorner, place, nearCorner, detail::kSeamClearance, rim, farIndex);
    } else {
        const __m128 delta = _mm_sub_ps(nearCorner.sse, farCorner.sse);
        const float length = CSSEFns::vectorlen(delta);
        const float step = std::min(length / 5.0f, 0.1f);
        if (!(step > 0.0f)) return false;
        const int n = static_cast<int>(length / step);
        const __m128 direction = _mm_mul_ps(_mm_div_ps(delta, _mm_set1_ps(length)), _mm_set1_ps(step));
        int kept = 0;
        for (int s = 1; s <= n; ++s) {
            if (detail::DistanceAroundIndex(rim, detail::Along(farCorner, direction, s), farIndex, 9999.9f) <
                detail::kSeamClearance)
                break;
            kept = s;
        }
        if (kept == 0) return false;
        place = detail::Along(farCorner, direction, kept);
    }
    return MoveVertexIfNoFold(triangle, triangle->Vertex[k], place);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ClearSeamArea(TriangleListType& list, CSSE3dPolygon& rim, bool fromFar)
{
    // Corners near the rim: all three mark the triangle for removal, some
    // move off; a triangle clear of the rim hands on its fans, so that the
    // walk spreads over the surface from where it started.
    detail::ForEachGrowing(list, [&](T* triangle) {
        if (triangle == nullptr || triangle->Processed || triangle->Ignore) return;
        float distance[3];
        int index[3];
        bool isNear[3];
        for (int k = 0; k < 3; ++k) {
            distance[k] = detail::NearestPolygonPoint(rim, Vertices[triangle->Vertex[k]], index[k]);
            isNear[k] = distance[k] <= detail::kSeamClearance;
        }
        triangle->Processed = true;
        if (isNear[0] && isNear[1] && isNear[2]) {
            triangle->MaskArea = true;
            return;
        }
        // A corner whose move would fold the surface stays where it is; the
        // distance test below judges its triangle like any other.
        const int far = !isNear[0] ? 0 : (!isNear[1] ? 1 : 2);
        for (int k = 0; k < 3; ++k) {
            if (isNear[k]) MoveCornerOffRim(triangle, k, far, index[far], rim, fromFar);
        }
        for (int k = 0; k < 3; ++k) FindTrianglesWithCommonVertex(triangle->Vertex[k], triangle, k, &list);
    });
    // The triangles on the rim's path go at once; they open the surface
    // where the peeling below starts.
    CSSE3dPolygon coarse(rim);
    coarse.Subsample(rim.GetNumPoints() >= 501 ? 4 : 2, true);
    // The walk is over, and its marks are cleared so that the neighbours
    // that a removal exposes are taken up: they line the opening from here on.
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        T* triangle = list.GetNext(pos);
        if (triangle == nullptr) continue;
        triangle->Visited = false;
        if (triangle->MaskArea) triangle->Ignore = true;
    }
    TriangleListType exposed;
    RemoveIgnoredTrianglesFromList(&list);
    KillIgnoredTrianglesAndCheckNeighbours(&exposed, true);

    TriangleListType doomed;
    CSSE3dPolygon projected;
    while (!list.IsEmpty()) {
        T* triangle = list.RemoveHead();
        if (triangle == nullptr) continue;
        SSEPoint c0 = Vertices[triangle->Vertex[0]];
        SSEPoint c1 = Vertices[triangle->Vertex[1]];
        SSEPoint c2 = Vertices[triangle->Vertex[2]];
        SSEPoint centre;
        centre.sse = _mm_div_ps(_mm_add_ps(_mm_add_ps(c0.sse, c1.sse), c2.sse), _mm_set1_ps(3.0f));
        SSEPoint normal;
        normal.sse = CSSEFns::vectorproduct(_mm_sub_ps(c1.sse, c0.sse), _mm_sub_ps(c2.sse, c0.sse));
        if (CSSEFns::vectorlen(normal.sse) > 0.0f) normal.sse = CSSEFns::normalizevector(normal.sse);
        if constexpr (HasNormalPointer<T>) {
            if (triangle->Normal != nullptr) *triangle->Normal = normal;
        }
        CalcProjectPolygon(centre, normal, coarse, projected);
        triangle->Visited = false;
        if (CheckDistanceForNoDeleteTriangle(c0, c1, c2, coarse, projected, 1.0f, 7.0f))
            doomed.AddTail(triangle);
        else
            triangle->Processed = false;
    }
    CheckAndKillIgnoredTrianglesFromTriangleList(&doomed, &exposed, true);
    PeelOpeningRim(exposed, rim);
    for (POSITION pos = exposed.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = exposed.GetNext(pos)) triangle->Visited = false;
    }
    for (POSITION pos = doomed.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = doomed.GetNext(pos)) triangle->Processed = false;
    }
}

// What is left along the opening must keep clear of the rim. A triangle
// there with a corner inside the clearance, one whose corner could not be
// moved off or was set back by half a unit, would stand into the band the
// seam is laid in; so would one held by one side only, its other two sides
// open, a spike round which the opening's rim folds back. A seam laid along
// such a rim folds too. Both kinds go, and so do those that their going
// leaves in the same state, until the opening's rim is free of them.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::PeelOpeningRim(TriangleListType& rimTriangles, const CSSE3dPolygon& rim)
{
    const auto intoClearance = [&](const T* triangle) {
        for (const int v : triangle->Vertex) {
            int index = -1;
            if (detail::NearestPolygonPoint(rim, Vertices[v], index) < detail::kSeamClearance) return true;
        }
        return false;
    };
    for (bool peeled = true; peeled;) {
        peeled = false;
        for (POSITION pos = rimTriangles.GetHeadPosition(); pos != nullptr;) {
            T* triangle = rimTriangles.GetNext(pos);
            if (triangle == nullptr || triangle->Ignore) continue;
            const int open = (triangle->Neighbour[0] == nullptr) + (triangle->Neighbour[1] == nullptr) +
                             (triangle->Neighbour[2] == nullptr);
            if (open == 0 || (open == 1 && !intoClearance(triangle))) continue;
            triangle->Ignore = true;
            peeled = true;
        }
        RemoveIgnoredTrianglesFromList(&rimTriangles);
        KillIgnoredTrianglesAndCheckNeighbours(&rimTriangles, true);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckTrianglesForDelete(TriangleListType* triangles, CSSE3dPolygon* polygon)
{
    if (triangles == nullptr || polygon == nullptr || polygon->GetNumPoints() < 1) return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    CSSE3dPolygon rim(*polygon);
    rim.ReParametrize3D(0.5f);
    ClearSeamArea(*triangles, rim, false);
    Self().ReturnToFinalizedState(wasFinalized);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAndGetBorderOfCombinedTriangulation(D& other, EdgeListType* edges1,
                                                                      EdgeListType* edges2,
                                                                      TriangleListType* triangles, bool flag)
{
    (void)edges1;
    (void)triangles;
    (void)flag;
    if (edges2 == nullptr || edges2->IsEmpty() || &other == &Self()) return;
    other.ComputeNormalVectorsOfTriangles();
    other.CalcNormalDirection();
    const bool wasFinalized = Self().LeaveFinalizedState();
    CSSE3dPolygon rim;
    BuildPolygonFromEdgeList(edges2, rim, other);
    rim.ReParametrize3D(0.5f);
    TriangleListType seeds;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        for (int k = 0; k < 3; ++k) {
            int index = -1;
            if (detail::NearestPolygonPoint(rim, Vertices[triangle->Vertex[k]], index) <= detail::kSeamClearance) {
                seeds.AddTail(triangle);
                break;
            }
        }
    }
    TriangleListType gathered;
    BildAffectedTriangleListForDeleteAndShift(&seeds, &gathered, detail::kSeamClearance, rim);
    ClearSeamArea(gathered, rim, true);
    Self().ReturnToFinalizedState(wasFinalized);
}

// A triangle is deleted if the rim passes through it, or if a sample of it
// lies within `nearLimit` of the rim or inside the rim turned into the
// triangle's plane. A triangle whose corners all stand farther than
// `farLimit` from the rim is judged by its centre alone, which spares the
// sampling of the many triangles away from a seam.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CheckDistanceForNoDeleteTriangle(SSEPoint& c0, SSEPoint& c1, SSEPoint& c2,
                                                              CSSE3dPolygon& polygon, CSSE3dPolygon& projected,
                                                              float nearLimit, float farLimit)
{
    const int count = polygon.GetNumPoints();
    if (count < 1) return false;
    for (int i = 0; i < count; ++i) {
        SSEPoint p;
        polygon.GetPointSSE(i, p);
        if (detail::InTriangleXY(c0, c1, c2, p)) return true;
    }
    const auto inside = [&projected](const SSEPoint& p) { return projected.PointInLineInnerArea(p.x, p.y, 1); };
    const auto nearRim = [&](const SSEPoint& p) {
        int index = -1;
        return detail::NearestPolygonPoint(polygon, p, index);
    };
    SSEPoint centre;
    centre.sse = _mm_div_ps(_mm_add_ps(_mm_add_ps(c0.sse, c1.sse), c2.sse), _mm_set1_ps(3.0f));
    if (nearRim(c0) > farLimit && nearRim(c1) > farLimit && nearRim(c2) > farLimit) return inside(centre);
    if (inside(centre) || nearRim(centre) < nearLimit) return true;
    const SSEPoint* corners[3] = {&c0, &c1, &c2};
    for (int side = 0; side < 3; ++side) {
        const SSEPoint& from = *corners[side];
        const SSEPoint& to = *corners[(side + 1) % 3];
        const __m128 delta = _mm_sub_ps(to.sse, from.sse);
        const float length = CSSEFns::vectorlen(delta);
        const float step = std::min(length / 5.0f, 0.1f);
        const int n = step > 0.0f ? static_cast<int>(length / step) : 0;
        const __m128 direction = n > 0 ? _mm_mul_ps(_mm_div_ps(delta, _mm_set1_ps(length)), _mm_set1_ps(step))
                                       : _mm_setzero_ps();
        for (int k = 0; k <= n; ++k) {
            const SSEPoint p = detail::Along(from, direction, k);
            if (nearRim(p) < nearLimit || inside(p)) return true;
        }
    }
    return false;
}

// A side is open when its neighbour is missing or marked for removal.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CanDeleteTriangle(T* triangle)
{
    if (triangle == nullptr) return false;
    const auto open = [triangle](int side) {
        const T* n = triangle->Neighbour[side];
        return n == nullptr || n->Ignore;
    };
    const int openSides = open(0) + open(1) + open(2);
    if (openSides != 1) return true;
    // The fan around the corner opposite the open side must close on
    // itself: otherwise the removal would pinch that corner.
    const int openSide = open(0) ? 0 : (open(1) ? 1 : 2);
    const int startSlot = (openSide + 1) % 3;
    const int pivot = triangle->Vertex[(openSide + 2) % 3];
    T* previous = triangle;
    T* current = triangle->Neighbour[startSlot];
    for (int guard = 0; guard < 100000; ++guard) {
        if (current == triangle) return true;
        if (current == nullptr || current->Ignore) return false;
        T* next = nullptr;
        for (T* candidate : current->Neighbour) {
            if (candidate != nullptr && candidate != previous && IsVertexInTriangle(candidate, pivot)) {
                next = candidate;
                break;
            }
        }
        if (next == nullptr) return false;
        previous = current;
        current = next;
    }
    return false;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckIfDeleteTriangles(CSSEMatrix* lower, CSSEMatrix* upper, bool aboutX)
{
    if (lower == nullptr || upper == nullptr) return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    float maxValue = 0.0f;
    float minValue = 0.0f;
    upper->CalcMinMaxValues(&maxValue, &minValue);
    const SSEPoint reference{};
    std::vector<T*> collected;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        const SSEPoint& p0 = Vertices[triangle->Vertex[0]];
        const SSEPoint& p1 = Vertices[triangle->Vertex[1]];
        const SSEPoint& p2 = Vertices[triangle->Vertex[2]];
        SSEPoint normal;
        normal.sse = CSSEFns::vectorproduct(_mm_sub_ps(p1.sse, p0.sse), _mm_sub_ps(p2.sse, p0.sse));
        if (aboutX)
            normal.x = 0.0f;
        else
            normal.y = 0.0f;
        normal.w = 0.0f;
        (void)reference;
        const float length = CSSEFns::vectorlen(normal.sse);
        if (!(length > 0.0f)) continue;
        normal.sse = _mm_div_ps(normal.sse, _mm_set1_ps(length));
        const float angle = std::acos(std::clamp(normal.z, -1.0f, 1.0f));
        if (!(normal.z > 0.0f && -0.000001f < angle && angle < 1.0471985f)) continue;
        bool allAbove = true;
        bool oneOnTop = false;
        for (int k = 0; k < 3; ++k) {
            const SSEPoint& c = Vertices[triangle->Vertex[k]];
            const int x = static_cast<int>(c.x + 0.5f) + lower->GetSizeX() / 2;
            const int y = static_cast<int>(c.y + 0.5f) + lower->GetSizeY() / 2;
            const float low = lower->GetPoint(x, y);
            const float high = upper->GetPoint(static_cast<int>(c.x + 0.5f) + upper->GetSizeX() / 2,
                                               static_cast<int>(c.y + 0.5f) + upper->GetSizeY() / 2);
            allAbove = allAbove && low + 2.0f < c.z;
            oneOnTop = oneOnTop || std::fabs(high - c.z) < 2.00001f || std::fabs(high - minValue) < 0.001f;
        }
        if (allAbove && oneOnTop) collected.push_back(triangle);
    }
    Self().ReturnToFinalizedState(wasFinalized);
    // The removal eats in from the border: a collected triangle with an open
    // side goes, which may open the next one.
    for (bool marked = true; marked;) {
        marked = false;
        for (auto it = collected.begin(); it != collected.end();) {
            T* triangle = *it;
            bool open = false;
            for (const T* n : triangle->Neighbour) open = open || n == nullptr || n->Ignore;
            if (!open) {
                ++it;
                continue;
            }
            triangle->Ignore = true;
            it = collected.erase(it);
            marked = true;
        }
    }
}

// The shortest side, with ties as they fall out of the comparisons below.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CheckCollaborateTriangles(TriangleListType* triangles, float minLength, float maxLength)
{
    if (triangles == nullptr) return false;
    bool collapsed = false;
    for (POSITION pos = triangles->GetHeadPosition(); pos != nullptr;) {
        T* triangle = triangles->GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        const int* v = triangle->Vertex;
        if (v[0] == v[1] || v[1] == v[2] || v[0] == v[2]) continue;
        const float e0 = CSSEFns::euclideandistance(Vertices[v[1]].sse, Vertices[v[0]].sse);
        const float e1 = CSSEFns::euclideandistance(Vertices[v[2]].sse, Vertices[v[1]].sse);
        const float e2 = CSSEFns::euclideandistance(Vertices[v[0]].sse, Vertices[v[2]].sse);
        if (e0 < minLength && e1 < minLength && e2 < minLength) continue;
        if (e0 > maxLength && e1 > maxLength && e2 > maxLength) continue;
        ESharedSide side = eSideNone;
        if (e1 <= e0 && e1 < e2)
            side = eSide1;
        else if (e1 <= e0 && e2 <= e1)
            side = eSide2;
        else if (e0 < e1 && e0 < e2)
            side = eSide0;
        else if (e0 < e1 && e2 <= e0 && e2 < e1)
            side = eSide2;
        if (side == eSideNone) continue;
        CollaborateTrianglesOnEdge(triangle, side);
        collapsed = true;
    }
    return collapsed;
}

// Side p-q of the triangle shrinks to its mid-point, which p takes; q is
// replaced by p around it. The triangle and its neighbour across the side
// fold flat and are marked; their other neighbours on either side of the
// side are joined directly.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CollaborateTrianglesOnEdge(T* triangle, ESharedSide side)
{
    if (triangle == nullptr || side < eSide0 || side > eSide2) return;
    const int p = triangle->Vertex[side];
    const int q = triangle->Vertex[(side + 1) % 3];
    if (p == q) return;
    T* across = triangle->Neighbour[side];
    const std::vector<T*> aroundQ = TrianglesAroundVertex(triangle, q);
    const std::vector<T*> aroundP = TrianglesAroundVertex(triangle, p);
    SSEPoint merged = detail::MidPoint(Vertices[p], Vertices[q]);
    *GetVertexPtr(p) = merged;
    std::vector<T*> outer;
    for (T* folding : {triangle, across}) {
        if (folding == nullptr) continue;
        folding->Ignore = true;
        for (T* n : folding->Neighbour) {
            if (n != nullptr && n != triangle && n != across) outer.push_back(n);
        }
    }
    for (T* t : aroundQ) {
        if (t != triangle && t != across) ResetVertexWithVertex(q, p, t);
    }
    for (T* folding : {triangle, across}) {
        if (folding == nullptr) continue;
        for (T* n : folding->Neighbour) {
            if (n == nullptr) continue;
            for (T*& slot : n->Neighbour) {
                if (slot == folding) slot = nullptr;
            }
        }
    }
    for (std::size_t i = 0; i < outer.size(); ++i) {
        for (std::size_t j = i + 1; j < outer.size(); ++j) FindNeighbours(outer[i], outer[j]);
    }
    for (const std::vector<T*>* fan : {&aroundP, &aroundQ}) {
        for (T* t : *fan) RefreshCircle(t);
    }
    for (T* n : outer) NoteSideMayBeOpen(n);
}

} // namespace vek
