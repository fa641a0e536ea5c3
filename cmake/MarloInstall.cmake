# SPDX-License-Identifier: Apache-2.0
# Install rules: headers, library, CMake package and pkg-config file.

include(CMakePackageConfigHelpers)
install(TARGETS marlo110k EXPORT marlo110kTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/marlo110k DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT marlo110kTargets NAMESPACE marlo:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/marlo110k)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/marlo110kConfig.cmake.in ${CMAKE_BINARY_DIR}/marlo110kConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/marlo110k)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/marlo110kConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/marlo110kConfig.cmake ${CMAKE_BINARY_DIR}/marlo110kConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/marlo110k)
# The prefix is found from where the file lies, so that `cmake --install --prefix` and a moved tree hold good.
file(RELATIVE_PATH MARLO_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" MARLO_PREFIX_FROM_PC ${MARLO_PREFIX_FROM_PC})
configure_file(${PROJECT_SOURCE_DIR}/cmake/marlo110k.pc.in ${CMAKE_BINARY_DIR}/marlo110k.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/marlo110k.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
