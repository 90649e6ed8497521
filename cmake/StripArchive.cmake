# What stripping leaves out, and Debian does not want in a package: the debug information of static libraries.
file(GLOB_RECURSE archives ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.a)
foreach(archive IN LISTS archives)
    execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${archive} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
