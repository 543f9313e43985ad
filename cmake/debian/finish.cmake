# What the packages hold, once more before they are closed: what CMake's own installation leaves undone.
# Manual pages and changelogs are compressed, without the name and time that gzip would keep.
file(GLOB_RECURSE texts "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*.[1-9]"
  "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog")
execute_process(COMMAND gzip -9n ${texts} COMMAND_ERROR_IS_FATAL ANY)
