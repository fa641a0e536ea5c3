# SPDX-License-Identifier: Apache-2.0
# The target docs: the reference of the public headers, with undocumented exports and records as errors.

find_package(Doxygen 1.9 REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(MARLO_REFERENCE_DIR ${CMAKE_BINARY_DIR}/reference)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${CMAKE_BINARY_DIR}/Doxyfile @ONLY)
# Built from nothing each time: pages and XML of headers that are gone would stay.
add_custom_target(
  docs
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${MARLO_REFERENCE_DIR}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${MARLO_REFERENCE_DIR}
  COMMAND Doxygen::doxygen ${CMAKE_BINARY_DIR}/Doxyfile
  COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/reference_coverage.py ${MARLO_REFERENCE_DIR}/xml
  COMMENT "Reference in ${MARLO_REFERENCE_DIR}/html"
  VERBATIM)
