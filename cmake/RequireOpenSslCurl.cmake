# The certificate hook receives libcurl's TLS context as an OpenSSL SSL_CTX. A libcurl with another TLS back end
# accepts the hook and never calls it, so that a transfer would silently trust the wrong servers: refuse it here.
# Global, for targets that are linked from a consumer's folders name them.
find_package(CURL 7.85 REQUIRED GLOBAL)
find_package(OpenSSL 3.0 REQUIRED GLOBAL)

# The library file is read, not run: it may be another machine's. What it calls shows its TLS back ends, and the
# symbol's version OpenSSL's release.
get_target_property(libcurl CURL::libcurl LOCATION)
execute_process(COMMAND ${SFTPCLIENT_NM} --dynamic --undefined-only ${libcurl}
                OUTPUT_VARIABLE calls ERROR_VARIABLE errors RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${SFTPCLIENT_NM} cannot read libcurl: ${errors}")
endif()
string(REGEX MATCHALL "[^ \n]+" tls "${calls}")
list(FILTER tls INCLUDE REGEX "^(SSL_CTX_new|gnutls_init|mbedtls_ssl_setup|wolfSSL_new)(@.*)?$")
string(REGEX MATCH "^[0-9]+" openssl ${OPENSSL_VERSION})
if(NOT tls MATCHES "^SSL_CTX_new@OPENSSL_${openssl}\\.[^;]*$")
    list(JOIN tls ", " tls)
    if(NOT tls)
        set(tls nothing)
    endif()
    message(FATAL_ERROR "libcurl (${libcurl}) calls ${tls} for TLS, but the CA certificate hook needs a libcurl that "
                        "calls OpenSSL ${openssl} and no other TLS library; install libcurl4-openssl-dev.")
endif()
