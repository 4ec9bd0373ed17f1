# One function per kind of target, so that each target's CMake file only lists sources and dependencies.

# Warnings are errors with known compilers.
if(MSVC)
  set(VARKEL_WARNINGS /W4)
  # Standard behaviour of the language, UTF-8 in sources and literals.
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:/permissive-;/utf-8;/Zc:__cplusplus;/Zc:preprocessor>")
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
else()
  set(VARKEL_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_HOST_UNIX)
    list(APPEND VARKEL_WARNINGS -Werror)
  endif()
endif()
if(WIN32)
  # The Windows 10 API, without rarely used parts and the macros min and max.
  add_compile_definitions(_WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
if(MINGW)
  # For reproducible builds.
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# GCC 12 reports "literal" + std::string as overlapping copies when it optimises (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  list(APPEND VARKEL_WARNINGS -Wno-restrict)
endif()

if(VARKEL_SANITIZE)
  add_compile_options(-fsanitize=${VARKEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VARKEL_SANITIZE})
endif()

# Headers are included by their path from the project's root, so that an include names its layer.
function(varkel_settings target)
  target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR})
  varkel_warnings(${target})
endfunction()

function(varkel_warnings target)
  target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${VARKEL_WARNINGS}>")
endfunction()

# varkel_library(NAME SOURCES ... [DEPENDS public...] [PRIVATE_DEPENDS ...])
function(varkel_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
  varkel_settings(${name})
endfunction()

# varkel_layer(NAME (FOLDER folder | HEADERS headers...) SOURCES ... [DEPENDS public...] [PRIVATE_DEPENDS
# ...]) A library whose headers can be included, by their path from the project's root, only by targets that
# depend on it: it exports a folder of links to them instead of the root. An include against the direction of
# the layers fails to compile. Where links can't be created, it exports the root.
function(varkel_layer name)
  cmake_parse_arguments(ARG "" "FOLDER" "HEADERS;SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  foreach(path ${ARG_FOLDER} ${ARG_HEADERS})
    get_filename_component(parent ${root}/${path} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${path} ${root}/${path} RESULT failure SYMBOLIC)
    if(failure)
      set(root ${CMAKE_SOURCE_DIR})
    endif()
  endforeach()
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
  target_include_directories(${name} PUBLIC ${root})
  varkel_warnings(${name})
endfunction()

# varkel_program(NAME SOURCES ... DEPENDS ...)
function(varkel_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS})
  varkel_settings(${name})
endfunction()

# varkel_register_test(NAME [arguments of the program...]) varkel_register_test(NAME COMMAND command...): NAME
# need not be a target Tests run in the build tree's root (an install root, so ./Config/varID is there) with
# their own home folder. Windows keeps the path of the documents folder in the registry:
# tools/windows-tests.sh redirects it to VARKEL_DOCUMENTS. Only Qt for Linux has the platform "offscreen".
function(varkel_register_test name)
  cmake_parse_arguments(ARG "" "" "COMMAND" ${ARGN})
  if(NOT ARG_COMMAND)
    set(ARG_COMMAND ${name} ${ARGN})
  endif()
  add_test(NAME ${name} COMMAND ${ARG_COMMAND} WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
  set(home ${CMAKE_BINARY_DIR}/test-home/${name})
  set(platform offscreen)
  set(documents ${home}/Documents)
  if(WIN32)
    set(platform windows)
    set(documents "Z:${home}/Eigene Dateien für Jürgen")
  endif()
  file(MAKE_DIRECTORY ${home}/run)
  file(CHMOD ${home}/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set_tests_properties(${name} PROPERTIES TIMEOUT 300
    ENVIRONMENT "HOME=${home};VARKEL_DOCUMENTS=${documents};XDG_RUNTIME_DIR=${home}/run;QT_QPA_PLATFORM=${platform};QT_QUICK_BACKEND=software;LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=1;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0;TSAN_OPTIONS=ignore_noninstrumented_modules=1:halt_on_error=1;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()

# varkel_gtest(NAME [SHARDS count] SOURCES ... DEPENDS ...): a GoogleTest program. Its cases are spread over `count` tests,
# NAME.1 and so on, that run side by side.
function(varkel_gtest name)
  cmake_parse_arguments(ARG "" "SHARDS" "SOURCES;DEPENDS" ${ARGN})
  varkel_program(${name} SOURCES ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS} GTest::gtest GTest::gmock GTest::gtest_main)
  if(MINGW)
    # With more optimisation, GCC 12 gives false warnings about vectors in tables of cases.
    target_compile_options(${name} PRIVATE -Og)
  endif()
  varkel_program_resource(${name} "Tests")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(NOT ARG_SHARDS)
    varkel_register_test(${name})
    return()
  endif()
  foreach(shard RANGE 1 ${ARG_SHARDS})
    math(EXPR index "${shard} - 1")
    varkel_register_test(${name}.${shard} COMMAND ${name})
    set_property(TEST ${name}.${shard} APPEND PROPERTY ENVIRONMENT GTEST_TOTAL_SHARDS=${ARG_SHARDS} GTEST_SHARD_INDEX=${index})
  endforeach()
endfunction()

# varkel_alone_on_desktop(TEST): its windows need the focus, which no other test may take.
function(varkel_alone_on_desktop name)
  set_tests_properties(${name} PROPERTIES RESOURCE_LOCK desktop)
endfunction()

# varkel_qtest(NAME TESTS ... SOURCES ... DEPENDS ...): one Qt Test program, LAYER_test, and a test LAYER.TEST for each
# source TEST.cpp, which the program finds by its name.
function(varkel_qtest name)
  cmake_parse_arguments(ARG "" "" "TESTS;SOURCES;DEPENDS" ${ARGN})
  list(TRANSFORM ARG_TESTS APPEND .cpp OUTPUT_VARIABLE sources)
  if(WIN32)
    # The simulated sensor's serial lines, and UTF-8 as in the tool.
    list(APPEND sources ${CMAKE_SOURCE_DIR}/tests/support/hosted_pseudo_terminal.cpp)
  endif()
  varkel_program(${name} SOURCES ${sources} ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS} Qt5::Test)
  set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  varkel_program_resource(${name} "Tests")
  string(REPLACE "_test" "" layer ${name})
  foreach(test IN LISTS ARG_TESTS)
    varkel_register_test(${layer}.${test} COMMAND ${name} ${test})
    if(WIN32 AND "varkel_shell" IN_LIST ARG_DEPENDS)
      varkel_alone_on_desktop(${layer}.${test})
    endif()
  endforeach()
endfunction()
