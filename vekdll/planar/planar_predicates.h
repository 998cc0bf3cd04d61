#pragma once

namespace vek {

// How the planar predicates of ear clipping decide on which side of a line a
// point lies.
enum class PlanarPredicates {
    // Twice the signed area in single precision against the fixed tolerance
    // of 0.0005: the historic behaviour, in which the scale of the
    // coordinates decides how small a corner may be and still count.
    Tolerant,
    // The exact sign of twice the signed area (vek::Orient2D on the float
    // coordinates): a corner is a corner however small, and only exactly
    // collinear points are on a line.
    Exact,
};

} // namespace vek
