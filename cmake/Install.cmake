# Where the parts of the package go. Everything else that installs asks for these folders.
include(GNUInstallDirs)
include(Documents)

# A folder of its own: "LogProxy.h" or "ConfigReader.h" are names that other software has too.
set(SFTPCLIENT_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/sftpclient)
set(SFTPCLIENT_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/SFtpClient)

# pkg-config's files find the rest from where they are, so that an installed tree can be moved, or installed elsewhere than
# it was configured for.
set(pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
foreach(folder LIBDIR INCLUDEDIR)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_${folder} BASE_DIRECTORY ${pc_dir} OUTPUT_VARIABLE pc_${folder})
endforeach()

function(sftpclient_install_pkgconfig name)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.in ${PROJECT_BINARY_DIR}/${name} @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

function(sftpclient_install_library)
    install(TARGETS SFtpClient EXPORT SFtpClientTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
    install(EXPORT SFtpClientTargets NAMESPACE SFtpClient:: DESTINATION ${SFTPCLIENT_INSTALL_CMAKEDIR}
        COMPONENT development)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${SFTPCLIENT_INSTALL_INCLUDEDIR}
        COMPONENT development)
    # The ones that this library was built with: a host may have brought its own.
    foreach(header LogProxy.h ConfigReader.h SecuritySS.h)
        install(FILES ${SFTPCLIENT_PLATFORM_INCLUDE_DIR}/${header}
            DESTINATION ${SFTPCLIENT_INSTALL_INCLUDEDIR}/platform COMPONENT development)
    endforeach()
    # The engine's, for hosts that register its callbacks or its certificate hook themselves.
    foreach(header transfer/CurlSFtpClient.h transfer/CurlSFtpResponse.h transfer/SftpWriteData.h tls/TlsTrust.h
            log/GetFunctionName.h)
        install(FILES ${PROJECT_SOURCE_DIR}/src/${header} DESTINATION ${SFTPCLIENT_INSTALL_INCLUDEDIR}/engine
            COMPONENT development)
    endforeach()
    sftpclient_install_pkgconfig(sftpclient.pc)
endfunction()

function(sftpclient_install_session)
    # It finds the library next to it in any prefix but the system's own, where a search path would be a fault.
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        set_target_properties(SFtpSession PROPERTIES INSTALL_RPATH "$ORIGIN")
    endif()
    install(TARGETS SFtpSession EXPORT SFtpClientTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT session NAMELINK_COMPONENT development)
    sftpclient_install_pkgconfig(sftpclient-session.pc)
endfunction()

function(sftpclient_install_host)
    install(TARGETS SFtpClientHost EXPORT SFtpClientHostTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    install(EXPORT SFtpClientHostTargets NAMESPACE SFtpClient:: DESTINATION ${SFTPCLIENT_INSTALL_CMAKEDIR}
        COMPONENT development)
    # What a host uses, and what that includes.
    foreach(header IN ITEMS
            config/HostConfiguration.h
            config/HostTlsSettings.h
            config/IniFile.h
            log/DescriptorSink.h
            log/HostLog.h
            log/HostLogSettings.h
            log/LogRecord.h
            services/CurlProcess.h
            services/RequestIdScope.h
            text/EscapeControlBytes.h)
        install(FILES ${PROJECT_SOURCE_DIR}/host/${header} DESTINATION ${SFTPCLIENT_INSTALL_INCLUDEDIR}/host
            COMPONENT development)
    endforeach()
    sftpclient_install_pkgconfig(sftpclient-host.pc)
endfunction()

function(sftpclient_install_command)
    # It finds the library next to it in any prefix but the system's own, where a search path would be a fault.
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        set_target_properties(sftpclient PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    endif()
    install(TARGETS sftpclient RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
    # Compressed, as Debian wants manual pages, and without a name and a time, so that each build makes the same.
    execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/cli/sftpclient.1
                    OUTPUT_FILE ${PROJECT_BINARY_DIR}/sftpclient.1.gz COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cli/sftpclient.1)
    install(FILES ${PROJECT_BINARY_DIR}/sftpclient.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT command)
    install(FILES ${PROJECT_SOURCE_DIR}/cli/completion/sftpclient.bash RENAME sftpclient
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT command)
endfunction()

function(sftpclient_install_package_files)
    include(CMakePackageConfigHelpers)
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/SFtpClientConfig.cmake.in
        ${PROJECT_BINARY_DIR}/SFtpClientConfig.cmake INSTALL_DESTINATION ${SFTPCLIENT_INSTALL_CMAKEDIR})
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/SFtpClientConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/SFtpClientConfig.cmake ${PROJECT_BINARY_DIR}/SFtpClientConfigVersion.cmake
        DESTINATION ${SFTPCLIENT_INSTALL_CMAKEDIR} COMPONENT development)
    # For hosts that look for leaks.
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/lsan.supp DESTINATION ${CMAKE_INSTALL_DATADIR}/sftpclient
        COMPONENT development)
    sftpclient_install_documents()
endfunction()
