# Reads the headers of what a build has put together.
#
#   cmake -D READELF=... -D GATEWAY=<gateway library> -D PROGRAM=<quorin-gateway>
#         -D OTHERS=<what is shipped beside them> -P check_linux_binaries.cmake
#
#  - The gateway library exports QuorinGatewayHttpMainFunc and nothing else.
#  - The gateway library and the program look for libraries beside themselves.
#  - Every binary may be loaded anywhere, binds all names at its start and makes their table
#    read-only, runs no data, and watches its stack.

cmake_minimum_required(VERSION 3.25)

set(findings 0)
macro(report text)
  message("${name} ${text}")
  math(EXPR findings "${findings} + 1")
endmacro()

macro(read what)
  execute_process(COMMAND "${READELF}" --wide ${what} "${binary}" OUTPUT_VARIABLE text
                  ERROR_VARIABLE errors COMMAND_ERROR_IS_FATAL ANY)
endmacro()

# Names that this binary offers to others: bound to a section of its own, and not local.
macro(read_exports)
  read(--dyn-syms)
  string(REGEX MATCHALL "(GLOBAL|WEAK|UNIQUE) +(DEFAULT|PROTECTED) +[0-9]+ +[^ \n]+" exports
         "${text}")
  list(TRANSFORM exports REPLACE ".* " "")
endmacro()

set(binaries "${GATEWAY}" "${PROGRAM}" ${OTHERS})
foreach(binary IN LISTS binaries)
  cmake_path(GET binary FILENAME name)

  read(--file-header)
  if(NOT text MATCHES "Type: +DYN")
    report("is bound to one address")
  endif()

  read(--program-headers)
  if(NOT text MATCHES " GNU_RELRO ")
    report("leaves its tables of names writable")
  endif()
  if(NOT text MATCHES " GNU_STACK [^\n]* RW +0x")
    report("has an executable stack")
  endif()
  if(text MATCHES " LOAD [^\n]* RWE +0x")
    report("can write to its code")
  endif()

  read(--dynamic)
  if(NOT text MATCHES "\\(FLAGS_1\\)[^\n]* NOW")
    report("binds names late")
  endif()
  if(text MATCHES "TEXTREL")
    report("has its code changed when it is loaded")
  endif()
  if(binary STREQUAL PROGRAM AND NOT text MATCHES "\\(FLAGS_1\\)[^\n]* PIE")
    report("is bound to one address")
  endif()
  string(REGEX MATCHALL "\\((RPATH|RUNPATH)\\)[^\n]*" paths "${text}")
  if(binary STREQUAL GATEWAY OR binary STREQUAL PROGRAM)
    if(NOT paths MATCHES "^\\(RUNPATH\\) +Library runpath: \\[[$]ORIGIN\\]$")
      report("looks for libraries here: \"${paths}\"")
    endif()
  elseif(paths)
    report("looks for libraries here: \"${paths}\"")
  endif()

  read(--dyn-syms)
  if(NOT text MATCHES "UND __stack_chk_fail")
    report("does not watch its stack")
  endif()
  if(binary STREQUAL GATEWAY)
    read_exports()
    if(NOT exports STREQUAL "QuorinGatewayHttpMainFunc")
      report("exports \"${exports}\"")
    endif()
  endif()
endforeach()

list(LENGTH binaries count)
if(findings GREATER 0)
  message(FATAL_ERROR "${findings} findings in ${count} binaries")
endif()
message("${count} binaries are in order")
