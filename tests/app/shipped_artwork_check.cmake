# The renderings shipped in the bundle cover everything the default window shows, pressed
# pictures included: a start with an empty artwork cache renders nothing, so writes nothing.
# Usage: cmake -DTOOL=<zellick-render-artwork> -DWORK=<scratch folder> -P shipped_artwork_check.cmake
set(cache ${WORK}/shipped-artwork-check)
file(REMOVE_RECURSE ${cache})
file(MAKE_DIRECTORY ${cache})
execute_process(COMMAND ${TOOL} ${cache} RESULT_VARIABLE result ERROR_VARIABLE log TIMEOUT 60)
file(GLOB rendered ${cache}/*)
file(REMOVE_RECURSE ${cache})
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the app failed (${result}):\n${log}")
endif()
if(rendered)
  message(FATAL_ERROR "rendered at start-up although shipped renderings should serve: ${rendered}")
endif()
