# The ISP driver library of the fisheye board (ksia_preinit, ksia_ioctrl).
#
# On the camera the product links the board's own library, named with
#   -DSENSORCTL_KSIA_LIBRARY=/path/to/libksia.so
# Without it the simulated library of sim/ is linked into the product, so that
# host builds give a self-contained libsensorctl.so. The tests always run
# against the simulation.
set(SENSORCTL_KSIA_LIBRARY "" CACHE FILEPATH
  "The board's ISP driver library (libksia); empty links the simulated one")

if(SENSORCTL_KSIA_LIBRARY)
  if(NOT EXISTS "${SENSORCTL_KSIA_LIBRARY}")
    message(FATAL_ERROR "SENSORCTL_KSIA_LIBRARY: ${SENSORCTL_KSIA_LIBRARY} does not exist")
  endif()
  message(STATUS "ISP driver library: ${SENSORCTL_KSIA_LIBRARY}")
  target_link_libraries(sensorctl PRIVATE "${SENSORCTL_KSIA_LIBRARY}")
elseif(TARGET sensorctl_sim)
  message(STATUS "ISP driver library: simulated (sensorctl_sim)")
  target_link_libraries(sensorctl PRIVATE sensorctl_sim)
else()
  message(WARNING "No ISP driver library: libsensorctl.so leaves ksia_* unresolved")
endif()
