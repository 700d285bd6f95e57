# SPDX-License-Identifier: Apache-2.0
# The camera's own two libraries. With KORVO_PLATFORM=development the targets korvo-core and korvo-interfaces are
# built from platform/; with KORVO_PLATFORM=external they are imported from a camera SDK, which is looked for under
# CMAKE_PREFIX_PATH, or CMAKE_SYSROOT of a tool chain file.

# Does the compiler, called with these further definitions, make strings of the given kind (_GLIBCXX_USE_CXX11_ABI)?
function(korvo_makes_strings result kind)
  set(source ${PROJECT_BINARY_DIR}/strings-of-kind-${kind}.cpp)
  file(WRITE ${source} "#include <string>\n#if _GLIBCXX_USE_CXX11_ABI != ${kind}\n#error another kind\n#endif\n")
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  try_compile(makes_strings ${PROJECT_BINARY_DIR} ${source} COMPILE_DEFINITIONS ${ARGN})
  set(${result} ${makes_strings} PARENT_SCOPE)
  unset(makes_strings CACHE)
endfunction()

# The base classes hold strings and lists of the C++ library, which has two kinds of them (_GLIBCXX_USE_CXX11_ABI). The linker
# takes either for the other and the program corrupts memory, so this looks for the kind among the library's symbols.
# Sets KORVO_STRING_DEFINITION to what must be defined to follow it, empty when the compiler does so by itself.
function(korvo_follow_strings_of library)
  set(KORVO_STRING_DEFINITION "" PARENT_SCOPE)
  execute_process(COMMAND ${CMAKE_NM} -D ${library}
    OUTPUT_VARIABLE symbols ERROR_VARIABLE reason RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "Cannot look at the symbols of ${library}: ${reason}")
  endif()
  if(symbols MATCHES "_ZNK?St3__1")
    message(FATAL_ERROR "${library} was made with libc++, whose strings and lists are not those of GCC's C++ library. "
      "Build with -stdlib=libstdc++ against a platform that was made so.")
  elseif(symbols MATCHES "__cxx11")
    set(kind 1)
  elseif(symbols MATCHES "_ZNK?Ss|RKSs")
    set(kind 0)
  else()
    message(WARNING "The symbols of ${library} do not tell which kind of C++ strings it was made with "
      "(_GLIBCXX_USE_CXX11_ABI); this build uses the compiler's own. If that is the wrong one, memory gets corrupted.")
    return()
  endif()
  message(STATUS "libkorvo-interfaces was made with _GLIBCXX_USE_CXX11_ABI=${kind}")

  korvo_makes_strings(by_itself ${kind})
  if(by_itself)
    return()
  endif()
  set(definition _GLIBCXX_USE_CXX11_ABI=${kind})
  korvo_makes_strings(when_told ${kind} -D${definition})
  if(NOT when_told)
    message(FATAL_ERROR "${library} was made with ${definition}, but this compiler, or CMAKE_CXX_FLAGS='${CMAKE_CXX_FLAGS}', "
      "makes strings of the other kind. Both in one process corrupt memory. Use a compiler and flags that allow ${definition}.")
  endif()
  message(STATUS "This build follows with -D${definition}")
  set(KORVO_STRING_DEFINITION ${definition} PARENT_SCOPE)
endfunction()

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
  korvo_follow_strings_of(${KORVO_INTERFACES_LIBRARY})
elseif(NOT KORVO_PLATFORM STREQUAL "development")
  message(FATAL_ERROR "KORVO_PLATFORM is '${KORVO_PLATFORM}'; use 'development' or 'external'.")
endif()
