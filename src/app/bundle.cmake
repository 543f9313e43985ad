# The installer application. Installer.app has the layout of the system it is built on: a Mac's with
# Contents, or GNUstep's with the program beside its Resources.
velnor_room(app SOURCES app/failure_message.cc USES velnor_support)

add_executable(installer app/main.mm app/installer_controller.mm)
target_link_libraries(installer PRIVATE velnor_app velnor_appkit velnor_capi velnor_display
  velnor_warnings)
set_target_properties(installer PROPERTIES OUTPUT_NAME Installer
  MACOSX_BUNDLE ON MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_SOURCE_DIR}/app/Info.plist.in")

if(APPLE)
  set(resources "${CMAKE_CURRENT_BINARY_DIR}/Resources")
  set(icon app/Resources/Installer.icns)
  target_sources(installer PRIVATE ${icon})
  set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
else()
  set(bundle "${CMAKE_BINARY_DIR}/Installer.app")
  set(resources "${bundle}/Resources")
  set(icon "${resources}/Installer.png")
  set_target_properties(installer PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}")
  configure_file(app/Info.plist.in "${resources}/Info-gnustep.plist" @ONLY)
  add_custom_command(OUTPUT "${icon}" DEPENDS app/Resources/Installer.png VERBATIM
    COMMAND "${CMAKE_COMMAND}" -E copy "${CMAKE_CURRENT_SOURCE_DIR}/app/Resources/Installer.png"
      "${icon}")
  set(copies "${icon}")
endif()

# GNUstep reads a table as Unicode only when it begins with a mark that says so, and Apple
# recommends the same form.
foreach(language English French German Japanese Spanish)
  set(table "app/Resources/${language}.lproj/Localizable.strings")
  set(copy "${resources}/${language}.lproj/Localizable.strings")
  file(MAKE_DIRECTORY "${resources}/${language}.lproj")
  add_custom_command(OUTPUT "${copy}" DEPENDS "${table}" VERBATIM
    COMMAND sh -c "iconv -f UTF-8 -t UTF-16 \"$1\" >\"$2\"" sh
      "${CMAKE_CURRENT_SOURCE_DIR}/${table}" "${copy}")
  list(APPEND copies "${copy}")
  if(APPLE)
    target_sources(installer PRIVATE "${copy}")
    set_source_files_properties("${copy}" PROPERTIES
      MACOSX_PACKAGE_LOCATION "Resources/${language}.lproj")
  endif()
endforeach()
add_custom_target(installer_resources DEPENDS ${copies})
add_dependencies(installer installer_resources)

set(installed_bundles "${CMAKE_INSTALL_LIBDIR}/velnor")
if(APPLE)
  install(TARGETS installer BUNDLE DESTINATION "${installed_bundles}" COMPONENT application)
else()
  install(TARGETS installer RUNTIME DESTINATION "${installed_bundles}/Installer.app"
    COMPONENT application)
  install(DIRECTORY "${resources}" DESTINATION "${installed_bundles}/Installer.app"
    COMPONENT application)
endif()
# That one comes after this room.
cmake_language(DEFER DIRECTORY "${PROJECT_SOURCE_DIR}"
  CALL add_dependencies velnor_package installer)
