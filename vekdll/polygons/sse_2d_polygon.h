#pragma once

#include "vekdll/export.h"
#include "vekdll/planar/h2d_point.h"

// A polyline in the plane, as the triangulator and the planar hull read it:
// two coordinate arrays and a count, nothing cached. The arrays are
// 16-byte aligned and hold blocks of four floats.
class VEKDLL_API CSSE2dPolygon {
public:
    CSSE2dPolygon();
    ~CSSE2dPolygon();
    // Shallow, as for the spatial polygon: both objects then share the arrays.
    CSSE2dPolygon& operator=(const CSSE2dPolygon& other);
    // Moving takes over the arrays and the count of `other` in the same way
    // and leaves `other` empty, so that each array is released once. Like the
    // copy, it releases nothing that this polygon held, which may be shared.
    CSSE2dPolygon(CSSE2dPolygon&& other) noexcept;
    CSSE2dPolygon& operator=(CSSE2dPolygon&& other) noexcept;

    void Create(int numPoints);
    // Releases the arrays; the count keeps its value.
    void Free();
    int GetNumPoints() const;

    // An index out of range leaves the outputs untouched, or does nothing.
    void GetPoint(int i, float& x, float& y) const;
    void GetPoint(int i, t_h2dpoint& p) const;
    void SetPoint(int i, float x, float y);

    float CalcArea() const;
    // Even indices below NumPoints-1 only, as the spatial polygon's searches.
    int ClosestPointX(float x) const;
    int ClosestPointY(float y) const;
    // The second argument isn't read.
    float GetMinEuclDistance(float x, float y) const;

private:
    bool InRange(int i) const { return PointsX != nullptr && i >= 0 && i < NumPoints; }

    float* PointsX;
    float* PointsY;
    int NumPoints;
};
