# Builds the Debian package into a scratch folder and runs lintian on it: no error may remain.
# Its warnings and notes are printed (ctest -V shows them).
# Usage: cmake -DCPACK=<cpack> -DLINTIAN=<lintian> -DBUILD=<build dir> -DWORK=<scratch folder>
#              -P lintian_check.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${CPACK} --config ${BUILD}/CPackConfig.cmake -B ${WORK}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
file(GLOB debs ${WORK}/*.deb)
list(LENGTH debs n)
if(NOT rc EQUAL 0 OR NOT n EQUAL 1)
  message(FATAL_ERROR "cpack failed (${rc}), or made not one package (${debs}):\n${out}")
endif()
execute_process(COMMAND ${LINTIAN} --fail-on error --info ${debs}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
message("${out}")
file(REMOVE_RECURSE ${WORK})
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "lintian found errors in the package (${rc})")
endif()
