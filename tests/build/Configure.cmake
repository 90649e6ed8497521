# Configures the library alone, as a consumer's compiler would see it. Leaves the result in `failed` and, its line
# breaks replaced by blanks, the output in `output`.
function(configure_library source build)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -S ${source} -B ${build} -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER}
                -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
                -DSFTPCLIENT_BUILD_TESTS=OFF -DSFTPCLIENT_BUILD_HOST=OFF ${ARGN}
        RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(failed "${failed}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(build_target build target)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --target ${target} --parallel 2
        RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(failed "${failed}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_in_output text)
    string(FIND "${output}" "${text}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "Expected in the output: ${text}\nThe output was: ${output}")
    endif()
endfunction()
