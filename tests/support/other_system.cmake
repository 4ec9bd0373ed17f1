# What tests of a cross-built program get from the system that runs them: certificates made by its shell, and
# the far ends of serial ports. They speak TLS with OpenSSL's program of their own system.
set(VARKEL_LINE_HOST ${CMAKE_BINARY_DIR}/line_host)
find_program(VARKEL_HOST_CXX NAMES c++ g++ clang++ REQUIRED)
set(line_host_sources
  ${CMAKE_SOURCE_DIR}/tests/support/line_host.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/pseudo_terminal_posix.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/socket_posix.cpp)
add_custom_command(OUTPUT ${VARKEL_LINE_HOST}
  COMMAND ${VARKEL_HOST_CXX} -std=c++20 -O1 ${VARKEL_WARNINGS} -pthread -I ${CMAKE_SOURCE_DIR} ${line_host_sources}
          -o ${VARKEL_LINE_HOST}
  DEPENDS ${line_host_sources} ${CMAKE_SOURCE_DIR}/tests/support/line_blocks.h
  VERBATIM)
add_custom_target(line_host ALL DEPENDS ${VARKEL_LINE_HOST})

function(varkel_test_beside_this_system name)
  set(certificates ${CMAKE_BINARY_DIR}/certificates)
  target_compile_definitions(${name} PRIVATE
    QUARN_CERTIFICATES="${certificates}"
    QUARN_OPENSSL_PROGRAM="${VARKEL_WINDOWS_LIBRARIES}/bin/openssl.exe")
  add_test(NAME ${name}_certificates COMMAND ${CMAKE_SOURCE_DIR}/tests/support/certificates.sh ${certificates})
  set_tests_properties(${name}_certificates PROPERTIES FIXTURES_SETUP certificates)
  set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED certificates)
endfunction()
