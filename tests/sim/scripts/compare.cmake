# Runs the scenario driver on SCRIPT and fails unless its output is EXPECTED to the byte.
# Usage: cmake -DSIM=<zellick-sim> -DSCRIPT=<x.zsim> -DEXPECTED=<x.out> -DACTUAL=<file> -P compare.cmake
execute_process(COMMAND ${SIM} ${SCRIPT} OUTPUT_FILE ${ACTUAL} ERROR_VARIABLE err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "zellick-sim ${SCRIPT} exited with ${rc}:\n${err}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${EXPECTED} ${ACTUAL} RESULT_VARIABLE differ)
if(differ)
  execute_process(COMMAND diff -u ${EXPECTED} ${ACTUAL} OUTPUT_VARIABLE diff)
  message(FATAL_ERROR "zellick-sim ${SCRIPT} printed something else than ${EXPECTED}:\n${diff}")
endif()
