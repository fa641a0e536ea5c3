# SPDX-License-Identifier: Apache-2.0
# Compiler settings: marlo_options for everything, marlo_project_options for the project's own code.

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(MARLO_CCACHE ccache)
if(MARLO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${MARLO_CCACHE})
endif()
find_package(Threads REQUIRED)

add_library(marlo_options INTERFACE)
target_compile_features(marlo_options INTERFACE cxx_std_20)
# Every member of a kernel family gives the same bits: no fused multiply-add, no fast-math, and the
# baseline processor only; wider vectors are chosen at run time.
target_compile_options(marlo_options INTERFACE -march=x86-64 -ffp-contract=off)
target_link_libraries(marlo_options INTERFACE Threads::Threads)
find_program(MARLO_MOLD mold)
if(MARLO_MOLD)
  target_link_options(marlo_options INTERFACE -fuse-ld=mold)
endif()
if(MARLO_SANITIZE)
  target_compile_options(marlo_options INTERFACE -fsanitize=${MARLO_SANITIZE} -fno-omit-frame-pointer
                                                 -fno-sanitize-recover=all)
  target_link_options(marlo_options INTERFACE -fsanitize=${MARLO_SANITIZE})
endif()
if(MARLO_COVERAGE)
  target_compile_options(marlo_options INTERFACE --coverage)
  target_link_options(marlo_options INTERFACE --coverage)
endif()

add_library(marlo_project_options INTERFACE)
target_compile_options(
  marlo_project_options INTERFACE -fvisibility=hidden -fvisibility-inlines-hidden -Wall -Wextra -Wshadow
                                  -Wconversion -Wno-sign-conversion -Wold-style-cast
                                  -Wcast-align -Wformat=2 -Wundef)
# g++ 12 at -O3 takes the insertion into a std::string for a copy onto itself.
target_compile_options(marlo_project_options INTERFACE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(marlo_project_options INTERFACE -Werror)
endif()
