# Checks that the library exports exactly the symbols listed in exports.map.
#   cmake -DNM=<nm> -DLIBRARY=<library> -DMAP=<exports.map> -P exports.cmake
execute_process(COMMAND ${NM} --dynamic --defined-only --format=just-symbols ${LIBRARY}
                OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${exported}" exported)
string(REPLACE "\n" ";" exported "${exported}")
list(SORT exported)
file(STRINGS "${MAP}" expected REGEX "^ +lumetrix_.*;")
list(TRANSFORM expected REPLACE "^ +(.*);?$" "\\1")
list(TRANSFORM expected REPLACE ";" "")
list(SORT expected)
if(NOT "${exported}" STREQUAL "${expected}")
  message(FATAL_ERROR "exported: ${exported}\nexpected: ${expected}")
endif()
list(LENGTH expected count)
message(STATUS "${count} functions exported")
