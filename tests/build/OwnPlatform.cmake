# A host chooses the layout of its LogProxy and builds the library against its own headers.
include(${CMAKE_CURRENT_LIST_DIR}/Configure.cmake)

file(REMOVE_RECURSE ${SCRATCH})
file(COPY ${SOURCE_DIR}/platform/ConfigReader.h ${SOURCE_DIR}/platform/SecuritySS.h DESTINATION ${SCRATCH}/platform)
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/OwnLogProxy.h ${SCRATCH}/platform/LogProxy.h)
configure_library(${SOURCE_DIR} ${SCRATCH}
    -DSFTPCLIENT_PLATFORM_INCLUDE_DIR=${SCRATCH}/platform -DSFTPCLIENT_WARNINGS_AS_ERRORS=ON
    # Few objects of many sources: most of the time goes into headers.
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=5)
if(failed)
    message(FATAL_ERROR "The project cannot be configured with a host's own headers: ${output}")
endif()
build_target(${SCRATCH} SFtpClientObjects)
if(failed)
    message(FATAL_ERROR "The library cannot be built with a host's own headers: ${output}")
endif()

# The constructor in the host's header calls a function that the ready header does not know.
file(GLOB_RECURSE objects ${SCRATCH}/src/*.o)
set(logging 0)
foreach(object IN LISTS objects)
    execute_process(COMMAND ${NM} --demangle ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    if(symbols MATCHES "LogProxy::~LogProxy")
        math(EXPR logging "${logging} + 1")
        if(NOT symbols MATCHES "U LogProxy::beginOwnRecord" OR symbols MATCHES "U LogProxy::LogProxy")
            message(FATAL_ERROR "${object} was not built with the host's own LogProxy.h.")
        endif()
    endif()
endforeach()
if(logging EQUAL 0)
    message(FATAL_ERROR "No object below ${SCRATCH} writes a record.")
endif()
