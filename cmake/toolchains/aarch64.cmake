# Cross build for 64-bit ARM (Debian arm64): char is unsigned, long is 64 bits.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(SENSORCTL_TRIPLET aarch64-linux-gnu)
set(SENSORCTL_QEMU_NAME qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-common.cmake)
