# Installation of the product: the shared library, its headers, a CMake package
# (find_package(sensorctl) -> sensorctl::sensorctl) and a pkg-config file (sensorctl.pc).
#
#   cmake --install build/armhf --prefix /usr            (DESTDIR=<sysroot> for a sysroot)
#
# Layout under the prefix:
#   lib[/<triplet>]/libsensorctl.so*
#   include/sensorctl/<subsystem>/<Class>.h             (#include "platform/KSFile.h")
#   lib[/<triplet>]/cmake/sensorctl/sensorctl{Config,ConfigVersion,Targets*}.cmake
#   lib[/<triplet>]/pkgconfig/sensorctl.pc
include(CMakePackageConfigHelpers)

set(SENSORCTL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/sensorctl)

install(TARGETS sensorctl EXPORT sensorctlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sensorctl
  COMPONENT devel FILES_MATCHING PATTERN "*.h")

install(EXPORT sensorctlTargets NAMESPACE sensorctl:: DESTINATION ${SENSORCTL_INSTALL_CMAKEDIR}
  COMPONENT devel)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/sensorctlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/sensorctlConfig.cmake
  INSTALL_DESTINATION ${SENSORCTL_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/sensorctlConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/sensorctlConfig.cmake ${PROJECT_BINARY_DIR}/sensorctlConfigVersion.cmake
  DESTINATION ${SENSORCTL_INSTALL_CMAKEDIR} COMPONENT devel)

# The pkg-config file names the prefix given at install time (cmake --install --prefix),
# not the one the build was configured with, so it is written by the install step itself.
set(prefix "@prefix@")  # left for the install step
configure_file(${CMAKE_CURRENT_LIST_DIR}/sensorctl.pc.in ${PROJECT_BINARY_DIR}/sensorctl.pc.in @ONLY)
unset(prefix)
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${PROJECT_BINARY_DIR}/sensorctl.pc.in\" \"${PROJECT_BINARY_DIR}/pc-install/sensorctl.pc\" @ONLY)
" COMPONENT devel)
install(FILES ${PROJECT_BINARY_DIR}/pc-install/sensorctl.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)
