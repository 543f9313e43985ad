# VELNOR_SANITIZE=address,undefined instruments everything that is built here.
set(VELNOR_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=; empty for none")

if(VELNOR_SANITIZE)
  add_compile_options(-fsanitize=${VELNOR_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined
    # Instrumented library templates look uninitialized to g++ 12, and are not.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${VELNOR_SANITIZE})
endif()
