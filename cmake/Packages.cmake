# Debian packages by CPack, one a component of Install.cmake. They are made by tools/dist, which sets
# this to the commit that it packs; an ordinary build has none of it.
set(VELNOR_PACKED_COMMIT "" CACHE STRING "The commit that packages are made of; empty for no packages")
if(NOT VELNOR_PACKED_COMMIT)
  return()
endif()

# The SONAME's number is part of the package's name, so that both of two majors can be installed.
set(package_of_library libvelnor-capi${PROJECT_VERSION_MAJOR})
set(package_of_development libvelnor-capi-dev)
set(package_of_vnctl vnctl)
set(package_of_maker velnor-maker)

# A tilde sorts before the end, so the real package of this version replaces a demonstration's.
set(package_version "${PROJECT_VERSION}")
set(deployment_note "For the configuration server:\n ${VELNOR_CONFIG_HOST}")
if(NOT VELNOR_PUBLIC_KEY)
  string(APPEND package_version "~demonstration")
  set(deployment_note "This is a demonstration with a key of its own: publish nothing with it.")
endif()
set(package_contact "Velnor Corvane Interface maintainers <${VELNOR_SUPPORT_ADDRESS}>")
# The time is that of the commit, by SOURCE_DATE_EPOCH.
string(TIMESTAMP package_year "%Y" UTC)
string(TIMESTAMP package_time "%a, %d %b %Y %H:%M:%S +0000" UTC)

set(debian "${PROJECT_SOURCE_DIR}/cmake/debian")
configure_file("${debian}/changelog.in" "${generated}/debian/changelog" @ONLY)
configure_file("${debian}/copyright.in" "${generated}/debian/copyright" @ONLY)

# velnor_deb(COMPONENT SECTION DESCRIPTION): the package, and what the policy wants in each.
macro(velnor_deb component section description)
  string(TOUPPER "${component}" upper)
  set(package "${package_of_${component}}")
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${package}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}\n.\n${deployment_note}\n")
  install(FILES "${generated}/debian/changelog" "${generated}/debian/copyright"
    DESTINATION "share/doc/${package}" COMPONENT ${component})
  if(EXISTS "${debian}/${package}.overrides")
    install(FILES "${debian}/${package}.overrides" RENAME "${package}"
      DESTINATION share/lintian/overrides COMPONENT ${component})
  endif()
endmacro()

velnor_deb(library libs "client API of a background download client
Applications use this library to install the Velnor Corvane client for a
user, to let it download, to watch, pause and delete downloads, and to ask
the client how it is.")
velnor_deb(development libdevel "client API of a background download client - development files
The header, the static library, the pkg-config file, the CMake package, the
manual page and examples for programs that use the client API of the Velnor
Corvane client.")
velnor_deb(vnctl net "drive a background download client from a terminal
Installs the Velnor Corvane client for a user and removes it, lets it
download, and shows what it is doing, as text or as JSON.")
velnor_deb(maker devel "publish releases of a background download client
The tools of those who publish the Velnor Corvane client: the key pair of a
deployment, releases that are signed with it and checked with the
installer's own verifier, and what the users' logs tell.")

install(FILES examples/CMakeLists.txt examples/client_status.cc examples/download.c
  examples/installer.c DESTINATION "share/doc/${package_of_development}/examples"
  COMPONENT development)

# The application here is a rehearsal of the Mac's, and in no package. All else has to be in one.
get_cmake_property(components COMPONENTS)
list(REMOVE_ITEM components ${CPACK_COMPONENTS_ALL} application)
if(components)
  message(FATAL_ERROR "Something is installed that is in no package: component ${components}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velnor-corvane)
set(CPACK_PACKAGE_VERSION "${package_version}")
set(CPACK_PACKAGE_CONTACT "${package_contact}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${VELNOR_WEB_ADDRESS}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${debian}/finish.cmake")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE velnor-corvane)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${debian}/triggers")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
# What a program with the static library links, by the packages' names.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS
  "libcurl4-openssl-dev, libproxy-dev, libsecret-1-dev, libssl-dev, zlib1g-dev")
include(CPack)
