// The two ways the graph takes geometric decisions: tolerant float
// arithmetic, or exact signs.

#include "vekdll/foundation/exact_predicates.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::SetPredicates(vek::PlanarPredicates how)
{
    if (how == Predicates) return;
    Predicates = how;
    // The index files circles differently for each mode.
    WorkingIndex.reset();
}

template <class D, class T, class E>
float TriangleGraph<D, T, E>::SideTest(const SSEPoint& s, const SSEPoint& e, const SSEPoint& p) const
{
    if (Predicates == vek::PlanarPredicates::Tolerant) return detail::SideValue(s, e, p);
    // Orient2D(s, e, p) and the cross value share their sign: both are
    // (e - s) x (p - s).
    const double sign = vek::Orient2D(s, e, p);
    return sign > 0.0 ? 1.0f : (sign < 0.0 ? -1.0f : 0.0f);
}

} // namespace vek
