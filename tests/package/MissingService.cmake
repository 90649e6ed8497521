# A host that lacks a service: the loader must name it before the first call, however the host gets the library.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

set(missing _ZN12ConfigReader6getIntERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_b)

function(must_name_missing_service)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(status EQUAL 0 OR NOT output MATCHES "undefined symbol: ${missing}" OR output MATCHES "own record")
        message(FATAL_ERROR "${ARGN} ended with ${status} and said:\n${output}")
    endif()
endfunction()

ask_pkg_config(flags --cflags --libs sftpclient libcurl)
# The linker would report it too.
compile(${SCRATCH}/linked own_services.cpp
        "${flags} -DWITHOUT_CONFIG_READER -Wl,--unresolved-symbols=ignore-all -Wl,-rpath,${PREFIX}/${LIBDIR}")
must_name_missing_service(${SCRATCH}/linked)

ask_pkg_config(flags --cflags sftpclient)
set(library ${PREFIX}/${LIBDIR}/libSFtpClient.so.1)
compile(${SCRATCH}/loading loading.cpp "${flags} -DWITHOUT_CONFIG_READER -rdynamic -lcurl")
must_name_missing_service(${SCRATCH}/loading ${library})
