# Cross build for 32-bit ARM, hard float (Debian armhf): char is unsigned, long is 32 bits.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(SENSORCTL_TRIPLET arm-linux-gnueabihf)
set(SENSORCTL_QEMU_NAME qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-common.cmake)
