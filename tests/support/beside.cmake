# What tests get from the system that runs them: certificates made by its shell, and OpenSSL's program.

if(CMAKE_CROSSCOMPILING)
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
