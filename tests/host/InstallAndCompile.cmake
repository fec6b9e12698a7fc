function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX} ${SCRATCH})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX})
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${SCRATCH} -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER}
  -DCMAKE_PREFIX_PATH=${PREFIX})
run(${CMAKE_COMMAND} --build ${SCRATCH})
