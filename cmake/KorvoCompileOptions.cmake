# SPDX-License-Identifier: Apache-2.0
# What every target of this project is compiled with.

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

# A program finds its libraries by RUNPATH, so that LD_LIBRARY_PATH goes before it: that is how another
# libkorvo-core or libkorvo-interfaces is put in their place.
add_link_options(-Wl,--enable-new-dtags)

set(KORVO_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
if(KORVO_SANITIZE)
  add_compile_options(-fsanitize=${KORVO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KORVO_SANITIZE})
  # A C program that links our C++ libraries needs the C++ half of Clang's run-time library too.
  add_link_options($<$<LINK_LANG_AND_ID:C,Clang>:-fsanitize-link-c++-runtime>)
  link_libraries($<$<LINK_LANG_AND_ID:C,Clang>:stdc++>)
endif()

function(korvo_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wmissing-declarations -Wcast-qual -Wformat=2
    -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# A shared library that exports what its version script lists and nothing else.
function(korvo_shared_library target version_script)
  korvo_compile_options(${target})
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${version_script})
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${version_script} -Wl,-z,relro,-z,now -Wl,--as-needed)
  if(NOT KORVO_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
