# Copies the run-time dependencies of a Windows build to the folders of its programs: Qt, its TLS
# plugins, OpenSSL and, with MSVC, the compiler runtime. QuorinPackage.cmake installs the same files.

set(QUORIN_RUNTIME_FILES "$<TARGET_FILE:Qt6::Core>" "$<TARGET_FILE:Qt6::Network>")

# Qt loads its TLS plugin at run time from the subfolder "tls" of the gateway library's folder.
file(GLOB QUORIN_RUNTIME_TLS_PLUGINS
     "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_PLUGINS}/tls/*${CMAKE_SHARED_LIBRARY_SUFFIX}")

# Sets QUORIN_LIBCRYPTO and QUORIN_LIBSSL to the file names of OpenSSL's DLLs.
foreach(library IN ITEMS libcrypto libssl)
  set(pattern "bin/${library}-3-x64*.dll")
  list(TRANSFORM CMAKE_PREFIX_PATH APPEND "/${pattern}" OUTPUT_VARIABLE patterns)
  file(GLOB file ${patterns})
  list(LENGTH file count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "CMAKE_PREFIX_PATH contains ${count} files ${pattern} instead of one")
  endif()
  list(APPEND QUORIN_RUNTIME_FILES "${file}")
  string(TOUPPER "QUORIN_${library}" variable)
  get_filename_component(${variable} "${file}" NAME)
endforeach()

if(NOT MINGW) # the toolchain file links the runtime statically
  include(InstallRequiredSystemLibraries)
endif()

# The licences that must be distributed with these libraries. scripts/build-windows stores them in
# the prefix of each library.
set(QUORIN_LICENCES "")
foreach(prefix IN LISTS CMAKE_PREFIX_PATH)
  if(IS_DIRECTORY "${prefix}/licences")
    list(APPEND QUORIN_LICENCES "${prefix}/licences/")
  endif()
endforeach()

set(runtime_folders "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
if(BUILD_TESTING)
  list(APPEND runtime_folders "${CMAKE_BINARY_DIR}/tests" "${CMAKE_BINARY_DIR}/tests/bare")
endif()
add_custom_target(quorin_windows_runtime ALL
  COMMENT "Copying run-time libraries to the folders of the programs")
foreach(folder IN LISTS runtime_folders)
  add_custom_command(TARGET quorin_windows_runtime POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}/tls"
    COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${QUORIN_RUNTIME_FILES} "${folder}"
    COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${QUORIN_RUNTIME_TLS_PLUGINS} "${folder}/tls"
    VERBATIM)
endforeach()
