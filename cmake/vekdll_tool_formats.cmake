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

# Finds `package`; where it gives the imported `target`, links it and defines
# `definition`. `serves` and `version_variable` make the configure message.
function(vekdll_tool_format package target definition serves debian version_variable)
  find_package(${package} QUIET)
  if(TARGET ${target})
    target_link_libraries(vekdll_tool_formats INTERFACE ${target})
    target_compile_definitions(vekdll_tool_formats INTERFACE ${definition})
    message(STATUS "tools: ${serves} through ${package} ${${version_variable}}")
  else()
    message(STATUS "tools: ${package} not found (Debian ${debian}), so no ${serves}")
  endif()
endfunction()

vekdll_tool_format(GDAL GDAL::GDAL VEKDLL_TOOLS_WITH_GDAL GeoTIFF libgdal-dev GDAL_VERSION)
vekdll_tool_format(PNG PNG::PNG VEKDLL_TOOLS_WITH_PNG pictures libpng-dev PNG_VERSION_STRING)
