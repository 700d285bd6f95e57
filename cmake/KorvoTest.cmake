# SPDX-License-Identifier: Apache-2.0
# korvo_add_test(<name> SOURCES ... LIBRARIES ... [TIMEOUT seconds] [SERIAL])
# A test program made with GoogleTest, run as one test of ctest. Names are <folder of tests/>.<subject>, words with hyphens
# between, as all names in ctest. Run one of its tests by name with
# build/<preset>/<path>/<name> --gtest_filter='Suite.Test'.

find_package(GTest REQUIRED)

# How a target that links GoogleTest is compiled: as everything is, and quickly.
function(korvo_test_options target)
  korvo_compile_options(${target})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Programs too, since precompiled headers are of one kind.
    target_compile_options(${target} PRIVATE -fPIC)
    target_precompile_headers(${target} REUSE_FROM test-precompiled)
  endif()
endfunction()

function(korvo_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SERIAL" "TIMEOUT" "SOURCES;LIBRARIES")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  korvo_test_options(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main Threads::Threads)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  if(arg_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
  endif()
endfunction()
