# File formats of the programs under tools/ that need a library of their own,
# gathered in the interface target vekdll_tool_formats, which the programs and
# their tests link. The library vekdll itself never links them. Each is
# optional: a program built without one still builds, and says what it lacks.
#   GDAL   (Debian libgdal-dev): reads GeoTIFF and every raster GDAL knows,
#          writes GeoTIFF; defines VEKDLL_TOOLS_WITH_GDAL.
#   libpng (Debian libpng-dev): writes the pictures; VEKDLL_TOOLS_WITH_PNG.
# -DCMAKE_DISABLE_FIND_PACKAGE_GDAL=ON or ..._PNG=ON builds without one on
# purpose, to try that build.
if(TARGET vekdll_tool_formats)
  return()
endif()
add_library(vekdll_tool_formats INTERFACE)

find_package(GDAL QUIET)
if(TARGET GDAL::GDAL)
  target_link_libraries(vekdll_tool_formats INTERFACE GDAL::GDAL)
  target_compile_definitions(vekdll_tool_formats INTERFACE VEKDLL_TOOLS_WITH_GDAL)
  message(STATUS "tools: GeoTIFF through GDAL ${GDAL_VERSION}")
else()
  message(STATUS "tools: GDAL not found (Debian libgdal-dev), so no GeoTIFF")
endif()

find_package(PNG QUIET)
if(TARGET PNG::PNG)
  target_link_libraries(vekdll_tool_formats INTERFACE PNG::PNG)
  target_compile_definitions(vekdll_tool_formats INTERFACE VEKDLL_TOOLS_WITH_PNG)
  message(STATUS "tools: pictures through libpng ${PNG_VERSION_STRING}")
else()
  message(STATUS "tools: libpng not found (Debian libpng-dev), so no pictures")
endif()
