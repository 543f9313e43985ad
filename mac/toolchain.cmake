# CMake for a Mac from Debian, one processor at a time (the presets mac-arm64 and mac-x86_64), with
# what mac/toolchain has made. On a Mac itself none of this is needed.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR "${CMAKE_OSX_ARCHITECTURES}")
set(folder "${CMAKE_CURRENT_LIST_DIR}/../build/mac-toolchain")
cmake_path(NORMAL_PATH folder)
set(llvm /usr/lib/llvm-19)

set(CMAKE_C_COMPILER ${llvm}/bin/clang)
set(CMAKE_CXX_COMPILER ${llvm}/bin/clang++)
set(CMAKE_AR ${llvm}/bin/llvm-ar)
set(CMAKE_RANLIB ${llvm}/bin/llvm-ranlib)
set(CMAKE_STRIP ${llvm}/bin/llvm-strip)
set(CMAKE_INSTALL_NAME_TOOL ${llvm}/bin/llvm-install-name-tool)
foreach(language C CXX OBJCXX)
  set(CMAKE_${language}_COMPILER_TARGET "${CMAKE_OSX_ARCHITECTURES}-apple-macos")
endforeach()
set(CMAKE_OSX_SYSROOT "${folder}/root")

# Our own declarations of the frameworks, and Debian's C++ library as it is on a Mac.
set(sdk "-isystem ${CMAKE_CURRENT_LIST_DIR}/sdk")
set(CMAKE_CXX_FLAGS_INIT
  "${sdk} -nostdinc++ -isystem ${folder}/cxx -isystem ${llvm}/include/c++/v1")
set(CMAKE_OBJCXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
# A processor of Apple's starts nothing that is not signed; the others take no harm.
foreach(kind EXE SHARED)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT
    "-fuse-ld=lld --ld-path=${llvm}/bin/ld64.lld -Wl,-adhoc_codesign")
endforeach()
# Where a library lies here is of no use on a Mac. By itself CMake says so only where it can ask the
# system for its version.
set(CMAKE_INSTALL_NAME_DIR @rpath)
set(CMAKE_BUILD_WITH_INSTALL_NAME_DIR ON)

# Nothing of this machine is found but programs. OpenSSL is a stub unless one is built for a Mac.
set(CMAKE_FIND_ROOT_PATH "${folder}/root")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
if(OPENSSL_ROOT_DIR)
  list(APPEND CMAKE_FIND_ROOT_PATH "${OPENSSL_ROOT_DIR}")
else()
  set(OPENSSL_ROOT_DIR "${folder}/root/openssl")
endif()
