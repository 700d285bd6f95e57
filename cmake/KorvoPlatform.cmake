# SPDX-License-Identifier: Apache-2.0
# The camera's own two libraries. With KORVO_PLATFORM=development the targets korvo-core and korvo-interfaces are
# built from platform/; with KORVO_PLATFORM=external they are imported from a camera SDK, which is looked for under
# CMAKE_PREFIX_PATH, or CMAKE_SYSROOT of a tool chain file.

if(KORVO_PLATFORM STREQUAL "external")
  # Also outside of a sysroot, whatever a tool chain file says of other libraries.
  find_path(KORVO_CORE_INCLUDE_DIR korvo_core.h CMAKE_FIND_ROOT_PATH_BOTH
    DOC "Folder of the camera SDK that holds korvo_core.h")
  if(NOT KORVO_CORE_INCLUDE_DIR)
    message(FATAL_ERROR "There is no korvo_core.h in the sysroot or under CMAKE_PREFIX_PATH='${CMAKE_PREFIX_PATH}'. "
      "Give the folder of the camera SDK: -DCMAKE_PREFIX_PATH=<folder>.")
  endif()
  foreach(name core interfaces)
    string(TOUPPER ${name} upper)
    find_library(KORVO_${upper}_LIBRARY korvo-${name} CMAKE_FIND_ROOT_PATH_BOTH
      DOC "libkorvo-${name}.so of the camera SDK" REQUIRED)
    add_library(korvo-${name} SHARED IMPORTED)
    set_target_properties(korvo-${name} PROPERTIES
      IMPORTED_LOCATION ${KORVO_${upper}_LIBRARY}
      INTERFACE_INCLUDE_DIRECTORIES ${KORVO_CORE_INCLUDE_DIR})
  endforeach()
elseif(NOT KORVO_PLATFORM STREQUAL "development")
  message(FATAL_ERROR "KORVO_PLATFORM is '${KORVO_PLATFORM}'; use 'development' or 'external'.")
endif()
