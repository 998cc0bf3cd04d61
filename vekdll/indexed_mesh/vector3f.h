#pragma once

// A point or direction of the indexed mesh: three floats, 12 bytes, stored
// in a file as they lie in memory.
struct QbVector3f {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    bool operator==(const QbVector3f&) const = default;
};

static_assert(sizeof(QbVector3f) == 12, "positions and normals are stored as three packed floats");
