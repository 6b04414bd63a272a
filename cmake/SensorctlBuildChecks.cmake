# Checks on the build products themselves, run by ctest with the unit tests.

# Size budget of the product on the camera: the stripped shared library of the 32-bit ARM
# (armhf) build, 512 KiB. Other targets print their size: 64-bit code is much larger (about
# twice the Thumb-2 code of armhf) and is not what goes into the camera's flash, so a budget
# there would fail long before the camera's does. Set SENSORCTL_SIZE_BUDGET to enforce one.
# Unoptimised and sanitizer builds only print their size, since -O0 or instrumented code
# says nothing about the product (the ARM presets are MinSizeRel).
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(_sensorctl_default_budget 524288)
else()
  set(_sensorctl_default_budget 0)
endif()
set(SENSORCTL_SIZE_BUDGET ${_sensorctl_default_budget} CACHE STRING
  "Largest allowed size in bytes of the stripped libsensorctl.so (0: report only)")
set(_sensorctl_budget ${SENSORCTL_SIZE_BUDGET})
string(TOUPPER "${CMAKE_BUILD_TYPE}" _sensorctl_build_type)
if(NOT _sensorctl_build_type MATCHES "^(RELEASE|MINSIZEREL|RELWITHDEBINFO)$"
   OR CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  set(_sensorctl_budget 0)
endif()
if(NOT CMAKE_STRIP)
  message(FATAL_ERROR "No strip tool found for the size check")
endif()
add_test(NAME sensorctl_size_budget
  COMMAND ${CMAKE_COMMAND}
    -DLIB=$<TARGET_FILE:sensorctl>
    -DSTRIP=${CMAKE_STRIP}
    -DBUDGET=${_sensorctl_budget}
    -DARCH=${CMAKE_SYSTEM_PROCESSOR}
    -DOUT=${PROJECT_BINARY_DIR}/size-check/libsensorctl.stripped.so
    -P ${CMAKE_CURRENT_LIST_DIR}/CheckStrippedSize.cmake)

# The installed tree works for a consumer, through find_package(sensorctl) and through
# pkg-config. Needs to run what it builds, so host builds only; sanitizer builds are left
# out since the consumer would need the sanitizer runtime.
if(NOT CMAKE_CROSSCOMPILING AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  add_test(NAME sensorctl_install_package
    COMMAND ${CMAKE_COMMAND}
      -DBUILD_DIR=${PROJECT_BINARY_DIR}
      -DWORK_DIR=${PROJECT_BINARY_DIR}/install-check
      -DCONSUMER_DIR=${CMAKE_CURRENT_LIST_DIR}/install-check
      -DGENERATOR=${CMAKE_GENERATOR}
      -DCXX=${CMAKE_CXX_COMPILER}
      -P ${CMAKE_CURRENT_LIST_DIR}/CheckInstall.cmake)
  set_tests_properties(sensorctl_install_package PROPERTIES TIMEOUT 300)
endif()
