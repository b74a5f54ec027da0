# quorvel_core: the maker's core library (the files directly in quorvel/).
file(GLOB CORE_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cc)
file(GLOB CORE_TESTS CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cc)
file(GLOB CORE_HEADERS CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
list(FILTER CORE_SOURCES EXCLUDE REGEX "_test\\.cc$")
# Test helpers (*_test.h) are not part of the installed interface.
list(FILTER CORE_HEADERS EXCLUDE REGEX "_test\\.h$")

velmaro_library(NAME quorvel_core
  SOURCES ${CORE_SOURCES}
  HEADERS ${CORE_HEADERS}
  PUBLIC_LIBS quorvel_platform
  PRIVATE_LIBS CURL::libcurl fmt::fmt)

if(VELMARO_BUILD_TESTS)
  # The tests talk to a cpp-httplib server on loopback (found in
  # cmake/VelmaroDependencies.cmake).
  velmaro_test(NAME quorvel_core_tests
    SOURCES ${CORE_TESTS}
    LIBS quorvel_core PkgConfig::HTTPLIB fmt::fmt
    LABELS core)
endif()
