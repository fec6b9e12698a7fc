# One interface target that every target of the project links: both compilers, the same strictness.
add_library(vl_warnings INTERFACE)
target_compile_options(vl_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(vl_warnings INTERFACE -Wthread-safety)  # what platform/sync/ThreadSafety.h says
elseif(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 sees copies overlap in the library's own string concatenation (its bug 105651).
  target_compile_options(vl_warnings INTERFACE -Wno-restrict)
endif()
if(VL_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # It compares the names of a function with those of other sources too; clang and the plain build look at each alone.
  target_compile_options(vl_warnings INTERFACE -Wno-shadow)
endif()
if(VL_WERROR)
  target_compile_options(vl_warnings INTERFACE -Werror)
endif()
