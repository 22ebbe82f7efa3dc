# quorin_windows_resources(<target> DESCRIPTION <text> [ICON <file>] [MANIFEST <file>])
#
# On Windows, adds a version resource to a program or library, and optionally an icon and an
# application manifest. On other systems does nothing. The vendor is QUORIN_VENDOR, the product
# QUORIN_PRODUCT_NAME. Call it after the properties that define the file name have been set.
function(quorin_windows_resources target)
  if(NOT WIN32)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 resource "" "DESCRIPTION;ICON;MANIFEST" "")
  string(REPLACE "." "," version_numbers "${PROJECT_VERSION}.0")

  get_target_property(internal_name ${target} OUTPUT_NAME)
  if(NOT internal_name)
    set(internal_name ${target})
  endif()
  get_target_property(prefix ${target} PREFIX)
  if(prefix)
    string(PREPEND internal_name "${prefix}")
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
    set(file_name "${internal_name}${CMAKE_EXECUTABLE_SUFFIX}")
  else()
    set(file_type VFT_DLL)
    set(file_name "${internal_name}${CMAKE_SHARED_LIBRARY_SUFFIX}")
  endif()

  set(other_resources "")
  if(resource_ICON)
    string(APPEND other_resources "\n1 ICON \"${resource_ICON}\"\n")
  endif()
  if(resource_MANIFEST AND MSVC)
    target_sources(${target} PRIVATE "${resource_MANIFEST}") # the linker embeds it
  elseif(resource_MANIFEST)
    string(APPEND other_resources "\n1 24 \"${resource_MANIFEST}\"\n") # RT_MANIFEST
  endif()

  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/version.rc.in" "${source}" @ONLY)
  target_sources(${target} PRIVATE "${source}")
  set_source_files_properties("${source}" PROPERTIES
    OBJECT_DEPENDS "${resource_ICON};${resource_MANIFEST}")
endfunction()
