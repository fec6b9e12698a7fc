# What ships is built as the system's own programs and libraries are: overflows on the stack and of known buffers end
# the process, calls go through tables that are filled at the start and then read-only, the program lies where it falls.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
add_compile_options(-fstack-protector-strong)
add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
if(NOT VL_SANITIZE)  # they watch the same calls themselves, and their runtime comes with the program
  # Unoptimised, the system's headers refuse it.
  add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  add_link_options(LINKER:-z,defs)
endif()
