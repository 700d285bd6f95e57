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

# Dates after 2038, large files, and files with large numbers of their own, also where a long has 32 bits.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

# A program finds its libraries by RUNPATH, so that LD_LIBRARY_PATH goes before it: that is how another
# libkorvo-core or libkorvo-interfaces is put in their place.
add_link_options(-Wl,--enable-new-dtags)
# Relative to itself, so that equal sources give equal files wherever they are built, and a folder can be moved.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
include(GNUInstallDirs)
# Of something that is installed: where it looks when installed, and further folders where it looks in the build tree.
# korvo_install_search_path() leaves the first alone. CMake's own way makes room in the build tree with empty entries, and
# with those a program loads libraries from the current folder.
function(korvo_search_path target installed)
  set_target_properties(${target} PROPERTIES
    BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${ARGN};${installed}" KORVO_INSTALLED_RPATH "${installed}")
endfunction()
add_compile_options(
  $<$<CONFIG:Release,MinSizeRel>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>
  $<$<CONFIG:Release,MinSizeRel>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)

set(KORVO_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
if(KORVO_SANITIZE)
  add_compile_options(-fsanitize=${KORVO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KORVO_SANITIZE})
  # A C program that links our C++ libraries needs the C++ half of Clang's run-time library too.
  add_link_options($<$<LINK_LANG_AND_ID:C,Clang>:-fsanitize-link-c++-runtime>)
  link_libraries($<$<LINK_LANG_AND_ID:C,Clang>:stdc++>)
endif()

option(KORVO_COVERAGE "Count which lines run, for scripts/coverage" OFF)
if(KORVO_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
  add_link_options(--coverage)
  add_compile_definitions(KORVO_COVERAGE)
  add_library(coverage-killed OBJECT tests/support/coverage/killed.c)
  link_libraries($<BUILD_INTERFACE:coverage-killed>)
endif()

option(KORVO_LTO "Optimise each shared library as a whole, for the smallest file" OFF)

option(KORVO_WARNINGS_ARE_ERRORS "Stop at a warning; the presets do, a compiler that is not ours need not" OFF)

function(korvo_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wmissing-declarations -Wcast-qual -Wformat=2
    $<$<BOOL:${KORVO_WARNINGS_ARE_ERRORS}>:-Werror>
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# What is shipped is protected, so that a mistake in memory ends a program instead of letting somebody in: a guard before
# each return address, checked calls of the C library, programs at an address that nobody knows, and tables of functions
# that cannot be written to once the program runs. tests/hardening looks for it in what was built.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
add_link_options(-Wl,-z,relro,-z,now)
function(korvo_hardened target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  if(NOT KORVO_SANITIZE)
    # It needs optimisation; some compilers have it on by themselves, with another value.
    target_compile_options(${target} PRIVATE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
      $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()
  # The standard library checks indices where a developer sees it. GCC 12 then takes texts that are put together for blocks
  # that overlap.
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:_GLIBCXX_ASSERTIONS>)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)
endfunction()

# A shared library that exports what its version script lists and nothing else. Names of packages and files that hold the
# soname's number are made of the one given here.
function(korvo_shared_library target version_script soversion)
  korvo_compile_options(${target})
  korvo_hardened(${target})
  set_target_properties(${target} PROPERTIES
    VERSION ${soversion}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH} SOVERSION ${soversion}
    LINK_DEPENDS ${version_script})
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${version_script} -Wl,--as-needed)
  if(NOT KORVO_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
  if(KORVO_LTO)
    # In one piece; as the compiler divides it by itself, less is shared.
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
    target_link_options(${target} PRIVATE -flto-partition=one)
  endif()
endfunction()
