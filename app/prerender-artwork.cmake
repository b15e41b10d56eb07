# Runs the app offscreen in its default window with its artwork cache pointed at OUT.
# Usage: cmake -DAPP=<zellick> -DOUT=<folder> -DWORK=<scratch folder> -P prerender-artwork.cmake
file(REMOVE ${WORK}/prerender.ini)
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ZELLICK_NO_AUDIO=1
          ZELLICK_ARTWORK_CACHE=${OUT} ZELLICK_SETTINGS=${WORK}/prerender.ini
          ${APP} --silent --grab ${WORK}/prerender.png
  RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET TIMEOUT 60)
if(NOT result EQUAL 0)
  message(WARNING "Could not pre-render the artwork (${result}); the app renders it at its first start")
endif()
file(REMOVE ${WORK}/prerender.ini)
