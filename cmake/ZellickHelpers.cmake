# Helpers every folder uses to declare its targets the same way.

# ZELLICK_SANITIZE builds everything with AddressSanitizer and UndefinedBehaviorSanitizer.
option(ZELLICK_SANITIZE "Build everything with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
set(ZELLICK_SANITIZER_FLAGS -fsanitize=address,undefined -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined)
# What sanitised test runs are told: leaks count, undefined behaviour stops the run.
set(ZELLICK_SANITIZER_ENV
    "ASAN_OPTIONS=detect_leaks=1;UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
if(ZELLICK_SANITIZE)
  add_compile_options(${ZELLICK_SANITIZER_FLAGS})
  add_link_options(${ZELLICK_SANITIZER_FLAGS})
  # Every program carries the leak checker's list of Qt's own leaks at exit.
  add_library(zellick_lsan_suppressions STATIC ${CMAKE_CURRENT_LIST_DIR}/lsan_suppressions.cpp)
  add_link_options(LINKER:--undefined=__lsan_default_suppressions)
  link_libraries(zellick_lsan_suppressions)
endif()

# zellick_library(<name> SOURCES ... [DEPENDS ...] [PRIVATE_DEPENDS ...])
# A static library whose public headers are the folder's include/.
function(zellick_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  endif()
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
endfunction()

# zellick_test(<name> SOURCES ... [DEPENDS ...] [PREFIX p] [LABELS ...] [ENVIRONMENT ...]
#              [TIMEOUT s] [WHOLE [LAUNCHER command...]] [OWN_MAIN])
# A GoogleTest executable, with GoogleTest's main unless OWN_MAIN (its sources or DEPENDS bring
# one). Each case becomes a ctest entry named PREFIX.Suite.Case, unless WHOLE: then the
# executable is one entry, run through LAUNCHER if given. Qt tests run offscreen, silent, with Qt
# Quick's software renderer.
function(zellick_test name)
  cmake_parse_arguments(ARG "WHOLE;OWN_MAIN" "PREFIX;TIMEOUT"
                        "SOURCES;DEPENDS;LABELS;ENVIRONMENT;LAUNCHER" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gtest GTest::gmock)
  if(NOT ARG_OWN_MAIN)
    target_link_libraries(${name} PRIVATE GTest::gtest_main)
  endif()
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  set(_env QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software ZELLICK_NO_AUDIO=1 ${ARG_ENVIRONMENT})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(ARG_WHOLE)
    add_test(NAME ${name} COMMAND ${ARG_LAUNCHER} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${_env}" LABELS "${ARG_LABELS}"
                         TIMEOUT ${ARG_TIMEOUT})
  else()
    gtest_discover_tests(${name} TEST_PREFIX "${ARG_PREFIX}."
      PROPERTIES ENVIRONMENT "${_env}" LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT}
      DISCOVERY_TIMEOUT 60)
  endif()
endfunction()
