#pragma once

// Records of the two convex hulls.

// ---------------------------------------------------------------- planar hull

// One input point of the Graham scan.
struct tPointStruc {
    int Index;            // position in the source polygon
    float Coordinate[3];  // x, y, z
    bool Delete;          // the angular sort found a farther point on its ray
};

// A cell of the scan's linked stack.
struct tStackCell {
    tPointStruc* Point;  // not owned
    tStackCell* Next;    // the cell below, or null
};

// ---------------------------------------------------------------- spatial hull
// Coordinates live on an integer grid of 64 bits, so that every orientation
// test of the construction is exact.

struct tEdgeStructure;
struct tFaceStructure;

struct tVertexStructure {
    long long Coordinate[3];
    int Index;                  // the caller's number for the vertex
    tEdgeStructure* Duplicate;  // cone edge already made here while a vertex is added
    tVertexStructure* Next;
    tVertexStructure* Prev;
    bool OnHull;     // lies on some edge (set and cleared by the clean-up)
    bool Processed;  // added to the hull or found inside it
    bool IsTop;      // the caller's mark, used by the lifted planar triangulation
};

struct tEdgeStructure {
    tFaceStructure* AdjacentFace[2];
    tVertexStructure* EndPoint[2];
    tFaceStructure* NewFace;  // cone face replacing the visible face on this edge
    tEdgeStructure* Next;
    tEdgeStructure* Prev;
    bool Delete;  // lies between two visible faces
};

struct tFaceStructure {
    tEdgeStructure* Edge[3];
    tVertexStructure* Vertex[3];  // counter-clockwise seen from outside
    tFaceStructure* Prev;
    tFaceStructure* Next;
    bool Lower;    // used by the lifted planar triangulation
    bool Visible;  // visible from the vertex being added
};
