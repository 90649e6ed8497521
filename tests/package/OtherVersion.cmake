# A project that was written for another major version must not be given this one.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

foreach(version 0.9 2)
    file(REMOVE_RECURSE ${SCRATCH})
    file(WRITE ${SCRATCH}/CMakeLists.txt
        "cmake_minimum_required(VERSION 3.25)\nproject(consumer LANGUAGES CXX)\nfind_package(SFtpClient ${version} REQUIRED)\n")
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${SCRATCH} -B ${SCRATCH}/build -G ${GENERATOR}
                            -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${PREFIX}
        RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT failed OR NOT output MATCHES "compatible with requested version \"${version}\"")
        message(FATAL_ERROR "find_package(SFtpClient ${version}) ended with ${failed}:\n${output}")
    endif()
endforeach()
