# What every target compiles with; CI turns VELNOR_WERROR on.
option(VELNOR_WERROR "Treat compiler warnings as errors" OFF)

add_library(velnor_warnings INTERFACE)
target_compile_options(velnor_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<BOOL:${VELNOR_WERROR}>:-Werror>)
