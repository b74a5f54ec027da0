# Integration tests: the library against a real qvk-emulator process on
# loopback. Included from tests/CMakeLists.txt when tests/*_test.cc exist.

# The emulator child-process fixture, free of GoogleTest so that other test
# programs (the qvk client's end-to-end tests) can reuse it. tools/qvk may have
# defined it already (it is configured first): the guard keeps one definition.
if(NOT TARGET velmaro_emulator_process)
  add_library(velmaro_emulator_process STATIC ${CMAKE_CURRENT_LIST_DIR}/emulator_process.cc)
  target_include_directories(velmaro_emulator_process PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(velmaro_emulator_process PUBLIC PkgConfig::HTTPLIB Threads::Threads)
  velmaro_warnings(velmaro_emulator_process)
endif()

if(VELMARO_BUILD_TESTS AND TARGET qvk-emulator)
  velmaro_test(NAME velmaro_integration_tests
    SOURCES ${INTEGRATION_TESTS} ${CMAKE_CURRENT_LIST_DIR}/request_recorder.cc
    LIBS velmaro velmaro_emulator_process PkgConfig::HTTPLIB
    LABELS integration)
  target_compile_definitions(velmaro_integration_tests PRIVATE
    QVK_EMULATOR_PATH="$<TARGET_FILE:qvk-emulator>")
  add_dependencies(velmaro_integration_tests qvk-emulator)
endif()
