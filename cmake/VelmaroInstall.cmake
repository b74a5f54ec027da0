# Installation: headers, libraries, the CMake package (find_package(Velmaro)
# then Velmaro::velmaro) and a pkg-config file.
include(CMakePackageConfigHelpers)

get_property(_velmaro_targets GLOBAL PROPERTY VELMARO_EXPORTED_TARGETS)
install(TARGETS ${_velmaro_targets}
  EXPORT VelmaroTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(VELMARO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Velmaro)
install(EXPORT VelmaroTargets NAMESPACE Velmaro:: DESTINATION ${VELMARO_CMAKE_DIR})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/VelmaroConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VelmaroConfig.cmake
  INSTALL_DESTINATION ${VELMARO_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VelmaroConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/VelmaroConfig.cmake
  ${PROJECT_BINARY_DIR}/VelmaroConfigVersion.cmake
  DESTINATION ${VELMARO_CMAKE_DIR})

# pkg-config: the libraries are static by default, so the libraries they link
# against are plain requirements (pkg-config --libs velmaro gives them all).
list(REVERSE _velmaro_targets)
set(VELMARO_PC_LIBS "")
foreach(_t IN LISTS _velmaro_targets)
  string(APPEND VELMARO_PC_LIBS " -l${_t}")
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/velmaro.pc.in ${PROJECT_BINARY_DIR}/velmaro.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmaro.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
