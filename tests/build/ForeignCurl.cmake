# A libcurl with another TLS library would never call the certificate hook: configuring with one must stop.
include(${CMAKE_CURRENT_LIST_DIR}/Configure.cmake)

file(GLOB gnutls /usr/lib/libcurl-gnutls.so.4 /usr/lib/*/libcurl-gnutls.so.4)
if(NOT gnutls)
    message(FATAL_ERROR "There is no libcurl-gnutls.so.4 below /usr/lib to be refused; install libcurl3-gnutls.")
endif()
list(GET gnutls 0 gnutls)
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})

# Arguments after the functions are the compiler's.
function(make_library file functions)
    string(REGEX REPLACE "([^;]+);?" "extern \"C\" void \\1(); void call_\\1() { \\1(); }\n" content "${functions}")
    file(WRITE ${file}.cpp "${content}")
    execute_process(COMMAND ${COMPILER} -shared -fPIC -o ${file} ${file}.cpp ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(expect_accepted library)
    configure_library(${SOURCE_DIR} ${SCRATCH}/build -DCURL_NO_CURL_CMAKE=ON -DCURL_LIBRARY=${library})
    if(failed)
        message(FATAL_ERROR "The project was not configured with ${library}: ${output}")
    endif()
endfunction()

function(expect_refused library calls)
    configure_library(${SOURCE_DIR} ${SCRATCH}/build -DCURL_NO_CURL_CMAKE=ON -DCURL_LIBRARY=${library})
    if(NOT failed)
        message(FATAL_ERROR "The project was configured with ${library}: ${output}")
    endif()
    expect_in_output("libcurl (${library}) calls ${calls} for TLS, but the CA certificate hook needs a libcurl that calls")
    expect_in_output("OpenSSL 3 and no other TLS library; install libcurl4-openssl-dev.")
endfunction()

expect_refused(${gnutls} "gnutls_init@GNUTLS_3_4")
make_library(${SCRATCH}/libboth.so "SSL_CTX_new;gnutls_init" -lssl)
expect_refused(${SCRATCH}/libboth.so "SSL_CTX_new@OPENSSL_3.0.0, gnutls_init")
# As releases of libcurl differ in what else they call of it.
make_library(${SCRATCH}/libex.so "SSL_CTX_new;SSL_CTX_new_ex" -lssl)
expect_accepted(${SCRATCH}/libex.so)
# As OpenSSL's descendants call it.
make_library(${SCRATCH}/libother.so "SSL_CTX_new")
expect_refused(${SCRATCH}/libother.so "SSL_CTX_new")
make_library(${SCRATCH}/libnone.so "recv")
expect_refused(${SCRATCH}/libnone.so "nothing")

# The same folder with the right one: nothing cached about the others may remain.
configure_library(${SOURCE_DIR} ${SCRATCH}/build -UCURL_NO_CURL_CMAKE -UCURL_LIBRARY)
if(failed)
    message(FATAL_ERROR "The project was not configured with libcurl4-openssl-dev's libcurl: ${output}")
endif()
