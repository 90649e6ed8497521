# A CMake project of a host's: configured, built and run.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

set(options -DCMAKE_PREFIX_PATH=${PREFIX} -DSFTPCLIENT_SOURCE=${SOURCE_DIR})
if(SANITIZE)
    # The second for the library, where it is built along: it then leaves more undefined than the host services.
    list(APPEND options -DCMAKE_CXX_FLAGS=-fsanitize=${SANITIZE} -DSFTPCLIENT_SANITIZE=${SANITIZE})
endif()
file(REMOVE_RECURSE ${SCRATCH})
must_succeed(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumers/${CONSUMER} -B ${SCRATCH} -G ${GENERATOR}
             -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
             -DCMAKE_EXPORT_COMPILE_COMMANDS=ON ${options})
# The host's flags are the host's, for the library that it builds along, too.
file(STRINGS ${SCRATCH}/compile_commands.json forced REGEX "-fstack-protector|_FORTIFY_SOURCE|-ffile-prefix-map")
if(forced)
    list(GET forced 0 first)
    message(FATAL_ERROR "This project is given flags that it did not ask for:\n${first}")
endif()
# The command, which is built along, would find no file by a folder that is the project's own only at the top.
file(STRINGS ${SCRATCH}/compile_commands.json lost REGEX "-I${CMAKE_CURRENT_LIST_DIR}/consumers")
if(lost)
    list(GET lost 0 first)
    message(FATAL_ERROR "This source is compiled with a folder of the host's:\n${first}")
endif()
must_succeed(${CMAKE_COMMAND} --build ${SCRATCH} --parallel 2 --target host)
must_ask_and_log(${SCRATCH}/host "${kReadyServices}")
