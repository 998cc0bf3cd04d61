#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/planar/planar_predicates.h"
#include "vekdll/planar/planar_records.h"

// Planar predicates for ear clipping and the planar hull. Every one rests on
// twice the signed area of a, b, c in single precision, judged against one
// fixed tolerance: above 0.0005 is left, below -0.0005 is right, anything
// between is on the line. The scale of the coordinates therefore decides how
// small a corner may be and still count as one. The plane is taken with y
// pointing up, so a counter-clockwise ring has its interior to the left.
//
// Each predicate also comes with a last argument that chooses how it
// decides: vek::PlanarPredicates::Exact takes the exact sign of the area
// instead, for coordinates of any scale. Without it, the tolerance rules.
class VEKDLL_API CHSimpleBasisFcns {
public:
    CHSimpleBasisFcns() = default;
    ~CHSimpleBasisFcns() = default;
    CHSimpleBasisFcns(const CHSimpleBasisFcns&) = default;
    CHSimpleBasisFcns& operator=(const CHSimpleBasisFcns&) = default;

    // 1.0, -1.0 or 0.0.
    float AreaSign(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const;
    bool Left(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const;
    bool LeftOn(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const;
    bool Collinear(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const;
    // c on the closed segment a-b.
    bool Between(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const;
    // a-b and c-d cross at a point inside both.
    bool IntersectProp(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d) const;
    // a-b and c-d cross or touch.
    bool Intersect(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d) const;
    // b lies in the inner cone of the ring at a.
    bool InCone(const t_hvertex* a, const t_hvertex* b) const;

    // The same, decided as `how` says.
    float AreaSign(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, vek::PlanarPredicates how) const;
    bool Left(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, vek::PlanarPredicates how) const;
    bool LeftOn(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, vek::PlanarPredicates how) const;
    bool Collinear(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, vek::PlanarPredicates how) const;
    bool Between(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, vek::PlanarPredicates how) const;
    bool IntersectProp(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d,
                       vek::PlanarPredicates how) const;
    bool Intersect(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d,
                   vek::PlanarPredicates how) const;
    bool InCone(const t_hvertex* a, const t_hvertex* b, vek::PlanarPredicates how) const;

    // Index of the first of the n entries equal to p in all four lanes, or -1.
    static int VertexAlreadyThereInArray(SSEPoint* arr, SSEPoint& p, unsigned int n);
};
