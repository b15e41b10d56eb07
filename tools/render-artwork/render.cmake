# Runs the renderer; a failure only warns, since the app can render at its first start.
execute_process(COMMAND ${TOOL} ${OUT} RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET TIMEOUT 60)
if(NOT result EQUAL 0)
  message(WARNING "Could not pre-render the artwork (${result}); the app renders it at its first start")
endif()
