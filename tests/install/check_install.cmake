# Run by CTest: install into a fresh prefix, then configure, build and run a
# consumer project with find_package(Velmaro), and compile it again with the
# flags pkg-config gives.
file(REMOVE_RECURSE ${WORK_DIR})
set(PREFIX ${WORK_DIR}/prefix)

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
  endif()
  set(STEP_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

run_step("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})

run_step("configure consumer" ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer
  -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run_step("build consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run_step("run consumer" ${WORK_DIR}/consumer/consumer)
if(NOT STEP_OUTPUT MATCHES "velmaro ")
  message(FATAL_ERROR "consumer printed an unexpected line: ${STEP_OUTPUT}")
endif()

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/lib/pkgconfig)
run_step("pkg-config" ${PKG_CONFIG} --cflags --libs velmaro)
string(STRIP "${STEP_OUTPUT}" PC_FLAGS)
separate_arguments(PC_FLAGS UNIX_COMMAND "${PC_FLAGS}")
run_step("compile with pkg-config" ${CXX_COMPILER} -std=c++20 ${CONSUMER_DIR}/main.cc
  -o ${WORK_DIR}/consumer-pc ${PC_FLAGS})
run_step("run pkg-config consumer" ${WORK_DIR}/consumer-pc)
message(STATUS "installed package works with find_package and pkg-config")
