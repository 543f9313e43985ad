# What each deployment supplies: its hosts, its addresses and its verification key, as cache
# variables that become one generated header. Without a key the build makes a pair of its own.
set(VELNOR_CONFIG_HOST "config.velnor.example:8443" CACHE STRING
  "Configuration server, HOST or HOST:PORT; client.ini is fetched from it over HTTPS")
set(VELNOR_CONTENT_HOST "content.velnor.example:8444" CACHE STRING
  "Content host, HOST or HOST:PORT; artifact URLs are rewritten to it when client.ini asks for it")
set(VELNOR_WEB_ADDRESS "https://www.velnor-technologies.example/corvane/" CACHE STRING
  "The maker's web address, written into guid.ini")
set(VELNOR_SUPPORT_ADDRESS "help@velnor-support.example" CACHE STRING
  "The maker's support e-mail address, written into guid.ini")
set(VELNOR_PUBLIC_KEY "" CACHE STRING
  "1024-bit RSA verification key: 324 hex characters, as vn-keygen prints them")
set(VELNOR_SIGNING_KEY "" CACHE FILEPATH
  "Private key for rehearsals and tests, PEM; needed only with a VELNOR_PUBLIC_KEY of your own")
set(VELNOR_DEMONSTRATION_KEY "${CMAKE_BINARY_DIR}/demo-key" CACHE PATH
  "Folder of the key pair that is made where there is no VELNOR_PUBLIC_KEY")

function(velnor_demonstration_key public_out private_out)
  find_program(OPENSSL_TOOL openssl REQUIRED)
  set(folder "${VELNOR_DEMONSTRATION_KEY}")
  if(NOT EXISTS "${folder}/public.der")
    file(MAKE_DIRECTORY "${folder}")
    # Created through the umask, so that the key is never readable by others, not even for a moment.
    execute_process(
      COMMAND sh -c "umask 077 && \"$1\" genrsa -out private.pem 1024" sh "${OPENSSL_TOOL}"
      WORKING_DIRECTORY "${folder}" OUTPUT_QUIET ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(
      COMMAND "${OPENSSL_TOOL}" rsa -in private.pem -pubout -outform DER -out public.der
      WORKING_DIRECTORY "${folder}" OUTPUT_QUIET ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(READ "${folder}/public.der" public HEX)
  set(${public_out} "${public}" PARENT_SCOPE)
  set(${private_out} "${folder}/private.pem" PARENT_SCOPE)
endfunction()

set(VELNOR_PUBLIC_KEY_HEX "${VELNOR_PUBLIC_KEY}")
if(NOT VELNOR_PUBLIC_KEY_HEX)
  velnor_demonstration_key(VELNOR_PUBLIC_KEY_HEX VELNOR_SIGNING_KEY)
  message(STATUS "Demonstration deployment: signed with a key pair made in this build folder")
endif()

string(LENGTH "${VELNOR_PUBLIC_KEY_HEX}" key_length)
if(NOT key_length EQUAL 324 OR NOT VELNOR_PUBLIC_KEY_HEX MATCHES "^[0-9a-fA-F]+$")
  message(FATAL_ERROR "VELNOR_PUBLIC_KEY must be 324 hex characters (a 1024-bit RSA key as DER "
    "SubjectPublicKeyInfo); vn-keygen prints them")
endif()

configure_file("${CMAKE_CURRENT_LIST_DIR}/velnor_deployment.h.in"
  "${CMAKE_BINARY_DIR}/generated/velnor_deployment.h" @ONLY)
add_library(velnor_deployment INTERFACE)
target_include_directories(velnor_deployment INTERFACE "${CMAKE_BINARY_DIR}/generated")
