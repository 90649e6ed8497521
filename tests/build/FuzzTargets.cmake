# Engines for fuzzing get targets, initial inputs and libraries from one script: one target must run as it leaves them.
set(out ${SCRATCH}/out)
file(REMOVE_RECURSE ${out} ${SCRATCH}/inputs)
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=CC --unset=CXX --unset=CFLAGS --unset=CXXFLAGS --unset=LIB_FUZZING_ENGINE
            SFTPCLIENT_TARGET=fuzz_directory WORK=${SCRATCH}/work OUT=${out} ${SOURCE_DIR}/tests/fuzz/build.sh
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "The target was not built: ${output}")
endif()

file(ARCHIVE_EXTRACT INPUT ${out}/fuzz_directory_seed_corpus.zip DESTINATION ${SCRATCH}/inputs)
file(GLOB inputs RELATIVE ${SCRATCH}/inputs ${SCRATCH}/inputs/*)
file(GLOB wanted RELATIVE ${SOURCE_DIR}/tests/fuzz/corpus/directory ${SOURCE_DIR}/tests/fuzz/corpus/directory/*)
if(NOT inputs OR NOT inputs STREQUAL wanted)
    message(FATAL_ERROR "The initial inputs are ${inputs}, not ${wanted}.")
endif()
file(READ ${out}/fuzz_directory.options options)
if(NOT options MATCHES "^\\[libfuzzer\\]\nmax_len = ")
    message(FATAL_ERROR "The options are: ${options}")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_TRACE_LOADED_OBJECTS=1 ${out}/fuzz_directory
                OUTPUT_VARIABLE libraries COMMAND_ERROR_IS_FATAL ANY)
string(FIND "${libraries}" " => ${out}/lib/libcurl.so.4 " found)
if(found EQUAL -1)
    message(FATAL_ERROR "The target does not take the libraries beside it: ${libraries}")
endif()
execute_process(COMMAND ${out}/fuzz_directory -runs=1000 ${SCRATCH}/inputs
                OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE failed)
if(failed OR NOT output MATCHES "Done 1000 runs")
    message(FATAL_ERROR "The target did not run: ${output}")
endif()
