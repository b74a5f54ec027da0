# EmulatorProcess: the real qvk-emulator as a child process on a free
# loopback port. Free of GoogleTest, so that any test or benchmark program can
# link it.
add_library(velmaro_emulator_process STATIC ${CMAKE_CURRENT_LIST_DIR}/emulator_process.cc)
target_include_directories(velmaro_emulator_process PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(velmaro_emulator_process PUBLIC PkgConfig::HTTPLIB Threads::Threads)
velmaro_warnings(velmaro_emulator_process)
