// The graph operations over the records of ZrCFinestTriangulation,
// compiled once into the library.

#include "vekdll/surface/finest_triangulation.h"
#include "vekdll/surface/triangle_graph_area_deletion.inl"
#include "vekdll/surface/triangle_graph_borders.inl"
#include "vekdll/surface/triangle_graph_combination.inl"
#include "vekdll/surface/triangle_graph_critical.inl"
#include "vekdll/surface/triangle_graph_fan_walk.inl"
#include "vekdll/surface/triangle_graph_flips.inl"
#include "vekdll/surface/triangle_graph_geometry.inl"
#include "vekdll/surface/triangle_graph_links.inl"
#include "vekdll/surface/triangle_graph_mask_removal.inl"
#include "vekdll/surface/triangle_graph_predicates.inl"
#include "vekdll/surface/triangle_graph_records.inl"
#include "vekdll/surface/triangle_graph_refinement.inl"
#include "vekdll/surface/triangle_graph_removal.inl"
#include "vekdll/surface/triangle_graph_search.inl"
#include "vekdll/surface/triangle_graph_seam_clearance.inl"
#include "vekdll/surface/triangle_graph_splits.inl"
#include "vekdll/surface/triangle_graph_subdivision.inl"

template class vek::TriangleGraph<ZrCFinestTriangulation, t_hfinesttriangle, t_hfinestedge>;
