#pragma once

// A plain point of the plane: the record through which the planar classes
// and the planar polygon hand out single points.
struct t_h2dpoint {
    float x;
    float y;
};
