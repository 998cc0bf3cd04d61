#pragma once

// Per-axis factors from the pixel units of a raster field to world units.
// A polygon lying in a field's pixel coordinates is multiplied by these to
// measure real lengths.
struct t_resolutiondata {
    float ResolutionX;
    float ResolutionY;
    float ResolutionZ;
};
