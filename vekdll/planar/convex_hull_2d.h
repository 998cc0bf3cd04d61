#pragma once

#include "vekdll/export.h"
#include "vekdll/planar/basis_fcns.h"
#include "vekdll/planar/hull_records.h"

class CSSE2dPolygon;
class CSSE3dPolygon;

// The convex hull of a polygon's points in the plane, by a Graham scan
// around the lowest point. Points on the line of a hull edge are dropped, and
// so are repeated points. Orientation tests carry the tolerance of the
// planar predicates.
//
// The angular sort swaps records through one static buffer shared by all
// objects, so two planar hulls may not be built at the same moment.
//
// Assignment copies the members as they stand and so shares the arrays: only
// one of the two objects may then be destroyed.
class VEKDLL_API CHConvexHull2D : public CHSimpleBasisFcns {
public:
    // Computes the hull at once from x, y (and z, carried along) of every point.
    explicit CHConvexHull2D(CSSE3dPolygon* polygon);
    // Reads nothing and computes nothing: the hull stays empty.
    explicit CHConvexHull2D(CSSE2dPolygon* polygon);
    ~CHConvexHull2D();
    CHConvexHull2D(const CHConvexHull2D&) = delete;
    CHConvexHull2D& operator=(const CHConvexHull2D& other) = default;

    // The hull clockwise, ending at the lowest point.
    void ObtainConvexHull2D(CSSE2dPolygon* out);
    // The hull counter-clockwise, starting at the lowest point, with z.
    void ObtainConvexHull3D(CSSE3dPolygon* out);

protected:
    void FindLowest();
    void QuickSort(void* base, unsigned n, unsigned size);
    // Angular order around the lowest point. Of two points on one ray it
    // marks the nearer for deletion, so the sort has side effects.
    int Compare(const void* a, const void* b);
    void Squash();
    void Copy(int from, int to);
    void Swap(int i, int j);
    void Graham();
    tStackCell* Push(tPointStruc* p, tStackCell* top);
    tStackCell* Pop(tStackCell* top);

    int NumPoints = 0;
    int NumDeleted = 0;
    tPointStruc* Points = nullptr;
    tStackCell* Top = nullptr;

private:
    int CountStackCells() const;
    static t_h2dpoint PlanarOf(const tPointStruc* p) { return t_h2dpoint{p->Coordinate[0], p->Coordinate[1]}; }
};
