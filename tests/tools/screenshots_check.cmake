# Runs zellick-screenshots (TOOL) into an empty folder (OUT): it must end well and leave four
# different PNGs of 720 x 1280 pixels (the phone-sized window at 2x), none as small as a screen
# of one colour compresses to. The tool itself refuses a picture of (nearly) one colour.
# Usage: cmake -DTOOL=<zellick-screenshots> -DOUT=<scratch folder> -P screenshots_check.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${OUT})
execute_process(COMMAND ${TOOL} ${OUT} RESULT_VARIABLE result TIMEOUT 90)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "zellick-screenshots ended with ${result}")
endif()
set(seen "")
foreach(name counter question reset more)
  set(png ${OUT}/${name}.png)
  if(NOT EXISTS ${png})
    message(FATAL_ERROR "${name}.png was not written")
  endif()
  file(READ ${png} head LIMIT 24 HEX)
  file(SIZE ${png} size)
  # The signature, then the header chunk's width and height.
  if(NOT head MATCHES "^89504e470d0a1a0a0000000d49484452000002d000000500$" OR size LESS 10000)
    message(FATAL_ERROR "${name}.png is not a full 720 x 1280 picture (${size} bytes, ${head})")
  endif()
  file(SHA256 ${png} hash)
  if(hash IN_LIST seen)
    message(FATAL_ERROR "${name}.png repeats an earlier picture")
  endif()
  list(APPEND seen ${hash})
endforeach()
