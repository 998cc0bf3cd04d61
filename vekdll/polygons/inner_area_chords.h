#pragma once

// The two halves of one step of the even-odd count of the inner-area test,
// shared by the test of single points and by the column walk of the fills,
// which must agree with it bit for bit.
namespace vek::detail {

// A chord of the closed line with its ends ordered by x: a is the end with
// the smaller x, and the current point when both x are equal.
struct Chord {
    float ax;
    float ay;
    float bx;
    float by;
};

inline Chord OrderedChord(float prevX, float prevY, float curX, float curY)
{
    const bool curIsLower = curX <= prevX;
    return curIsLower ? Chord{curX, curY, prevX, prevY} : Chord{prevX, prevY, curX, curY};
}

// Whether the chord from prev to cur is counted at column x: x in (a.x, b.x],
// open at the smaller end and closed at the larger, so that a vertex is
// counted once and a vertical chord never.
inline bool ChordCountsAtColumn(float x, float prevX, float curX)
{
    return (x > curX) == (prevX >= x);
}

// Whether a counted chord passes strictly on the side of larger y at (x, y).
// For a fixed x this holds below some y and not from there on: the right
// side only grows with y.
inline bool ChordPassesAbove(const Chord& c, float x, float y)
{
    return (c.by - c.ay) * (x - c.ax) > (c.bx - c.ax) * (y - c.ay);
}

} // namespace vek::detail
