# One interface target that every target of the project links: both compilers, the same strictness.
add_library(vl_warnings INTERFACE)
target_compile_options(vl_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(vl_warnings INTERFACE -Wthread-safety)  # what AudioCodec/shell/ThreadSafety.h says
endif()
if(VL_WERROR)
  target_compile_options(vl_warnings INTERFACE -Werror)
endif()
