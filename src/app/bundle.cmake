# The installer application. Installer.app has the layout of the system it is built on: a Mac's with
# Contents, or GNUstep's with the program beside its Resources.
velnor_room(app SOURCES app/failure_message.cc USES velnor_support)

foreach(language English French German Japanese Spanish)
  list(APPEND tables app/Resources/${language}.lproj/Localizable.strings)
endforeach()

add_executable(installer app/main.mm app/installer_controller.mm)
target_link_libraries(installer PRIVATE velnor_app velnor_appkit velnor_capi velnor_display
  velnor_warnings)
set_target_properties(installer PROPERTIES OUTPUT_NAME Installer
  MACOSX_BUNDLE ON MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_SOURCE_DIR}/app/Info.plist.in")

if(APPLE)
  set(icon app/Resources/Installer.icns)
  target_sources(installer PRIVATE ${icon} ${tables})
  set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  foreach(table IN LISTS tables)
    cmake_path(GET table PARENT_PATH folder)
    cmake_path(GET folder FILENAME folder)
    set_source_files_properties(${table} PROPERTIES MACOSX_PACKAGE_LOCATION Resources/${folder})
  endforeach()
else()
  set(bundle "${CMAKE_BINARY_DIR}/Installer.app")
  set_target_properties(installer PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${bundle}")
  configure_file(app/Info.plist.in "${bundle}/Resources/Info-gnustep.plist" @ONLY)
  foreach(resource IN ITEMS app/Resources/Installer.png ${tables})
    string(REPLACE app/Resources "${bundle}/Resources" copy "${resource}")
    set(command "${CMAKE_COMMAND}" -E copy "${CMAKE_CURRENT_SOURCE_DIR}/${resource}" "${copy}")
    if(resource IN_LIST tables)
      # GNUstep reads a table as Unicode only when it begins with a mark that says so.
      set(command iconv -f UTF-8 -t UTF-16 -o "${copy}" "${CMAKE_CURRENT_SOURCE_DIR}/${resource}")
    endif()
    cmake_path(GET copy PARENT_PATH folder)
    file(MAKE_DIRECTORY "${folder}")
    add_custom_command(OUTPUT "${copy}" COMMAND ${command} DEPENDS "${resource}" VERBATIM)
    list(APPEND copies "${copy}")
  endforeach()
  add_custom_target(installer_resources DEPENDS ${copies})
  add_dependencies(installer installer_resources)
endif()
