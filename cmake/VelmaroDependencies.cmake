# Every third-party dependency is found here, once, so that the library
# targets, the programs and the exported package config agree on the names.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# Boost.JSON and Boost.Describe are used header-only; the JSON implementation
# is compiled into quorvel_platform from boost/json/src.hpp.
find_package(Boost 1.81 REQUIRED)
find_package(CURL REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n data)
find_package(fmt REQUIRED)
pkg_check_modules(GUMBO REQUIRED IMPORTED_TARGET gumbo)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)

# stb_image is a single header; its implementation is compiled into
# quorvel_platform with our own limits, so libstb itself is not linked.
find_path(STB_INCLUDE_DIR stb_image.h PATH_SUFFIXES stb REQUIRED)

if(VELMARO_BUILD_TOOLS)
  find_package(CLI11 REQUIRED)
endif()
if(VELMARO_BUILD_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
# The emulator and the loopback tests serve HTTP with cpp-httplib. Checked by
# target, not by HTTPLIB_FOUND: that variable is cached across configures,
# the imported target is not.
if((VELMARO_BUILD_TOOLS OR VELMARO_BUILD_TESTS) AND NOT TARGET PkgConfig::HTTPLIB)
  pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
endif()
if(VELMARO_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()
