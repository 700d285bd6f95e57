# SPDX-License-Identifier: Apache-2.0
# The camera: 32-bit ARM with hardware floating point. KORVO_SYSROOT is a folder with the camera's (or Debian's armhf)
# headers and libraries; the programs that are built run on them under qemu-arm, where that is installed.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Without a note at each argument that compilers before GCC 7 passed in another way.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(KORVO_MULTIARCH arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

find_program(QEMU_ARM qemu-arm)
if(QEMU_ARM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_ARM} -L ${CMAKE_SYSROOT})
endif()
