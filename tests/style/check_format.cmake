# Fails when clang-format would change any C++ file git tracks: the house style is .clang-format.
# Usage: cmake -DSOURCE=<source root> -DCLANG_FORMAT=<clang-format> -P check_format.cmake
cmake_minimum_required(VERSION 3.25)
if(NOT CLANG_FORMAT)
  message(FATAL_ERROR "clang-format is not installed (Debian package clang-format)")
endif()
execute_process(COMMAND git ls-files -- *.cpp *.h WORKING_DIRECTORY ${SOURCE}
                OUTPUT_VARIABLE files RESULT_VARIABLE rc ERROR_QUIET)
if(NOT rc EQUAL 0)
  message("not a git checkout: nothing to check")
  return()
endif()
string(STRIP "${files}" files)
string(REPLACE "\n" ";" files "${files}")
execute_process(COMMAND ${CLANG_FORMAT} --dry-run --Werror ${files} WORKING_DIRECTORY ${SOURCE}
                RESULT_VARIABLE rc ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${out}\nFormat these with: clang-format -i FILE")
endif()
