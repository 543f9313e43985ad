# The client API as other projects link it: libvelnor-capi, shared and static, put together from the
# objects of the rooms, which are compiled once for both, for tests and for tools.
set(capi_rooms velnor_result velnor_support velnor_platform velnor_net velnor_detect velnor_install
  velnor_api)
set_target_properties(${capi_rooms} PROPERTIES POSITION_INDEPENDENT_CODE ON)
foreach(room IN LISTS capi_rooms)
  # Nobody replaces our functions from outside, so calls between them may stay direct; on a Mac they
  # are, and the compiler has no such option.
  if(NOT APPLE)
    target_compile_options(${room} PRIVATE -fno-semantic-interposition)
  endif()
  list(APPEND capi_objects $<TARGET_OBJECTS:${room}>)
endforeach()

function(velnor_packaged_library target kind export_name)
  add_library(${target} ${kind} ${capi_objects})
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME velnor-capi EXPORT_NAME ${export_name})
endfunction()

velnor_packaged_library(velnor_capi_shared SHARED velnor-capi)
set_target_properties(velnor_capi_shared PROPERTIES
  VERSION "${PROJECT_VERSION}" SOVERSION "${PROJECT_VERSION_MAJOR}")
# The rooms bring the system's libraries; of themselves nothing is missing any more.
target_link_libraries(velnor_capi_shared PRIVATE velnor_capi)
if(APPLE)
  target_link_options(velnor_capi_shared PRIVATE "LINKER:-exported_symbol,_vn_*")
else()
  set(capi_map "${CMAKE_CURRENT_SOURCE_DIR}/capi.map")
  target_link_options(velnor_capi_shared PRIVATE "LINKER:--version-script=${capi_map}"
    LINKER:--no-undefined LINKER:--as-needed)
  # A look-up that hangs is left to a thread of its own, whose code must stay.
  target_link_options(velnor_capi_shared PRIVATE LINKER:-z,nodelete)
  set_target_properties(velnor_capi_shared PROPERTIES LINK_DEPENDS "${capi_map}")
endif()

velnor_packaged_library(velnor_capi_static STATIC velnor-capi-static)
# What a program needs besides. These are words for its linker, because names of CMake packages would
# make every user of the shared library install their development files. The C++ runtime is among
# them, so that the C compiler can link it.
set(needed ${platform_needs} -lcrypto -lz ${runtime_needs})
list(TRANSFORM CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES PREPEND -L OUTPUT_VARIABLE known_folders)
list(REMOVE_ITEM needed ${known_folders})
target_link_libraries(velnor_capi_static INTERFACE ${needed})
