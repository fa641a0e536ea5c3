# SPDX-License-Identifier: Apache-2.0
# Functions that add tests, benchmarks and fuzz targets, one line each for the folders.

# The scripts that run all benchmarks or all fuzz targets find their names in these files.
set(MARLO_BENCH_LIST ${CMAKE_BINARY_DIR}/marlo_benches.txt)
set(MARLO_FUZZ_LIST ${CMAKE_BINARY_DIR}/marlo_fuzz_targets.txt)
file(WRITE ${MARLO_BENCH_LIST} "")
file(WRITE ${MARLO_FUZZ_LIST} "")

# What the thread sanitizer's run needs to build.
add_custom_target(thread_tests)

# marlo_discover_tests(NAME [label]): makes each test of a GoogleTest program one of ctest's. Label "threads"
# puts it into the thread sanitizer's suite, "slow" out of the sanitizer suites.
function(marlo_discover_tests name)
  if(ARGC GREATER 2)
    # The discovery can't carry a list as a property.
    message(FATAL_ERROR "${name}: a test program has one label at most")
  endif()
  # Texts are those of the user's language; nobody's own settings are touched.
  set(common ENVIRONMENT LC_ALL=C ENVIRONMENT_MODIFICATION MARLO_SETTINGS_DIR=set:${CMAKE_BINARY_DIR}/test_settings)
  set(properties TIMEOUT 300 ${common})
  if("slow" IN_LIST ARGN)
    # The exhaustive forms of the nightly run.
    set(properties TIMEOUT 7200 ${common})
  endif()
  if(ARGC GREATER 1)
    list(APPEND properties LABELS ${ARGN})
  endif()
  if("threads" IN_LIST ARGN)
    add_dependencies(thread_tests ${name})
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# marlo_add_test(NAME SOURCES... [LABELS label]): a GoogleTest program over the library's objects, internals
# included.
function(marlo_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE marlo_objects GTest::gmock_main)
  marlo_discover_tests(${name} ${ARG_LABELS})
endfunction()

# marlo_add_bench(NAME SOURCES... [LIBRARIES ...] [DEFINITIONS ...])
function(marlo_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/bench)
  target_link_libraries(${name} PRIVATE marlo_objects marlo_bench_harness ${ARG_LIBRARIES})
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
  file(APPEND ${MARLO_BENCH_LIST} "${name}\n")
endfunction()

# marlo_add_fuzz(NAME SOURCE): a libFuzzer program; its corpus is fuzz/corpus/NAME. In builds without
# MARLO_FUZZ the same source becomes a test that replays the corpus.
function(marlo_add_fuzz name source)
  if(MARLO_FUZZ)
    add_executable(${name} ${source})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    file(APPEND ${MARLO_FUZZ_LIST} "${name}\n")
  else()
    add_executable(${name} ${source} ${PROJECT_SOURCE_DIR}/fuzz/replay.cpp)
    add_test(NAME ${name} COMMAND ${name} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    set_tests_properties(${name} PROPERTIES LABELS fuzz TIMEOUT 300)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/fuzz)
  target_link_libraries(${name} PRIVATE marlo_objects)
endfunction()
