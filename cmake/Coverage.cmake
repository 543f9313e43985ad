# VELNOR_COVERAGE counts which lines and branches the tests reach.
option(VELNOR_COVERAGE "Instrument everything for gcov" OFF)

if(VELNOR_COVERAGE)
  # The installer application and children of a fork end by _exit, which writes no counts. No target,
  # because it goes into everything, what is exported included.
  set(exit_object "${CMAKE_BINARY_DIR}/coverage_exit.o")
  execute_process(COMMAND "${CMAKE_C_COMPILER}" -fPIC -c -o "${exit_object}"
    "${CMAKE_CURRENT_LIST_DIR}/coverage_exit.c" COMMAND_ERROR_IS_FATAL ANY)
  add_compile_options(--coverage -fprofile-update=prefer-atomic -fprofile-abs-path)
  add_link_options(--coverage -Wl,--wrap=_exit "${exit_object}")
endif()
