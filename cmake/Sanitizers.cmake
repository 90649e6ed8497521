# Everything in the tree is built with the same sanitizers, because libraries and programs share one runtime.
if(SFTPCLIENT_SANITIZE)
    add_compile_options(-fsanitize=${SFTPCLIENT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${SFTPCLIENT_SANITIZE})
endif()
