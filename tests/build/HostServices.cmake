# The build must refuse a library that leaves more, or less, undefined than the host services. The project's own build
# files are given other sources, which only use the host services, in place of the library's.
include(${CMAKE_CURRENT_LIST_DIR}/Configure.cmake)

set(project ${SCRATCH}/project)
file(REMOVE_RECURSE ${SCRATCH})
file(COPY ${SOURCE_DIR}/CMakeLists.txt ${SOURCE_DIR}/cmake ${SOURCE_DIR}/platform ${SOURCE_DIR}/include
     DESTINATION ${project})
file(COPY ${SOURCE_DIR}/src/CMakeLists.txt ${SOURCE_DIR}/src/exports.map ${SOURCE_DIR}/src/host-services.txt
     DESTINATION ${project}/src)
file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}/src ${SOURCE_DIR}/src/*.cpp)
foreach(source IN LISTS sources)
    file(WRITE ${project}/src/${source} "")
endforeach()
# Only the library is built.
file(WRITE ${project}/session/CMakeLists.txt "")
list(GET sources 0 user)

function(build_with ending)
    file(READ ${CMAKE_CURRENT_LIST_DIR}/HostServicesUser.cpp content)
    file(WRITE ${project}/src/${user} "${content}${ending}\n")
    build_target(${SCRATCH}/build SFtpClient)
    set(failed "${failed}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_refused what)
    if(NOT failed)
        message(FATAL_ERROR "A library that ${what} was built.")
    endif()
    expect_in_output("must leave exactly the host services undefined.")
    file(GLOB left ${SCRATCH}/build/src/libSFtpClient.so*.*.*)
    if(left)
        message(FATAL_ERROR "The library that ${what} was left behind: ${left}")
    endif()
endfunction()

configure_library(${project} ${SCRATCH}/build -DSFTPCLIENT_INSTALL=OFF)
if(failed)
    message(FATAL_ERROR "The planted project cannot be configured: ${output}")
endif()

build_with("int all(void* curl, std::string& text) { return some(text) + SecuritySS::enrichSSL(curl, text); }")
if(failed)
    message(FATAL_ERROR "A library that uses exactly the host services was refused: ${output}")
endif()

build_with("int plantedService();
int all(void* curl, std::string& text) { return some(text) + SecuritySS::enrichSSL(curl, text) + plantedService(); }")
expect_refused("needs one service more")
expect_in_output("but the library leaves")
expect_in_output("plantedService()")

build_with("int all(void*, std::string& text) { return some(text); }")
expect_refused("uses one service fewer")
