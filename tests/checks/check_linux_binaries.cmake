# Checks the ELF headers and dynamic sections of the binaries of a Linux build.
#
#   cmake -D READELF=... -D GATEWAY=<gateway library> -D PROGRAM=<quorin-gateway>
#         -D OTHERS=<the other binaries shipped> -P check_linux_binaries.cmake
#
#  - The gateway library exports QuorinGatewayHttpMainFunc and nothing else.
#  - The gateway library and the program search for libraries in their own folder only.
#  - Every binary is position-independent, binds all symbols at load time, has read-only
#    relocations, no executable data, no text relocations, and a stack protector.

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

# The symbols that the binary exports: defined in one of its sections, and not local.
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
    report("is not position-independent")
  endif()

  read(--program-headers)
  if(NOT text MATCHES " GNU_RELRO ")
    report("has writable relocations (no RELRO)")
  endif()
  if(NOT text MATCHES " GNU_STACK [^\n]* RW +0x")
    report("has an executable stack")
  endif()
  if(text MATCHES " LOAD [^\n]* RWE +0x")
    report("has a writable code segment")
  endif()

  read(--dynamic)
  if(NOT text MATCHES "\\(FLAGS_1\\)[^\n]* NOW")
    report("binds symbols lazily")
  endif()
  if(text MATCHES "TEXTREL")
    report("has text relocations")
  endif()
  if(binary STREQUAL PROGRAM AND NOT text MATCHES "\\(FLAGS_1\\)[^\n]* PIE")
    report("is not position-independent")
  endif()
  string(REGEX MATCHALL "\\((RPATH|RUNPATH)\\)[^\n]*" paths "${text}")
  if(binary STREQUAL GATEWAY OR binary STREQUAL PROGRAM)
    if(NOT paths MATCHES "^\\(RUNPATH\\) +Library runpath: \\[[$]ORIGIN\\]$")
      report("searches for libraries in \"${paths}\"")
    endif()
  elseif(paths)
    report("searches for libraries in \"${paths}\"")
  endif()

  read(--dyn-syms)
  if(NOT text MATCHES "UND __stack_chk_fail")
    report("has no stack protector")
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
message("${count} binaries checked, no findings")
