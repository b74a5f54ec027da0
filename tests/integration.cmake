# Integration tests: the library against a real qvk-emulator process on
# loopback. Included from tests/CMakeLists.txt. They need the emulator, which
# comes with the tools.

if(VELMARO_BUILD_TOOLS)
  velmaro_test(NAME velmaro_integration_tests
    SOURCES ${INTEGRATION_TESTS} ${CMAKE_CURRENT_LIST_DIR}/request_recorder.cc
    LIBS velmaro velmaro_emulator_process PkgConfig::HTTPLIB
    LABELS integration)
  target_compile_definitions(velmaro_integration_tests PRIVATE
    QVK_EMULATOR_PATH="$<TARGET_FILE:qvk-emulator>")
  add_dependencies(velmaro_integration_tests qvk-emulator)
endif()
