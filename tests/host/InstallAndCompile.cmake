# Installs to a place of its own and builds hosts against it, as strangers do: those of the module and those of the C
# library with find_package, and the latter in a bare folder with pkg-config too, where they also run.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Runs a program that lists the formats in Japanese: the library finds its module, and that its own library.
function(run_list_formats program)
  run(${program})
  if(NOT output MATCHES "\n23  44.100 kHz、16 ビット、ステレオ\n")
    message(FATAL_ERROR "${program} printed:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX} ${SCRATCH} ${BARE})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX})
set(ENV{VELTO_REGISTRY} ${SCRATCH}/registry)  # nothing is registered: the module beside the library is taken
set(sanitize "")
if(SANITIZE)
  set(sanitize -fsanitize=${SANITIZE})
endif()

run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${SCRATCH} -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_C_FLAGS=${sanitize} -DCMAKE_CXX_FLAGS=${sanitize}
  -DCMAKE_PREFIX_PATH=${PREFIX})
run(${CMAKE_COMMAND} --build ${SCRATCH})
run_list_formats(${SCRATCH}/list-formats-c)
run_list_formats(${SCRATCH}/list-formats-cpp)

# The lines of the guides.
file(MAKE_DIRECTORY ${BARE})
file(COPY ${EXAMPLES}/c/list-formats.c ${EXAMPLES}/cpp/list-formats.cpp DESTINATION ${BARE})
file(GLOB_RECURSE package ${PREFIX}/*/vlwav.pc)
cmake_path(GET package PARENT_PATH package_folder)
set(ENV{PKG_CONFIG_PATH} ${package_folder})
set(rpath "-Wl,-rpath,$(pkg-config --variable=libdir vlwav)")
run(sh -c "cd ${BARE} && ${C_COMPILER} ${sanitize} -std=c11 -Wall -Wextra -Werror list-formats.c -o c $(pkg-config --cflags --libs vlwav) ${rpath}")
run(sh -c "cd ${BARE} && ${COMPILER} ${sanitize} -Wall -Wextra -Werror list-formats.cpp -o cpp $(pkg-config --cflags --libs vlwav-cpp) ${rpath}")
run_list_formats(${BARE}/c)
run_list_formats(${BARE}/cpp)
