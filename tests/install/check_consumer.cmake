# Installs the built library into a private prefix, then configures, builds and
# runs a consumer project that finds it with find_package(vekdll).
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
  endif()
endfunction()

run_step("install" ${CMAKE_COMMAND} --install ${VEKDLL_BINARY_DIR} --prefix ${prefix})
run_step("configure consumer" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${WORK_DIR}/build
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=Release)
run_step("build consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run_step("run consumer" ${WORK_DIR}/build/vekdll_consumer)
message(STATUS "consumer built and ran against ${prefix}")
