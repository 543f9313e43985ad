# What "make install" puts on a machine: the client API for developers, and the programs.
set(capi_package "${CMAKE_INSTALL_LIBDIR}/cmake/VelnorCapi")
set(generated "${CMAKE_BINARY_DIR}/generated")

install(TARGETS vnctl vn-keygen vn-publish)
install(TARGETS velnor_capi_shared velnor_capi_static EXPORT VelnorCapi)
install(FILES include/velnor/capi.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/velnor")
# CMake strips programs and shared libraries when it is told to, and leaves this one out.
install(CODE "if(CMAKE_INSTALL_DO_STRIP)
  execute_process(COMMAND \"${CMAKE_STRIP}\" -S
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libvelnor-capi.a\"
    COMMAND_ERROR_IS_FATAL ANY)
endif()")

# The targets have no dependencies that would need to be found, so they are the whole package.
include(CMakePackageConfigHelpers)
install(EXPORT VelnorCapi FILE VelnorCapiConfig.cmake NAMESPACE VelnorCapi::
  DESTINATION "${capi_package}")
write_basic_package_version_file("${generated}/VelnorCapiConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${generated}/VelnorCapiConfigVersion.cmake" DESTINATION "${capi_package}")

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
  install(FILES "${generated}/velnor-capi.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
velnor_pkg_config_file()

install(FILES docs/man/libvelnor-capi.3 DESTINATION "${CMAKE_INSTALL_MANDIR}/man3")
install(FILES docs/man/vnctl.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES tools/completion/vnctl.bash RENAME vnctl
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES tools/completion/_vnctl DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")

# All that is installed, without the rehearsal and the tests.
add_custom_target(velnor_package
  DEPENDS velnor_capi_shared velnor_capi_static vnctl vn-keygen vn-publish)
