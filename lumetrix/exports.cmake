# The library exports what exports.map names, and nothing else.
#   cmake -DNM=<nm> -DLIBRARY=<library> -DMAP=<exports.map> -P exports.cmake
execute_process(COMMAND ${NM} --dynamic --defined-only --format=just-symbols ${LIBRARY}
                OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${exported}" exported)
string(REPLACE "\n" ";" exported "${exported}")
list(SORT exported)
file(STRINGS "${MAP}" named REGEX "^ +lumetrix_.*;")
list(TRANSFORM named REPLACE "^ +(.*);?$" "\\1")
list(TRANSFORM named REPLACE ";" "")
list(SORT named)
if(NOT "${exported}" STREQUAL "${named}")
  message(FATAL_ERROR "exported: ${exported}\nnamed: ${named}")
endif()
list(LENGTH named count)
message(STATUS "${count} functions exported")
