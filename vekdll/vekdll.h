#pragma once

// The whole public surface of the library in one include.

#include "vekdll/export.h"

// platform stand-ins
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_event.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/platform/clock.h"
#include "vekdll/platform/crt_random.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/framework_types.h"
#include "vekdll/platform/sleep.h"
#include "vekdll/platform/user_hooks.h"

// foundation
#include "vekdll/foundation/exact_predicates.h"
#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/foundation/time_logger.h"

// raster fields
#include "vekdll/fields/filters.h"
#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/int_vector.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

// meshes
#include "vekdll/mesh/field_range.h"
#include "vekdll/mesh/htriangle.h"
#include "vekdll/mesh/stretch.h"
#include "vekdll/mesh/triangulation.h"

// indexed meshes, the exchange format of the triangulations
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/memory_block.h"
#include "vekdll/indexed_mesh/stream_read_binary.h"
#include "vekdll/indexed_mesh/stream_read_binary_file.h"
#include "vekdll/indexed_mesh/stream_write_binary.h"
#include "vekdll/indexed_mesh/stream_write_binary_file.h"
#include "vekdll/indexed_mesh/triangulation_normals.h"
#include "vekdll/indexed_mesh/triangulation_serializer.h"
#include "vekdll/indexed_mesh/vector3f.h"

// polygons
#include "vekdll/pixelchains/pixel_chain.h"
#include "vekdll/planar/h2d_point.h"
#include "vekdll/polygons/inner_area_scan.h"
#include "vekdll/polygons/resolution_data.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

// planar construction
#include "vekdll/planar/basis_fcns.h"
#include "vekdll/planar/convex_hull_2d.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/planar/delaunay_2d.h"
#include "vekdll/planar/dynamic_triangle.h"
#include "vekdll/planar/hull_records.h"
#include "vekdll/planar/planar_predicates.h"
#include "vekdll/planar/planar_records.h"
#include "vekdll/planar/polygon_triangulation_refinement.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/planar/ring_cleanup.h"

// classifier
#include "vekdll/classifier/bayes_klassifikator.h"
#include "vekdll/classifier/f_matrix.h"
#include "vekdll/classifier/klassenelement.h"
#include "vekdll/classifier/klassenmuster.h"
#include "vekdll/classifier/klassifikator.h"

// adaptive surface triangulation
#include "vekdll/surface/border_chain_count.h"
#include "vekdll/surface/cell_centre_error.h"
#include "vekdll/surface/delaunay_records.h"
#include "vekdll/surface/finest_records.h"
#include "vekdll/surface/finest_triangulation.h"
#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/height_grid.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/mesh_exchange.h"
#include "vekdll/surface/polygon_blend.h"
#include "vekdll/surface/polygons_for_combine.h"
#include "vekdll/surface/triangle_graph.h"
#include "vekdll/surface/triangle_graph_types.h"
#include "vekdll/surface/vertex_container.h"
