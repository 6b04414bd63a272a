# cmake -DBUILD_DIR=<build tree> -DWORK_DIR=<scratch dir> -DCONSUMER_DIR=<cmake/install-check>
#       -DGENERATOR=<generator> -DCXX=<c++ compiler> -P CheckInstall.cmake
# Installs the build into a scratch prefix, then builds and runs a small program against
# the installed tree twice: with find_package(sensorctl) and with pkg-config.
foreach(v BUILD_DIR WORK_DIR CONSUMER_DIR GENERATOR CXX)
  if(NOT DEFINED ${v})
    message(FATAL_ERROR "CheckInstall: ${v} not given")
  endif()
endforeach()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "CheckInstall: '${cmd}' failed (${rc}):\n${out}")
  endif()
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

file(GLOB_RECURSE libs ${prefix}/lib*/libsensorctl.so)
file(GLOB_RECURSE configs ${prefix}/lib*/sensorctlConfig.cmake)
file(GLOB_RECURSE pcs ${prefix}/lib*/sensorctl.pc)
foreach(v libs configs pcs)
  if(NOT ${v})
    message(FATAL_ERROR "CheckInstall: no ${v} installed under ${prefix}")
  endif()
endforeach()
if(NOT EXISTS ${prefix}/include/sensorctl/platform/PlatformRoot.h)
  message(FATAL_ERROR "CheckInstall: headers not installed under ${prefix}/include/sensorctl")
endif()
file(READ ${pcs} pc)
if(NOT pc MATCHES "prefix=${prefix}\n")
  message(FATAL_ERROR "CheckInstall: sensorctl.pc does not name the install prefix:\n${pc}")
endif()

# find_package(sensorctl)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer ${WORK_DIR})
message(STATUS "find_package(sensorctl): ${run_output}")

# pkg-config
find_program(PKG_CONFIG NAMES pkg-config pkgconf)
if(PKG_CONFIG)
  get_filename_component(pc_dir ${pcs} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  run(${PKG_CONFIG} --cflags --libs sensorctl)
  string(STRIP "${run_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  get_filename_component(lib_dir ${libs} DIRECTORY)
  run(${CXX} -std=c++17 ${CONSUMER_DIR}/main.cpp ${flags} -Wl,-rpath,${lib_dir}
      -o ${WORK_DIR}/consumer-pc)
  run(${WORK_DIR}/consumer-pc ${WORK_DIR})
  message(STATUS "pkg-config sensorctl: ${run_output}")
endif()
