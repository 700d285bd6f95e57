# SPDX-License-Identifier: Apache-2.0
# What tool chain files that build against a folder with another machine's headers and libraries share: KORVO_SYSROOT is that
# folder, KORVO_MULTIARCH the name that Debian gives the machine's own folders in it.

# A tool chain file is read again for each of CMake's own checks of the compiler, which must know the folder too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KORVO_SYSROOT)
if(NOT IS_DIRECTORY "${KORVO_SYSROOT}")
  message(FATAL_ERROR "There is no folder KORVO_SYSROOT='${KORVO_SYSROOT}'. scripts/sysroot makes Debian's; for "
    "a camera SDK give its folder, -DKORVO_SYSROOT=<folder>.")
endif()
set(CMAKE_SYSROOT ${KORVO_SYSROOT})

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${KORVO_MULTIARCH}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
