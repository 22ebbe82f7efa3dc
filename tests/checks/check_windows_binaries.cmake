# Checks the PE headers of the binaries of a Windows build.
#
#   cmake -DOBJDUMP=... -DNM=... -DWINDRES=... -DBIN=build/windows/bin -DGATEWAY=<gateway library>
#         -DPROGRAM=<quorin-gateway> -DLOGGER=<logging library> -DVERSION=<version of the product>
#         -DVENDOR=<text> -P <this file>
#
#  - The gateway library exports QuorinGatewayHttpMainFunc, undecorated, and nothing else.
#  - Every imported library is in the folder or part of Windows.
#  - Every library in the folder has a name of its own, since Windows uses a library that the host
#    program has already loaded for each import of its name.
#  - Every binary supports 64-bit address space layout randomization and has no executable data.
#  - None of our binaries has thread-local objects with destructors: gcc before 16 frees their
#    memory before it runs the destructors. (Qt has been stripped; scripts/build-windows disables the
#    feature of Qt that uses such an object, and a test that ends threads covers that.)
#  - Our binaries have a version resource with the product's version and their own name. The program
#    has an icon and an application manifest.

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
  fail("${GATEWAY} is missing")
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
    fail("${name}: no imports were found, so they were not checked")
  endif()
  foreach(import IN LISTS imports)
    string(REGEX REPLACE "DLL Name: *" "" import "${import}")
    string(TOLOWER "${import}" import)
    string(REGEX REPLACE "\\.dll$" "" stem "${import}")
    if(NOT import IN_LIST present AND NOT stem IN_LIST windows_libraries
       AND NOT stem MATCHES "^api-ms-win-")
      fail("${name} imports ${import}, which is neither in the folder nor part of Windows")
    endif()
  endforeach()

  if(name MATCHES "\\.dll$" AND NOT name MATCHES "[qQ]uorin|lumetrix2")
    fail("${name} has a name that other programs may use for their libraries")
  endif()

  if(NOT name MATCHES "^(Qt6|q.*backend|lib(crypto|ssl)-)")
    execute_process(COMMAND "${NM}" "${binary}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    if(NOT symbols MATCHES " T main|QuorinGatewayHttpMainFunc|lumetrix_log")
      fail("${name}: no symbols were found, so they were not checked")
    endif()
    if(symbols MATCHES "__cxa_thread_atexit")
      fail("${name} has thread-local objects with destructors")
    endif()
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

# The resources, as windres prints them.
function(expect_resource name text what)
  string(FIND "${resources}" "${text}" position)
  if(position EQUAL -1)
    fail("${name} lacks the resource ${what}: ${text}")
    set(failures "${failures}" PARENT_SCOPE)
  endif()
endfunction()

string(REPLACE "." ", " numbers "${VERSION}.0")
foreach(binary IN ITEMS "${PROGRAM}" "${GATEWAY}" "${LOGGER}")
  get_filename_component(name "${binary}" NAME)
  execute_process(COMMAND "${WINDRES}" --input-format=coff --output-format=rc "${binary}"
                  OUTPUT_VARIABLE resources ERROR_VARIABLE errors RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    fail("${name}: windres cannot read the resources: ${errors}")
    continue()
  endif()
  expect_resource("${name}" " FILEVERSION ${numbers}\n" "file version")
  expect_resource("${name}" " PRODUCTVERSION ${numbers}\n" "product version")
  foreach(value IN ITEMS "CompanyName|${VENDOR}" "FileVersion|${VERSION}"
          "LegalCopyright|Copyright ${VENDOR}" "OriginalFilename|${name}"
          "ProductName|Quorin Gateway" "ProductVersion|${VERSION}")
    string(REPLACE "|" "\", \"" value "${value}")
    expect_resource("${name}" "VALUE \"${value}\"\n" "version text")
  endforeach()
  if(NOT resources MATCHES "VALUE \"FileDescription\", \"Quorin Gateway[^\"]*\"")
    fail("${name} has no file description")
  endif()
  if(binary STREQUAL PROGRAM)
    expect_resource("${name}" "RT_GROUP_ICON" "icon")
    foreach(text IN ITEMS [[level=""asInvoker""]] [[{1f676c76-80e1-4239-95bb-83d0f6d0da78}]]
            [[{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}]] [[>true</longPathAware>]])
      expect_resource("${name}" "${text}" "manifest")
    endforeach()
  endif()
endforeach()

list(LENGTH binaries count)
if(failures GREATER 0)
  message(FATAL_ERROR "${failures} findings in ${count} binaries")
endif()
message("${count} binaries checked, no findings")
