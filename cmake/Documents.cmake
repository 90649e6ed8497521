# The guides and the examples as hosts' authors get them: below share/doc, without the sources around them.

# Links lead to the installed headers, or to the other documents; of links to what is not installed the text remains.
function(sftpclient_make_document file)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${SFTPCLIENT_INSTALL_FULL_DOCDIR}
               OUTPUT_VARIABLE headers)
    set(made ${PROJECT_BINARY_DIR}/documents/${file})
    cmake_path(GET made PARENT_PATH folder)
    file(MAKE_DIRECTORY ${folder})
    execute_process(
        COMMAND sed --null-data --regexp-extended
            --expression "s#\\]\\((\\.\\./)?include#](\\1${headers}/sftpclient#g"
            --expression "s#\\]\\((\\.\\./)?platform#](\\1${headers}/sftpclient/platform#g"
            --expression "s#\\]\\([a-z]+/([A-Za-z]+\\.h)\\)#](../${headers}/sftpclient/host/\\1)#g"
            --expression "s#\\[([^][]*)\\]\\((\\.\\./)?session(/[^)]*)?\\)#\\1#g"
            --expression "s#\\[([^][]*)\\]\\((\\.\\./)?(bench|cli|cmake|scripts|src|tests|packaging|CONTRIBUTING)[^)]*\\)#\\1#g"
        INPUT_FILE ${PROJECT_SOURCE_DIR}/${file} OUTPUT_FILE ${made} COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${file})
endfunction()

function(sftpclient_install_documents)
    set(SFTPCLIENT_INSTALL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/libsftpclient-dev)
    set(SFTPCLIENT_INSTALL_FULL_DOCDIR ${CMAKE_INSTALL_FULL_DATADIR}/doc/libsftpclient-dev)
    file(GLOB guides RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/docs/*.md)
    foreach(file IN LISTS guides ITEMS README.md CHANGELOG.md SECURITY.md host/README.md)
        sftpclient_make_document(${file})
    endforeach()
    install(DIRECTORY ${PROJECT_BINARY_DIR}/documents/ ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${SFTPCLIENT_INSTALL_DOCDIR} COMPONENT development)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/performance
        DESTINATION ${SFTPCLIENT_INSTALL_DOCDIR}/docs COMPONENT development)
endfunction()
