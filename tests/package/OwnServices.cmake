# A host with its own services.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

ask_pkg_config(flags --cflags --libs sftpclient libcurl)
compile(${SCRATCH}/host own_services.cpp "${flags} -Wl,-rpath,${PREFIX}/${LIBDIR}")
must_ask_and_log(${SCRATCH}/host "${kOwnServices}")
