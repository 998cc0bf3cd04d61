#pragma once

#include "vekdll/export.h"

// A range of raster values, accepted by one entry point of CHTriangulation
// that callers still name; it carries nothing.
class VEKDLL_API ZrCFieldRange {};
