# VL_SANITIZE names what -fsanitize gets, for everything in the build: a sanitizer that sees only half of a
# process reports nonsense.
if(VL_SANITIZE)
  add_compile_options(-fsanitize=${VL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VL_SANITIZE})
  # What they put between the library's lines makes g++ 12 lose sight of who sets a variable there.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
# clang puts the operators of this runtime into every program and ahead of those that a test brings along: those have
# no effect in this build.
if(VL_SANITIZE STREQUAL "thread" AND CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_link_options(-Wl,-z,muldefs)
endif()
