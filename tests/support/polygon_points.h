#pragma once

// Spatial and planar polygons from point lists, and their points back, for
// the tests of the polygons and of whatever hands its results over as a polygon.

#include <cmath>
#include <numbers>
#include <ostream>
#include <vector>

#include "support/sse_lanes.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace vek::test {

struct Xyz {
    float x;
    float y;
    float z = 0.0f;
};

inline bool operator==(const Xyz& a, const Xyz& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline std::ostream& operator<<(std::ostream& os, const Xyz& p)
{
    return os << '(' << p.x << ", " << p.y << ", " << p.z << ')';
}

inline void Fill(CSSE3dPolygon& polygon, const std::vector<Xyz>& points)
{
    polygon.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) polygon.SetPoint(i, points[i].x, points[i].y, points[i].z);
}

// A planar polygon takes x and y of each point.
inline void Fill(CSSE2dPolygon& polygon, const std::vector<Xyz>& points)
{
    polygon.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) polygon.SetPoint(i, points[i].x, points[i].y);
}

// A polygon through the points, for building one in an expression.
inline CSSE3dPolygon PolygonOf(const std::vector<Xyz>& points)
{
    CSSE3dPolygon polygon;
    Fill(polygon, points);
    return polygon;
}

// -7 in each coordinate that the read leaves alone.
inline Xyz PointOf(const CSSE3dPolygon& polygon, int i)
{
    Xyz p{-7.0f, -7.0f, -7.0f};
    polygon.GetPoint(i, p.x, p.y, p.z);
    return p;
}

inline std::vector<Xyz> PointsOf(const CSSE3dPolygon& polygon)
{
    std::vector<Xyz> points;
    for (int i = 0; i < polygon.GetNumPoints(); ++i) points.push_back(PointOf(polygon, i));
    return points;
}

// The points of a planar polygon, with z 0.
inline std::vector<Xyz> PointsOf(const CSSE2dPolygon& polygon)
{
    std::vector<Xyz> points(static_cast<std::size_t>(polygon.GetNumPoints()));
    for (int i = 0; i < polygon.GetNumPoints(); ++i) polygon.GetPoint(i, points[i].x, points[i].y);
    return points;
}

// Points along the x axis at x = 0, 1, 2, ..., with y and z 0.
inline std::vector<Xyz> Row(int count)
{
    std::vector<Xyz> points;
    for (int i = 0; i < count; ++i) points.push_back({static_cast<float>(i), 0.0f, 0.0f});
    return points;
}

// Points at the angles 2 pi i / perTurn, i = 0 ... count - 1, each at the
// distance radius(i, angle) from the origin.
template <class Radius>
std::vector<Xyz> Polar(int count, int perTurn, Radius radius)
{
    std::vector<Xyz> points;
    for (int i = 0; i < count; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / perTurn, r = radius(i, angle);
        points.push_back({static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle))});
    }
    return points;
}

// The square 0..side x 0..side with a point at every unit of its edges,
// counter-clockwise from the origin.
inline std::vector<Xyz> DottedSquare(int side)
{
    std::vector<Xyz> points;
    for (int edge = 0; edge < 4; ++edge) {
        for (int i = 0; i < side; ++i) {
            const float t = static_cast<float>(i), s = static_cast<float>(side);
            points.push_back(edge == 0 ? Xyz{t, 0} : edge == 1 ? Xyz{s, t} : edge == 2 ? Xyz{s - t, s} : Xyz{0, s - t});
        }
    }
    return points;
}

} // namespace vek::test
