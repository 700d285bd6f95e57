# SPDX-License-Identifier: Apache-2.0
# The camera: 32-bit ARM with hardware floating point. KORVO_SYSROOT is a folder with the camera's (or Debian's armhf)
# headers and libraries; the programs that are built run on them under qemu-arm, where that is installed.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Without a note at each argument that compilers before GCC 7 passed in another way.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# This file is read again for each of CMake's own checks of the compiler, which must know the folder too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KORVO_SYSROOT)
if(NOT IS_DIRECTORY "${KORVO_SYSROOT}")
  message(FATAL_ERROR "There is no folder KORVO_SYSROOT='${KORVO_SYSROOT}'. scripts/sysroot-armhf makes Debian's; for "
    "a camera SDK give its folder, -DKORVO_SYSROOT=<folder>.")
endif()
set(CMAKE_SYSROOT ${KORVO_SYSROOT})

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(QEMU_ARM qemu-arm)
if(QEMU_ARM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_ARM} -L ${CMAKE_SYSROOT})
endif()
