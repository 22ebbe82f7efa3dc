# Installation rules, and the packages that are created from them: by `cpack` a .deb and a .tar.gz for
# Linux, by scripts/package-windows those for Windows. Include this file after all targets are
# defined.

set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # installs without building the tests
set(package_programs QuorinGatewayHttp lumetrix quorin-gateway)

if(WIN32)
  install(TARGETS ${package_programs} RUNTIME DESTINATION bin)
  install(FILES ${QUORIN_RUNTIME_FILES} DESTINATION bin)
  install(FILES ${QUORIN_RUNTIME_TLS_PLUGINS} DESTINATION bin/tls)
  install(PROGRAMS ${CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS} DESTINATION bin)
  install(FILES packaging/settings.xml DESTINATION settings)
  install(DIRECTORY ${QUORIN_LICENCES} DESTINATION licences)
  if(MINGW)
    # Licences of the compiler runtime, and the licence texts that the copyright files refer to.
    foreach(package IN ITEMS gcc-mingw-w64-base mingw-w64-common)
      install(FILES /usr/share/doc/${package}/copyright DESTINATION licences/${package})
    endforeach()
    install(FILES /usr/share/common-licenses/Apache-2.0 /usr/share/common-licenses/GPL-3
                  /usr/share/common-licenses/LGPL-3
      DESTINATION licences)
  endif()
  # For scripts/package-windows.
  set(binaries "")
  foreach(target IN LISTS package_programs)
    list(APPEND binaries "\"$<TARGET_FILE_NAME:${target}>\"")
  endforeach()
  list(JOIN binaries ", " binaries)
  file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/package.json" CONTENT
"{
  \"name\": \"quorin-gateway-${PROJECT_VERSION}-windows-x64\",
  \"version\": \"${PROJECT_VERSION}\",
  \"product\": \"${QUORIN_PRODUCT_NAME}\",
  \"vendor\": \"${QUORIN_VENDOR}\",
  \"binaries\": [${binaries}],
  \"objcopy\": \"${CMAKE_OBJCOPY}\",
  \"strip\": \"${CMAKE_STRIP}\"
}
")
else()
  # All in one folder: each searches its own folder for the others.
  set(package_folder lib/quorin-gateway)
  install(TARGETS ${package_programs}
    RUNTIME DESTINATION ${package_folder}
    LIBRARY DESTINATION ${package_folder})
  install(FILES packaging/settings.xml packaging/haproxy/haproxy.cfg packaging/nginx/nginx.conf
    DESTINATION share/doc/quorin-gateway/examples)
  install(FILES packaging/linux/quorin-gateway.service DESTINATION lib/systemd/system)
  file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/link" "${CMAKE_BINARY_DIR}/man")
  set(package_link "${CMAKE_BINARY_DIR}/link/quorin-gateway")
  file(CREATE_LINK "../${package_folder}/quorin-gateway" "${package_link}" SYMBOLIC)
  install(FILES "${package_link}" DESTINATION bin)
  install(FILES packaging/linux/quorin-gateway.bash-completion
    DESTINATION share/bash-completion/completions RENAME quorin-gateway)

  find_program(QUORIN_SCDOC scdoc)
  if(QUORIN_SCDOC)
    set(pages "")
    foreach(page IN ITEMS quorin-gateway.1 quorin-gateway-settings.5)
      set(source "${PROJECT_SOURCE_DIR}/packaging/linux/man/${page}.scd")
      set(compressed "${CMAKE_BINARY_DIR}/man/${page}.gz")
      add_custom_command(OUTPUT "${compressed}" DEPENDS "${source}" VERBATIM
        COMMAND sh -c "'${QUORIN_SCDOC}' <'${source}' >'man/${page}' && gzip -9nf 'man/${page}'")
      string(REGEX REPLACE ".*\\." "" section "${page}")
      install(FILES "${compressed}" DESTINATION "share/man/man${section}")
      list(APPEND pages "${compressed}")
    endforeach()
    add_custom_target(man_pages ALL DEPENDS ${pages})
    add_dependencies(product man_pages)
  else()
    message(STATUS "scdoc was not found: packages will not contain manual pages")
  endif()
  # Outside the prefix; only for the .deb.
  install(FILES packaging/settings.xml DESTINATION /etc/quorin-gateway
    COMPONENT debian EXCLUDE_FROM_ALL)
endif()

if(WIN32)
  return() # cpack does not create its packages
endif()

set(CPACK_PACKAGE_NAME quorin-gateway)
set(CPACK_PACKAGE_VENDOR "${QUORIN_VENDOR}")
set(CPACK_PACKAGE_CONTACT "${QUORIN_VENDOR} <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/packages")

set(CPACK_GENERATOR TGZ DEB)
set(CPACK_SYSTEM_NAME linux-x64)
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/QuorinPackageDebian.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS adduser)
set(package_scripts "${PROJECT_SOURCE_DIR}/packaging/linux/debian")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${package_scripts}/conffiles"
    "${package_scripts}/postinst" "${package_scripts}/prerm" "${package_scripts}/postrm")

include(CPack)
