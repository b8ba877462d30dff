# Fails unless the library's dynamic symbol table defines exactly one symbol,
# CreateExtension. Run with -DNM=<nm> -DLIBRARY=<path>.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
string(REPLACE "\n" ";" lines "${symbols}")
set(defined "")
foreach(line IN LISTS lines)
  if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] ([^ ]+)$")
    list(APPEND defined ${CMAKE_MATCH_1})
  endif()
endforeach()
if(NOT defined STREQUAL "CreateExtension")
  message(FATAL_ERROR "exported symbols of ${LIBRARY}: ${defined}")
endif()
message(STATUS "only CreateExtension is exported")
