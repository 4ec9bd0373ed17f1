# What tests get from the system that runs them when they are cross-built: the far ends of serial ports.
set(line_host ${CMAKE_BINARY_DIR}/line_host)
find_program(VARKEL_HOST_CXX NAMES c++ g++ clang++ REQUIRED)
set(line_host_sources
  ${CMAKE_SOURCE_DIR}/tests/support/line_host.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/byte_text.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/ipv4.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/poll_posix.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/pseudo_terminal_posix.cpp
  ${CMAKE_SOURCE_DIR}/libquarn/Platform/src/socket_posix.cpp)
add_custom_command(OUTPUT ${line_host}
  COMMAND ${VARKEL_HOST_CXX} -std=c++20 -O1 ${VARKEL_WARNINGS} -pthread -I ${CMAKE_SOURCE_DIR} ${line_host_sources}
          -o ${line_host}
  DEPENDS ${line_host_sources} ${CMAKE_SOURCE_DIR}/tests/support/line_blocks.h
  VERBATIM)
add_custom_target(line_host ALL DEPENDS ${line_host})
