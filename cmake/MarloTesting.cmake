# SPDX-License-Identifier: Apache-2.0
# Functions that add tests, benchmarks and fuzz targets, one line each for the folders.

# marlo_add_test(NAME SOURCES... [LABELS label...]): a GoogleTest program over the library's objects,
# internals included. Label "threads" puts it into the thread sanitizer's suite, "slow" out of the
# sanitizer suites.
function(marlo_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE marlo_objects GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300)
endfunction()

# marlo_add_bench(NAME SOURCES... [LIBRARIES ...] [DEFINITIONS ...])
function(marlo_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/bench)
  target_link_libraries(${name} PRIVATE marlo_objects marlo_bench_harness ${ARG_LIBRARIES})
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
endfunction()

# marlo_add_fuzz(NAME SOURCE): a libFuzzer program; its corpus is fuzz/corpus/NAME.
function(marlo_add_fuzz name source)
  add_executable(${name} ${source})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/fuzz)
  target_link_libraries(${name} PRIVATE marlo_objects)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
