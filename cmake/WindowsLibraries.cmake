# The dependencies of the cross-build for Windows, under the target names of the native packages.
set(OPENSSL_ROOT_DIR ${VARKEL_WINDOWS_LIBRARIES})
set(OPENSSL_USE_STATIC_LIBS TRUE)
find_package(OpenSSL 3 REQUIRED)
# The dependencies of the static libraries.
set_property(TARGET OpenSSL::Crypto APPEND PROPERTY INTERFACE_LINK_LIBRARIES ws2_32 crypt32)

function(varkel_header_library name)
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${name} SYSTEM INTERFACE ${VARKEL_WINDOWS_LIBRARIES}/include)
  target_compile_definitions(${name} INTERFACE ${ARGN})
endfunction()
varkel_header_library(spdlog::spdlog SPDLOG_HEADER_ONLY SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
varkel_header_library(CLI11::CLI11)

if(VARKEL_TESTS)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
  foreach(library gtest gtest_main gmock)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
endif()
