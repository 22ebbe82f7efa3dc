# Copies the files that a Windows build needs at run time to the folders of its programs: Qt, its
# TLS plugins, OpenSSL and the compiler's runtime. Packages contain the same files.

set(QUORIN_RUNTIME_FILES "$<TARGET_FILE:Qt6::Core>" "$<TARGET_FILE:Qt6::Network>")

# Qt loads its TLS implementation at run time from the folder "tls" next to the program.
file(GLOB QUORIN_RUNTIME_TLS_PLUGINS
     "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_PLUGINS}/tls/*${CMAKE_SHARED_LIBRARY_SUFFIX}")

foreach(library IN ITEMS libcrypto-3-x64.dll libssl-3-x64.dll)
  find_file(QUORIN_RUNTIME_${library} ${library}
            PATHS ${CMAKE_PREFIX_PATH} PATH_SUFFIXES bin NO_CMAKE_FIND_ROOT_PATH)
  if(QUORIN_RUNTIME_${library})
    list(APPEND QUORIN_RUNTIME_FILES "${QUORIN_RUNTIME_${library}}")
  else()
    message(WARNING "${library} was not found; HTTPS needs it beside the programs")
  endif()
endforeach()

if(MINGW)
  foreach(library IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${library}"
                    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    if(NOT EXISTS "${file}")
      message(FATAL_ERROR "${library} does not come with ${CMAKE_CXX_COMPILER}")
    endif()
    # Debian's files contain debug information, which makes them several times larger.
    set(stripped "${CMAKE_BINARY_DIR}/runtime/${library}")
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/runtime")
    execute_process(COMMAND "${CMAKE_STRIP}" --strip-unneeded -o "${stripped}" "${file}"
                    COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND QUORIN_RUNTIME_FILES "${stripped}")
  endforeach()
else()
  include(InstallRequiredSystemLibraries)
endif()

# Licence texts that must be distributed with these libraries. scripts/build-windows stores them in
# the folder of each library.
set(QUORIN_LICENCES "")
foreach(prefix IN LISTS CMAKE_PREFIX_PATH)
  if(IS_DIRECTORY "${prefix}/licences")
    list(APPEND QUORIN_LICENCES "${prefix}/licences/")
  endif()
endforeach()

set(runtime_folders "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
if(BUILD_TESTING)
  list(APPEND runtime_folders "${CMAKE_BINARY_DIR}/tests")
endif()
add_custom_target(quorin_windows_runtime ALL
  COMMENT "Putting the libraries they need beside the programs")
foreach(folder IN LISTS runtime_folders)
  add_custom_command(TARGET quorin_windows_runtime POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}/tls"
    COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${QUORIN_RUNTIME_FILES} "${folder}"
    COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${QUORIN_RUNTIME_TLS_PLUGINS} "${folder}/tls"
    VERBATIM)
endforeach()
