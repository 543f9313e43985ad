# AppKit and Foundation as macOS has them, and the desktop that its windows are on.
add_library(velnor_appkit INTERFACE)
target_link_libraries(velnor_appkit INTERFACE "-framework AppKit" "-framework CoreGraphics"
  "-framework Foundation" objc)

velnor_room(display SOURCES platform/mac/desktop_cocoa.mm)
target_link_libraries(velnor_display PRIVATE velnor_appkit)
