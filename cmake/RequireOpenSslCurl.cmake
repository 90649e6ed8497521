# The certificate hook receives libcurl's TLS context as an OpenSSL SSL_CTX. A libcurl with another TLS back end
# accepts the hook and never calls it, so that a transfer would silently trust the wrong servers: refuse it here.
find_package(CURL 7.85 REQUIRED)
find_package(OpenSSL 3.0 REQUIRED)

if(NOT DEFINED SFTPCLIENT_CURL_TLS OR NOT SFTPCLIENT_CURL_TLS_OF STREQUAL "${CURL_LIBRARIES}")
    try_run(ran compiled
        ${CMAKE_CURRENT_BINARY_DIR}/curl-tls ${CMAKE_CURRENT_LIST_DIR}/CurlTlsBackend.cpp
        LINK_LIBRARIES CURL::libcurl
        RUN_OUTPUT_VARIABLE backend)
    if(NOT compiled OR NOT ran EQUAL 0)
        message(FATAL_ERROR "A program that asks libcurl (${CURL_LIBRARIES}) for its TLS back end cannot be built and "
                            "run; install libcurl4-openssl-dev.")
    endif()
    set(SFTPCLIENT_CURL_TLS "${backend}" CACHE INTERNAL "TLS back end of libcurl")
    set(SFTPCLIENT_CURL_TLS_OF "${CURL_LIBRARIES}" CACHE INTERNAL "The libcurl that was asked")
endif()

if(NOT SFTPCLIENT_CURL_TLS MATCHES "^OpenSSL/")
    message(FATAL_ERROR "libcurl (${CURL_LIBRARIES}) uses ${SFTPCLIENT_CURL_TLS} for TLS, but the CA certificate hook "
                        "needs a libcurl with OpenSSL; install libcurl4-openssl-dev.")
endif()
