# AppKit and Foundation as GNUstep has them, and the desktop that its windows are on.
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)

function(gnustep_says out)
  execute_process(COMMAND "${GNUSTEP_CONFIG}" ${ARGN} OUTPUT_VARIABLE words
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(words UNIX_COMMAND "${words}")
  set(${out} ${words} PARENT_SCOPE)
endfunction()

gnustep_says(headers --variable=GNUSTEP_SYSTEM_HEADERS)
gnustep_says(flags --objc-flags)
# What the language needs; how much to warn, to optimise and to debug is ours to say.
list(FILTER flags INCLUDE REGEX "^-(D[A-Z_]*GNU|D_NATIVE|fobjc|fexceptions|fconstant)")

add_library(velnor_appkit INTERFACE)
target_include_directories(velnor_appkit SYSTEM INTERFACE "${headers}")
target_compile_options(velnor_appkit INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:${flags}>)
target_link_libraries(velnor_appkit INTERFACE gnustep-gui gnustep-base objc)

velnor_room(display SOURCES platform/linux/alert_gnustep.mm platform/linux/desktop_gnustep.mm
  platform/linux/display_x11.cc)
target_link_libraries(velnor_display PRIVATE velnor_appkit PkgConfig::X11)
