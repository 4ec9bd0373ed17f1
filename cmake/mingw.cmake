# Cross-builds for 64-bit Windows: MinGW-w64 with POSIX threads. tools/windows-libraries.sh provides the static
# libraries, tools/windows-qt.sh Qt's DLLs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(host x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)

# Without this a std::stop_callback that is destroyed while it runs can hang forever: it waits on a
# binary_semaphore, and without futexes libstdc++ 12 implements these with an atomic wait that reads the value
# before it takes the lock (_M_do_wait in bits/atomic_wait.h), so that a release in between is missed.
set(CMAKE_CXX_FLAGS_INIT -D_GLIBCXX_USE_POSIX_SEMAPHORE=1)

# Without "..": CMake would find some headers below another spelling of the path when it runs again, and everything would
# be compiled a second time.
get_filename_component(VARKEL_WINDOWS_LIBRARIES ${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries ABSOLUTE)
get_filename_component(VARKEL_WINDOWS_QT ${CMAKE_CURRENT_LIST_DIR}/../build/windows-qt REALPATH)
set(CMAKE_FIND_ROOT_PATH /usr/${host} ${VARKEL_WINDOWS_LIBRARIES} ${VARKEL_WINDOWS_QT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(VARKEL_WINE NAMES wine64 PATHS /usr/lib/wine)
if(VARKEL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VARKEL_WINE})
endif()
