# A host without CMake, which takes the ready services.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

ask_pkg_config(flags --cflags --libs sftpclient-host)
compile(${SCRATCH}/host host.cpp "${flags} -Wl,-rpath,${PREFIX}/${LIBDIR}")
must_ask_and_log(${SCRATCH}/host "${kReadyServices}")
