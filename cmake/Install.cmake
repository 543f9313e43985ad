# What "make install" puts on a machine: the client API for developers, and the programs. A component
# is what becomes a package of its own (Packages.cmake).
set(capi_package "${CMAKE_INSTALL_LIBDIR}/cmake/VelnorCapi")
set(generated "${CMAKE_BINARY_DIR}/generated")

get_directory_property(maker_tools DIRECTORY deploy BUILDSYSTEM_TARGETS)
list(FILTER maker_tools INCLUDE REGEX "^vn-")
install(TARGETS vnctl COMPONENT vnctl)
install(TARGETS ${maker_tools} COMPONENT maker)
install(TARGETS velnor_capi_shared EXPORT VelnorCapi
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS velnor_capi_static EXPORT VelnorCapi COMPONENT development)
install(FILES include/velnor/capi.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/velnor"
  COMPONENT development)
# CMake strips programs and shared libraries when it is told to, and leaves this one out.
install(CODE "if(CMAKE_INSTALL_DO_STRIP)
  execute_process(COMMAND \"${CMAKE_STRIP}\" -S
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libvelnor-capi.a\"
    COMMAND_ERROR_IS_FATAL ANY)
endif()" COMPONENT development)

# The targets have no dependencies that would need to be found, so they are the whole package.
include(CMakePackageConfigHelpers)
install(EXPORT VelnorCapi FILE VelnorCapiConfig.cmake NAMESPACE VelnorCapi::
  DESTINATION "${capi_package}" COMPONENT development)
write_basic_package_version_file("${generated}/VelnorCapiConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${generated}/VelnorCapiConfigVersion.cmake" DESTINATION "${capi_package}"
  COMPONENT development)

function(velnor_pkg_config_file)
  set(folder "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
  file(RELATIVE_PATH up_to_prefix "${folder}" "${CMAKE_INSTALL_PREFIX}")
  string(REGEX REPLACE "/$" "" up_to_prefix "${up_to_prefix}")
  file(RELATIVE_PATH relative_libdir "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  file(RELATIVE_PATH relative_includedir "${CMAKE_INSTALL_PREFIX}"
    "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
  get_target_property(private_libs velnor_capi_static INTERFACE_LINK_LIBRARIES)
  list(JOIN private_libs " " private_libs)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/velnor-capi.pc.in" "${generated}/velnor-capi.pc" @ONLY)
  install(FILES "${generated}/velnor-capi.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)
endfunction()
velnor_pkg_config_file()

install(FILES docs/man/libvelnor-capi.3 DESTINATION "${CMAKE_INSTALL_MANDIR}/man3"
  COMPONENT development)
install(FILES docs/man/vnctl.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT vnctl)
file(GLOB maker_pages CONFIGURE_DEPENDS docs/man/vn-*.1)
install(FILES ${maker_pages} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT maker)
install(FILES tools/completion/vnctl.bash RENAME vnctl
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT vnctl)
# Debian's zsh looks into the other folder where packages put theirs.
set(zsh_functions $<IF:$<BOOL:${VELNOR_PACKED_COMMIT}>,vendor-completions,site-functions>)
install(FILES tools/completion/_vnctl DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions}"
  COMPONENT vnctl)

# All that is installed, without the rehearsal and the tests.
add_custom_target(velnor_package
  DEPENDS velnor_capi_shared velnor_capi_static vnctl ${maker_tools})
