#pragma once

#include <array>
#include <optional>
#include <string>

namespace vek::tools {

// Where a raster lies in the world: a north-up affine map from cells to
// world coordinates (GDAL's geotransform without its rotation terms), the
// coordinate system, and the value that marks cells without data. The
// program computes in cells; the writers apply this record when results
// leave it, so the computation never meets coordinates in the millions.
struct Georeference {
    // Whether the file gave the map below; a raster without one is framed by
    // FrameInCells, and a GeoTIFF written of it carries no geotransform.
    bool placed = false;
    // The outer corner of cell (0, 0), the top left cell of the raster.
    double originX = 0.0;
    double originY = 0.0;
    // World units from one column to the next and from one row to the next;
    // rowStep is negative when row 0 is the north edge, as is usual.
    double columnStep = 1.0;
    double rowStep = -1.0;
    // The coordinate system as WKT, and its name for the report; both empty
    // when the file named none.
    std::string projection;
    std::string projectionName;
    // x and y are longitude and latitude in degrees.
    bool degrees = false;
    // The file's value for cells without data, if it declares one.
    std::optional<double> noData;

    // The frame of a raster of `rows` rows that came without one: square
    // cells of `cellSize`, x east and y north, the centre of the lower left
    // cell at (0, 0), so that the mesh of such an input has its coordinates
    // in cells times the cell size. Leaves `placed`, the coordinate system
    // and the no-data value as they are.
    void FrameInCells(double cellSize, int rows);

    // The six numbers of GDAL's geotransform, the two rotation terms 0.
    std::array<double, 6> GeoTransform() const;

    // The world position of a point given in cells, the centre of cell
    // (c, r) being at column c and row r; fractions lie in between.
    double X(double column) const { return originX + (column + 0.5) * columnStep; }
    double Y(double row) const { return originY + (row + 0.5) * rowStep; }

    // The steps from column to column and from row to row as lengths on the
    // ground in the units of x and y, signed as columnStep and rowStep: the
    // steps themselves, or, where they are degrees, metres at the latitude
    // of `row` on a sphere of the Earth's mean radius. Slopes and shading
    // need lengths, and a degree of longitude shrinks towards the poles.
    std::array<double, 2> GroundSteps(double row) const;
};

} // namespace vek::tools
