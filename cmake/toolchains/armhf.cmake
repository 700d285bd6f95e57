# SPDX-License-Identifier: Apache-2.0
# The camera: 32-bit ARM with hardware floating point. KORVO_SYSROOT is a folder with the camera's (or Debian's armhf)
# headers and libraries; without it the compiler's own are used.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

if(DEFINED ENV{KORVO_SYSROOT})
  set(CMAKE_SYSROOT $ENV{KORVO_SYSROOT})
endif()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(QEMU_ARM qemu-arm)
if(QEMU_ARM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_ARM} -L ${CMAKE_SYSROOT})
endif()
