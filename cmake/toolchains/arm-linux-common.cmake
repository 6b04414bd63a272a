# Shared part of the ARM toolchain files: Debian's cross compiler for SENSORCTL_TRIPLET,
# its sysroot (/usr/<triplet>) and the target libraries installed as multiarch packages
# into /usr/lib/<triplet> (scripts/setup --arm installs both).
set(CMAKE_SYSTEM_NAME Linux)

set(CMAKE_C_COMPILER ${SENSORCTL_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${SENSORCTL_TRIPLET}-g++)
# GCC notes on ARM that the passing of some std:: iterators changed in GCC 7.1; everything
# here is built by one compiler, so the notes are noise.
set(CMAKE_C_FLAGS_INIT "-Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

# Debian's CMake looks for packages and libraries in <prefix>/lib/<triplet> of this
# architecture only, so the host's x86_64 copies are never picked up.
set(CMAKE_LIBRARY_ARCHITECTURE ${SENSORCTL_TRIPLET})
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${SENSORCTL_TRIPLET})  # after a sysroot given with -D
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# pkg-config: only the target's .pc files.
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${SENSORCTL_TRIPLET}/pkgconfig:/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# Target programs (the tests, test discovery) run under qemu-user with the cross
# toolchain's sysroot: its loader, libc and libstdc++ come first, the multiarch
# libraries (tinyxml2) after them. Paths given to the guest are looked up under -L first.
find_program(SENSORCTL_QEMU NAMES ${SENSORCTL_QEMU_NAME} ${SENSORCTL_QEMU_NAME}-static)
if(SENSORCTL_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR
      ${SENSORCTL_QEMU} -L /usr/${SENSORCTL_TRIPLET}
      -E LD_LIBRARY_PATH=/lib:/usr/lib/${SENSORCTL_TRIPLET})
endif()
