# cmake -P script: install, configure the consumer against the prefix, build it, run it.
file(REMOVE_RECURSE ${SCRATCH_DIR})
set(prefix ${SCRATCH_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}\n${err}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${KORVEX_BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${SCRATCH_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}")
run(${CMAKE_COMMAND} --build ${SCRATCH_DIR}/build)
separate_arguments(args UNIX_COMMAND "${CONSUMER_ARGS}")
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib:${prefix}/lib64 ${SCRATCH_DIR}/build/${CONSUMER_EXE} ${args})
if(NOT last_output MATCHES "${EXPECTED}")
    message(FATAL_ERROR "Unexpected output of ${CONSUMER_EXE}: ${last_output}")
endif()
