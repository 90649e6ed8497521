# A libcurl with another TLS library would never call the certificate hook: configuring with one must stop.
include(${CMAKE_CURRENT_LIST_DIR}/Configure.cmake)

file(GLOB gnutls /usr/lib/libcurl-gnutls.so.4 /usr/lib/*/libcurl-gnutls.so.4)
if(NOT gnutls)
    message(FATAL_ERROR "There is no libcurl-gnutls.so.4 below /usr/lib to be refused; install libcurl3-gnutls.")
endif()
list(GET gnutls 0 gnutls)

file(REMOVE_RECURSE ${SCRATCH})
configure_library(${SOURCE_DIR} ${SCRATCH} -DCURL_LIBRARY=${gnutls})
if(NOT failed)
    message(FATAL_ERROR "The project was configured with ${gnutls}: ${output}")
endif()
expect_in_output("libcurl (${gnutls}) uses GnuTLS/")
expect_in_output("for TLS, but the CA certificate hook needs a libcurl with OpenSSL; install libcurl4-openssl-dev.")

# The same folder with the right one: nothing cached about the other may remain.
configure_library(${SOURCE_DIR} ${SCRATCH} -UCURL_LIBRARY)
if(failed)
    message(FATAL_ERROR "The project was not configured with libcurl4-openssl-dev's libcurl: ${output}")
endif()
