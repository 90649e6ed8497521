# The installed examples, built with the command that each begins with, and all together with CMake.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

set(examples ${PREFIX}/share/doc/libsftpclient-dev/examples)
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})

function(must_tell_its_usage program)
    cmake_path(GET program FILENAME name)
    execute_process(COMMAND ${program} RESULT_VARIABLE ended ERROR_VARIABLE said)
    if(NOT ended EQUAL 2 OR NOT said MATCHES "^usage: HOST_PASSWORD=[.]+ ${name} ")
        message(FATAL_ERROR "${program} ended with ${ended} and said:\n${said}")
    endif()
endfunction()

file(REMOVE_RECURSE ${SCRATCH})
file(COPY ${examples}/ DESTINATION ${SCRATCH})
foreach(name minimal_host own_host backup_folder)
    file(STRINGS ${SCRATCH}/${name}.cpp command REGEX "^//     g\\+\\+ ")
    string(REGEX REPLACE "^//     g\\+\\+ (.*)$" "${COMPILER} \\1" command "${command}")
    if(SANITIZE)
        string(APPEND command " -fsanitize=${SANITIZE}")
    endif()
    must_succeed(${CMAKE_COMMAND} -E chdir ${SCRATCH} sh -ec "${command}")
    string(REPLACE _ - program ${name})
    must_tell_its_usage(${SCRATCH}/${program})
endforeach()

must_succeed(${CMAKE_COMMAND} -S ${SCRATCH} -B ${SCRATCH}/build -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER}
             -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_FLAGS=-O0)
must_succeed(${CMAKE_COMMAND} --build ${SCRATCH}/build --parallel 2)
must_tell_its_usage(${SCRATCH}/build/minimal-host)
must_tell_its_usage(${SCRATCH}/build/own-host)
must_tell_its_usage(${SCRATCH}/build/backup-folder)
