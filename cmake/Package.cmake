# Debian packages of what is installed: the library, what hosts are built with, and the command.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sftpclient)
set(CPACK_PACKAGE_VENDOR "The authors of libSFtpClient")
# Each package says in its description's first line what it is.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "The authors of libSFtpClient <libsftpclient@debian.example.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/StripArchive.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime session development command)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The library's own package is not installed while the packages are made: the command names it below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/session)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# What is packaged against this release goes on with every later one of the same SOVERSION.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library libsftpclient${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# Without the machine's trust store operations over TLS fail, unless a host brings one.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "file transfers over FTP with TLS for host applications
A shared library that moves files between a host application and a remote
file server. The host supplies logging, configuration and security.")

set(CPACK_DEBIAN_SESSION_PACKAGE_NAME libsftpsession${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_SESSION_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_SESSION_PACKAGE_DEPENDS "${library} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_SESSION_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_SESSION_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_SESSION_DESCRIPTION "file transfers over FTP with TLS - sessions
A shared library beside libSFtpClient with the same operations, and more:
secure by default, over connections that are kept between calls.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsftpclient-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library} (= ${PROJECT_VERSION}), libsftpsession${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libboost-dev, libcurl4-openssl-dev, libssl-dev, libspdlog-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "file transfers over FTP with TLS - development files
Headers, CMake and pkg-config files of libSFtpClient, guides and examples, and
a static library with host services for applications that have none.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME sftpclient)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION net)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS
    "${library} (>= ${PROJECT_VERSION}), libsftpsession${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "file transfers over FTP with TLS - command
Runs each operation of libSFtpClient from the command line, and finds out why
a server refuses them.")

# Everything in the packages is as old as the release, unless the packager says otherwise, so that each build makes the
# same.
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/changelog released REGEX "^ -- .*>  ")
list(GET released 0 released)
string(REGEX REPLACE "^.*>  " "" released ${released})
execute_process(COMMAND date --date ${released} +%s
                OUTPUT_VARIABLE released OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    set(ENV{SOURCE_DATE_EPOCH} ${released})
endif()
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/PackageTimes.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "set(ENV{SOURCE_DATE_EPOCH} $ENV{SOURCE_DATE_EPOCH})\n")

set(documents ${PROJECT_SOURCE_DIR}/packaging/copyright ${PROJECT_BINARY_DIR}/changelog.gz)
if(SFTPCLIENT_BUILD_HOST)
    include(Sbom)
    list(APPEND documents ${PROJECT_BINARY_DIR}/sftpclient.spdx.json)
endif()
foreach(component RUNTIME SESSION DEVELOPMENT COMMAND)
    set(package ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
    string(TOLOWER ${component} destination)
    install(FILES ${documents}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${destination} EXCLUDE_FROM_ALL)
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog
                OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)

include(CPack)
