# Reads the headers of what a Windows build has put together.
#
#   cmake -DOBJDUMP=... -DBIN=build/windows/bin -DGATEWAY=<gateway library> -P <this file>
#
#  - The gateway library exports QuorinGatewayHttpMainFunc, undecorated, and nothing else.
#  - Whatever a binary imports is in the folder or belongs to every Windows.
#  - Every binary may be loaded anywhere in the 64-bit address space and runs no data.
#  - None of ours has thread-local objects with destructors: gcc frees their memory first.

cmake_minimum_required(VERSION 3.25)

set(windows_libraries
  advapi32 authz bcrypt crypt32 dbghelp dnsapi gdi32 iphlpapi kernel32 mpr msvcrt ncrypt netapi32
  ntdll ole32 oleaut32 rpcrt4 secur32 shell32 shlwapi user32 userenv uxtheme version winhttp winmm
  ws2_32)

set(failures 0)
function(fail text)
  message("FAILED: ${text}")
  math(EXPR failures "${failures} + 1")
  set(failures "${failures}" PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE binaries "${BIN}/*.dll" "${BIN}/*.exe")
if(NOT GATEWAY IN_LIST binaries)
  fail("${GATEWAY} is not there")
endif()

set(present "")
foreach(binary IN LISTS binaries)
  get_filename_component(name "${binary}" NAME)
  string(TOLOWER "${name}" name)
  list(APPEND present "${name}")
endforeach()

foreach(binary IN LISTS binaries)
  get_filename_component(name "${binary}" NAME)
  execute_process(COMMAND "${OBJDUMP}" -p "${binary}" OUTPUT_VARIABLE headers
                  COMMAND_ERROR_IS_FATAL ANY)

  foreach(flag IN ITEMS DYNAMIC_BASE HIGH_ENTROPY_VA NX_COMPAT)
    if(NOT headers MATCHES "[\t ]${flag}[\r\n]")
      fail("${name} lacks ${flag}")
    endif()
  endforeach()

  string(REGEX MATCHALL "DLL Name: [^\r\n]+" imports "${headers}")
  if(NOT imports)
    fail("${name}: no import was read, so this check proves nothing")
  endif()
  foreach(import IN LISTS imports)
    string(REGEX REPLACE "DLL Name: *" "" import "${import}")
    string(TOLOWER "${import}" import)
    string(REGEX REPLACE "\\.dll$" "" stem "${import}")
    if(NOT import IN_LIST present AND NOT stem IN_LIST windows_libraries
       AND NOT stem MATCHES "^api-ms-win-")
      fail("${name} imports ${import}, which is neither here nor part of Windows")
    endif()
  endforeach()

  # Qt's own are left alone by what scripts/build-windows makes of Qt; a test ends threads.
  if(NOT name MATCHES "^(Qt6Core|libstdc\\+\\+-6)\\.dll$" AND headers MATCHES "__cxa_thread_atexit")
    fail("${name} destroys thread-local objects")
  endif()

  if(binary STREQUAL GATEWAY)
    string(REGEX MATCH "\\[Ordinal/Name Pointer\\] Table[^\n]*\n((\t\\[[^\n]*\n)*)" table
           "${headers}")
    string(REGEX MATCHALL "\t\\[[^\n]*" exports "${CMAKE_MATCH_1}")
    list(TRANSFORM exports REPLACE "^.*[ \t]" "")
    if(NOT exports STREQUAL "QuorinGatewayHttpMainFunc")
      fail("${name} exports \"${exports}\"")
    endif()
  endif()
endforeach()

list(LENGTH binaries count)
if(failures GREATER 0)
  message(FATAL_ERROR "${failures} findings in ${count} binaries")
endif()
message("${count} binaries are in order")
