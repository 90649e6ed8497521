# A host that loads the library at run time, and one that lacks a service.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

set(library ${PREFIX}/${LIBDIR}/libSFtpClient.so.1)
ask_pkg_config(flags --cflags sftpclient)
compile(${SCRATCH}/loading loading.cpp "${flags} -rdynamic -lcurl")
must_ask_and_log("${SCRATCH}/loading;${library}" "${kOwnServices}")
