# Reads the sources for what compilers let pass.
#
#   cmake -D TREE=<top folder> -P check_sources.cmake
#
#  - A room includes only from rooms it may know. So does the program, in host/. Tests know more.
#  - In the room of the worker the way goes on in one direction.
#  - What differs between systems stands in src/platform/unix and src/platform/windows alone.
#  - A source file with a header of its own includes that first, so the header needs no other.
#  - Every element of the settings file is in the sample settings and in docs/settings.md.

cmake_minimum_required(VERSION 3.25)

set(rooms_entry server config log platform)
set(rooms_server worker cert http config log platform)
set(rooms_worker http json config log platform)
set(rooms_cert log platform)
set(rooms_config log)
set(rooms_log platform)
set(rooms_json "")
set(rooms_http "")
set(rooms_platform "")
set(rooms_host platform server) # of the server, how its control channel is named

# Worker, routing, handlers, and behind them what handlers share. Who stands behind knows nobody
# who stands before.
set(worker_order
  "worker"
  "routing"
  "api_query|delete_request|download|update_manifest"
  "notification_reset")

set(system_headers
  "windows|win[a-z0-9_]+|ws2[a-z]+|shl[a-z]+|shellapi|ncrypt|bcrypt|aclapi|sddl|io|direct|process"
  "dlfcn|unistd|fcntl|poll|pwd|grp|dirent|netdb|pthread|spawn|termios|syslog|execinfo|ifaddrs"
  "(sys|netinet|net|arpa|linux|openssl)/[a-z0-9_/]+")
list(JOIN system_headers "|" system_headers)
set(system_macros "_WIN32|_WIN64|WIN32|Q_OS_|__linux|__unix|__APPLE__|__MINGW|__CYGWIN__")

set(findings 0)
macro(report text)
  message("${text}")
  math(EXPR findings "${findings} + 1")
endmacro()

# How far along the way a file of the worker's room stands.
function(worker_place file result)
  cmake_path(GET file STEM name)
  set(place 0)
  foreach(names IN LISTS worker_order)
    if(name MATCHES "^(${names})$")
      break()
    endif()
    math(EXPR place "${place} + 1")
  endforeach()
  set(${result} ${place} PARENT_SCOPE)
endfunction()

macro(check_include file room header)
  if("${room}" STREQUAL "host" AND EXISTS "${TREE}/host/${header}")
    # the program's own
  elseif(NOT "${header}" MATCHES "^([a-z]+)/")
    report("${file} includes \"${header}\" without its room")
  elseif(NOT CMAKE_MATCH_1 IN_LIST rooms_${room} AND NOT CMAKE_MATCH_1 STREQUAL "${room}")
    report("${file} includes \"${header}\": ${room} does not know ${CMAKE_MATCH_1}")
  elseif("${room}" STREQUAL "worker" AND CMAKE_MATCH_1 STREQUAL "worker")
    worker_place("${file}" place)
    worker_place("${header}" place_of_header)
    if(place GREATER place_of_header)
      report("${file} includes \"${header}\", which stands before it on the way of a request")
    endif()
  endif()
endmacro()

# `src/room/name.cpp`, or `src/room/system/name.cpp`, with `src/room/name.h`.
macro(check_own_header file)
  string(REGEX REPLACE "^src/([a-z]+/)([a-z]+/)?([a-z0-9_]+)\\.cpp$" "\\1\\3.h" own "${file}")
  if(EXISTS "${TREE}/src/${own}")
    file(STRINGS "${TREE}/${file}" first REGEX "^ *# *include" LIMIT_COUNT 1)
    if(NOT first STREQUAL "#include \"${own}\"")
      report("${file} does not include \"${own}\" first")
    endif()
  endif()
endmacro()

file(GLOB_RECURSE files RELATIVE "${TREE}" "${TREE}/src/*.h" "${TREE}/src/*.cpp"
     "${TREE}/host/*.h" "${TREE}/host/*.cpp")
foreach(file IN LISTS files)
  string(REGEX REPLACE "^(src/)?([a-z]+)/.*" "\\2" room "${file}")
  if(NOT DEFINED rooms_${room})
    report("${file} is in no room")
    continue()
  endif()
  if(NOT file MATCHES "_test\\.cpp$|_fixture\\.h$|/testdata/")
    file(STRINGS "${TREE}/${file}" includes REGEX "^ *# *include *\"")
    foreach(include IN LISTS includes)
      string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" header "${include}")
      check_include("${file}" "${room}" "${header}")
    endforeach()
  endif()
  if(NOT file MATCHES "^src/platform/(unix|windows)/|/key_update_test\\.cpp$")
    file(STRINGS "${TREE}/${file}" lines REGEX
         "^ *# *(include *<(${system_headers})\\.h>|(if|ifdef|ifndef|elif)[ (!].*(${system_macros}))")
    foreach(line IN LISTS lines)
      report("${file} knows its system: ${line}")
    endforeach()
  endif()
  if(file MATCHES "\\.cpp$")
    check_own_header("${file}")
  endif()
endforeach()

file(STRINGS "${TREE}/src/config/element_names.h" names REGEX "constexpr .*\"")
foreach(name IN LISTS names)
  string(REGEX REPLACE ".*\"(.*)\".*" "\\1" name "${name}")
  foreach(place IN ITEMS "packaging/settings.xml=<${name}>" "docs/settings.md=`${name}`")
    string(REGEX MATCH "^([^=]+)=(.+)$" place "${place}")
    file(READ "${TREE}/${CMAKE_MATCH_1}" text)
    string(FIND "${text}" "${CMAKE_MATCH_2}" position)
    if(position EQUAL -1)
      report("${CMAKE_MATCH_1} does not name ${CMAKE_MATCH_2}")
    endif()
  endforeach()
endforeach()

list(LENGTH files count)
list(LENGTH names name_count)
if(count EQUAL 0 OR name_count EQUAL 0)
  report("nothing was read, so this check proves nothing")
endif()
if(findings GREATER 0)
  message(FATAL_ERROR "${findings} findings")
endif()
message("${count} files and ${name_count} settings are in order")
