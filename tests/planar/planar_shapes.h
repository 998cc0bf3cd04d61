#pragma once

// Polygons and plain double-precision geometry for the planar tests.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace vek::test {

struct Xy {
    double x;
    double y;
};

using Ring = std::vector<Xy>;

inline double Cross(const Xy& a, const Xy& b, const Xy& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Twice the signed area, positive counter-clockwise.
inline double TwiceArea(const Ring& ring)
{
    double sum = 0.0;
    for (size_t i = 0; i < ring.size(); ++i) {
        const Xy& a = ring[i];
        const Xy& b = ring[(i + 1) % ring.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum;
}

// Even-odd rule; points on the border may go either way.
inline bool Inside(const Ring& ring, const Xy& p)
{
    bool inside = false;
    for (size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const Xy& a = ring[i];
        const Xy& b = ring[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

// The open segments a-b and c-d cross at one point inside both.
inline bool CrossProperly(const Xy& a, const Xy& b, const Xy& c, const Xy& d)
{
    const double abc = Cross(a, b, c);
    const double abd = Cross(a, b, d);
    const double cda = Cross(c, d, a);
    const double cdb = Cross(c, d, b);
    return ((abc > 0 && abd < 0) || (abc < 0 && abd > 0)) && ((cda > 0 && cdb < 0) || (cda < 0 && cdb > 0));
}

inline Ring Reversed(Ring ring)
{
    std::reverse(ring.begin(), ring.end());
    return ring;
}

inline Ring RegularPolygon(int corners, double radius)
{
    Ring ring;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / corners;
        ring.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return ring;
}

inline Ring Star(int spikes, double outer, double inner)
{
    Ring ring;
    for (int i = 0; i < 2 * spikes; ++i) {
        const double angle = std::numbers::pi * i / spikes;
        const double radius = i % 2 == 0 ? outer : inner;
        ring.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return ring;
}

// A back of height 2 along the x axis with `teeth` teeth of width 2 and
// height 10 standing on it, two apart; counter-clockwise.
inline Ring Comb(int teeth)
{
    const double right = 4.0 * teeth - 2.0;
    Ring ring{{0, 0}, {right, 0}};
    for (int i = teeth - 1; i >= 0; --i) {
        ring.push_back({4.0 * i + 2.0, 10.0});
        ring.push_back({4.0 * i, 10.0});
        if (i > 0) {
            ring.push_back({4.0 * i, 2.0});
            ring.push_back({4.0 * i - 2.0, 2.0});
        }
    }
    return ring;
}

// A band of width 15 wound `turns` times around the origin: out along the
// outer rim, back along the inner one; counter-clockwise.
inline Ring Spiral(double turns, int pointsPerTurn)
{
    const int count = static_cast<int>(turns * pointsPerTurn);
    Ring outer;
    Ring inner;
    for (int i = 0; i <= count; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / pointsPerTurn;
        const double radius = 10.0 + 6.0 * angle;
        outer.push_back({(radius + 15.0) * std::cos(angle), (radius + 15.0) * std::sin(angle)});
        inner.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    Ring ring = outer;
    ring.insert(ring.end(), inner.rbegin(), inner.rend());
    return ring;
}

inline void Fill(CSSE2dPolygon& polygon, const Ring& ring)
{
    polygon.Create(static_cast<int>(ring.size()));
    for (int i = 0; i < static_cast<int>(ring.size()); ++i) {
        polygon.SetPoint(i, static_cast<float>(ring[i].x), static_cast<float>(ring[i].y));
    }
}

inline void Fill(CSSE3dPolygon& polygon, const Ring& ring, float z = 0.0f)
{
    polygon.Create(static_cast<int>(ring.size()));
    for (int i = 0; i < static_cast<int>(ring.size()); ++i) {
        polygon.SetPoint(i, static_cast<float>(ring[i].x), static_cast<float>(ring[i].y), z);
    }
}

// The ring as the triangulator sees it: float coordinates, scaled.
inline Ring AsFloats(const Ring& ring, float scaleX, float scaleY)
{
    Ring out;
    for (const Xy& p : ring) {
        out.push_back({static_cast<double>(static_cast<float>(p.x) * scaleX),
                       static_cast<double>(static_cast<float>(p.y) * scaleY)});
    }
    return out;
}

} // namespace vek::test
