# Writes the header OUTPUT with the commit of the sources at SOURCE, when it has changed:
#   cmake -DSOURCE=... -DOUTPUT=... -P commit.cmake
# Without version control, or without git, it holds an empty text.
cmake_minimum_required(VERSION 3.25)

set(commit "")
find_program(GIT git)
if(GIT)
  # The sources may lie, without their history, in a folder of somebody else's.
  execute_process(COMMAND ${GIT} rev-parse --show-toplevel
    WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE top ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
  file(REAL_PATH ${SOURCE} source)
endif()
if(GIT AND top STREQUAL source)
  execute_process(COMMAND ${GIT} describe --always --exclude=* --dirty=+
    WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE described ERROR_QUIET RESULT_VARIABLE status
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(status EQUAL 0)
    set(commit " (${described})")
  endif()
endif()
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "#define KEL_COMMIT \"${commit}\"\n")
