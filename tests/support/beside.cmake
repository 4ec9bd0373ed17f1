# What tests get from the system that runs them: certificates made by its shell, OpenSSL's program and, when they are
# cross-built, the far ends of serial ports.

if(CMAKE_CROSSCOMPILING)
  set(line_host ${CMAKE_BINARY_DIR}/line_host)
  find_program(VARKEL_HOST_CXX NAMES c++ g++ clang++ REQUIRED)
  set(line_host_sources
    ${CMAKE_SOURCE_DIR}/tests/support/line_host.cpp
    ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/byte_text.cpp
    ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/ipv4.cpp
    ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/pseudo_terminal_posix.cpp
    ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/socket_posix.cpp)
  add_custom_command(OUTPUT ${line_host}
    COMMAND ${VARKEL_HOST_CXX} -std=c++20 -O1 ${VARKEL_WARNINGS} -pthread -I ${CMAKE_SOURCE_DIR} ${line_host_sources}
            -o ${line_host}
    DEPENDS ${line_host_sources} ${CMAKE_SOURCE_DIR}/tests/support/line_blocks.h
    VERBATIM)
  add_custom_target(line_host ALL DEPENDS ${line_host})

  set(certificates ${CMAKE_BINARY_DIR}/certificates)
  add_test(NAME certificates COMMAND ${CMAKE_SOURCE_DIR}/tests/support/certificates.sh ${certificates})
  set_tests_properties(certificates PROPERTIES FIXTURES_SETUP certificates)
endif()

# varkel_test_with_tls(TEST): names the certificates, or the script that makes them, and OpenSSL's program.
function(varkel_test_with_tls name)
  if(CMAKE_CROSSCOMPILING)
    target_compile_definitions(${name} PRIVATE
      VARKEL_CERTIFICATES="${CMAKE_BINARY_DIR}/certificates"
      VARKEL_OPENSSL_PROGRAM="${VARKEL_WINDOWS_LIBRARIES}/bin/openssl.exe")
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED certificates)
  else()
    target_compile_definitions(${name} PRIVATE
      VARKEL_CERTIFICATES_SCRIPT="${CMAKE_SOURCE_DIR}/tests/support/certificates.sh"
      VARKEL_OPENSSL_PROGRAM="openssl")
  endif()
endfunction()
