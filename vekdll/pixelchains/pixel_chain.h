#pragma once

#include <vector>

#include "vekdll/export.h"

// An ordered run of raster pixels, as traced along a contour of a field.
// Pixels keep the order in which they were appended; a polygon made from a
// chain follows that order.
class VEKDLL_API CPixelChain {
public:
    void AddPixel(int x, int y);
    void RemoveAll();

    int GetCount() const;
    // The column and row of the pixel at `index`. An index outside the chain
    // leaves x and y as they are, like every indexed read of the library.
    void GetPixel(int index, int& x, int& y) const;

private:
    struct Pixel {
        int x;
        int y;
    };
    std::vector<Pixel> pixels_;
};
