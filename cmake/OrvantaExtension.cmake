# Who the browser extension is: its identifier in Chromium follows from the key that signs it.
set(ORVANTA_EXTENSION_KEY ${PROJECT_SOURCE_DIR}/browser/development-key.pem CACHE FILEPATH
    "RSA key (PEM) that signs the extension for Chromium; a release has one that is not in here")
find_program(ORVANTA_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
find_program(ORVANTA_OPENSSL openssl REQUIRED)
set(ORVANTA_PACK_EXTENSION
    ${ORVANTA_PYTHON} -B ${PROJECT_SOURCE_DIR}/browser/pack.py ${ORVANTA_EXTENSION_KEY})
execute_process(COMMAND ${ORVANTA_PACK_EXTENSION} OUTPUT_VARIABLE ORVANTA_EXTENSION_ID
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ORVANTA_EXTENSION_KEY})
