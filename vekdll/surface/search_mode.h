#pragma once

namespace vek {

// How a triangulation finds the triangles a new vertex affects, the open
// sides it sees from beyond the border, and vertices by position: through
// indexes kept beside its lists (the default), or by walking every triangle
// and every vertex as the plain algorithm does. Both give the same answers
// in the same order; the walk stays as the reference to compare with.
enum class SearchMode {
    Indexed,
    LinearScan,
};

} // namespace vek
