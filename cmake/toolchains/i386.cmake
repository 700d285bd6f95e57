# SPDX-License-Identifier: Apache-2.0
# 32-bit x86, for mistakes that only a narrow long shows and an emulator is too slow to look for: on x86-64 these programs run
# as they are, on the libraries of KORVO_SYSROOT.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

set(KORVO_MULTIARCH i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/sysroot.cmake)

# The loader of that folder; the machine itself need not have one.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_SYSROOT}/lib/ld-linux.so.2
  --library-path ${CMAKE_SYSROOT}/lib/${KORVO_MULTIARCH}:${CMAKE_SYSROOT}/usr/lib/${KORVO_MULTIARCH})
