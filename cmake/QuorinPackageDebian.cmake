# cpack reads this file once for each kind of package: the .deb has an additional component, and its
# prefix is /usr.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  list(GET CPACK_INSTALL_CMAKE_PROJECTS 0 build_folder)
  list(GET CPACK_INSTALL_CMAKE_PROJECTS 1 project)
  list(APPEND CPACK_INSTALL_CMAKE_PROJECTS "${build_folder}" "${project}" debian /)
endif()
