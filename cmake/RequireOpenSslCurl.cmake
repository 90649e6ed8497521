# The certificate hook receives libcurl's TLS context as an OpenSSL SSL_CTX. A libcurl with another TLS back end
# accepts the hook and never calls it, so that a transfer would silently trust the wrong servers: refuse it here.
# Global, for targets that are linked from a consumer's folders name them.
find_package(CURL 7.85 REQUIRED GLOBAL)
find_package(OpenSSL 3.0 REQUIRED GLOBAL)

# Asked anew each time: the library behind the same path may have been exchanged.
unset(asked CACHE)
unset(compiled CACHE)
try_run(asked compiled
    ${CMAKE_CURRENT_BINARY_DIR}/curl-tls ${CMAKE_CURRENT_LIST_DIR}/CurlTlsBackend.cpp
    LINK_LIBRARIES CURL::libcurl
    RUN_OUTPUT_VARIABLE SFTPCLIENT_CURL_TLS)
if(NOT compiled OR NOT asked EQUAL 0)
    message(FATAL_ERROR "A program that asks libcurl (${CURL_LIBRARIES}) for its TLS back end cannot be built and run; "
                        "install libcurl4-openssl-dev.")
endif()

if(NOT SFTPCLIENT_CURL_TLS MATCHES "^OpenSSL/")
    message(FATAL_ERROR "libcurl (${CURL_LIBRARIES}) uses ${SFTPCLIENT_CURL_TLS} for TLS, but the CA certificate hook "
                        "needs a libcurl with OpenSSL; install libcurl4-openssl-dev.")
endif()
