# Installs the built library into a private prefix, then configures, builds and
# runs a consumer project that finds it with find_package(vekdll), compiles the
# same consumer with the flags pkg-config gives for vekdll.pc, and runs the
# installed triangulate_field.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
  endif()
  set(step_output "${out}" PARENT_SCOPE)
endfunction()

run_step("install" ${CMAKE_COMMAND} --install ${VEKDLL_BINARY_DIR} --prefix ${prefix})
run_step("configure consumer" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${WORK_DIR}/build
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=Release)
run_step("build consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run_step("run consumer" ${WORK_DIR}/build/vekdll_consumer)
message(STATUS "consumer built and ran against ${prefix} through find_package")

if(PKG_CONFIG)
  run_step("pkg-config vekdll" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
    ${PKG_CONFIG} --cflags --libs vekdll)
  string(STRIP "${step_output}" pc_flags)
  separate_arguments(flags UNIX_COMMAND "${pc_flags}")
  # The .pc file finds its prefix from where it lies: its include folder
  # must be the installed one, however the path is spelt.
  set(includes_installed FALSE)
  foreach(flag IN LISTS flags)
    if(flag MATCHES "^-I(.+)$")
      file(REAL_PATH "${CMAKE_MATCH_1}" folder)
      file(REAL_PATH "${prefix}/include" installed)
      if(folder STREQUAL installed)
        set(includes_installed TRUE)
      endif()
    endif()
  endforeach()
  if(NOT includes_installed)
    message(FATAL_ERROR "pkg-config names no include folder in ${prefix}: ${pc_flags}")
  endif()
  run_step("compile consumer with pkg-config's flags" ${CXX_COMPILER} ${CONSUMER_SOURCE_DIR}/main.cpp ${flags}
    -Wl,-rpath,${prefix}/${LIBDIR} -o ${WORK_DIR}/vekdll_consumer_pc)
  run_step("run consumer built with pkg-config" ${WORK_DIR}/vekdll_consumer_pc)
  message(STATUS "consumer built and ran with: ${pc_flags}")
else()
  message(STATUS "pkg-config not found: vekdll.pc not checked")
endif()

if(TOOLS_INSTALLED)
  run_step("installed triangulate_field --help" ${prefix}/bin/triangulate_field --help)
  if(NOT step_output MATCHES "^Usage: triangulate_field")
    message(FATAL_ERROR "installed triangulate_field --help said:\n${step_output}")
  endif()
  foreach(data bigtujunga.tif bigtujunga.pgm)
    if(NOT EXISTS ${prefix}/share/vekdll/${data})
      message(FATAL_ERROR "the bundled ${data} is not installed in ${prefix}/share/vekdll")
    endif()
  endforeach()
  message(STATUS "installed triangulate_field runs")
endif()
