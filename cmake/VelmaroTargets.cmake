# Project-wide compile settings and the helpers that every folder uses to
# declare its library, its programs and its tests.

if(VELMARO_SANITIZE)
  add_compile_options(-fsanitize=${VELMARO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELMARO_SANITIZE})
  if(VELMARO_SANITIZE MATCHES "address")
    add_compile_definitions(VELMARO_ASAN=1)
  endif()
endif()

# Every translation unit gets libFuzzer's coverage hooks; only the fuzz
# programs link libFuzzer itself (fuzz/CMakeLists.txt).
if(VELMARO_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VELMARO_FUZZ needs clang (the fuzz preset sets it)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Warnings for our own code only (third-party headers are included as system
# headers by their imported targets).
function(velmaro_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor
    -Woverloaded-virtual -Wimplicit-fallthrough -Wformat=2)
  # Only g++ has the local-only form of -Wshadow; clang's -Wshadow also
  # reports locals that hide names of the enclosing namespaces.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wshadow=local)
  endif()
  # g++ 12 at -O2 reports -Wrestrict inside libstdc++'s own std::string
  # concatenation (GCC bug 105329), a false positive in code that is correct.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(VELMARO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# velmaro_library(NAME <target> SOURCES ... HEADERS ... [PUBLIC_LIBS ...] [PRIVATE_LIBS ...])
# A library of one layer. Headers are installed under include/ with the same
# relative path as in the source tree, so #include "quorvel/platform/x.h"
# works the same in the build tree and from an installed prefix.
function(velmaro_library)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;HEADERS;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  add_library(${ARG_NAME} ${ARG_SOURCES})
  add_library(Velmaro::${ARG_NAME} ALIAS ${ARG_NAME})
  target_sources(${ARG_NAME} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ARG_HEADERS})
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_PUBLIC_LIBS} PRIVATE ${ARG_PRIVATE_LIBS})
  set_target_properties(${ARG_NAME} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  velmaro_warnings(${ARG_NAME})
  set_property(GLOBAL APPEND PROPERTY VELMARO_EXPORTED_TARGETS ${ARG_NAME})
endfunction()

# velmaro_test(NAME <binary> SOURCES ... LIBS ... [LABELS ...])
# One GoogleTest binary; each test case becomes its own CTest test so that the
# summary names what failed.
function(velmaro_test)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} GTest::gmock GTest::gtest_main)
  velmaro_warnings(${ARG_NAME})
  gtest_discover_tests(${ARG_NAME}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 120)
endfunction()
