# VELNOR_COVERAGE counts which lines and branches of src/ the tests reach.
option(VELNOR_COVERAGE "Instrument src/ for gcov" OFF)

# For what is to be counted: each room once, and no stand-in, as what it says on its error output
# while it cannot write its counts would be taken for the system's word.
set(velnor_counted "")
if(VELNOR_COVERAGE)
  set(velnor_counted --coverage -fprofile-update=prefer-atomic -fprofile-abs-path)
  # The installer application and children of a fork end by _exit, which writes no counts. No target,
  # because it goes into everything, what is exported included.
  set(exit_object "${CMAKE_BINARY_DIR}/coverage_exit.o")
  execute_process(COMMAND "${CMAKE_C_COMPILER}" -fPIC -c -o "${exit_object}"
    "${CMAKE_CURRENT_LIST_DIR}/coverage_exit.c" COMMAND_ERROR_IS_FATAL ANY)
  add_link_options(--coverage -Wl,--wrap=_exit "${exit_object}")
endif()
