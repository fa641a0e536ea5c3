# SPDX-License-Identifier: Apache-2.0
# The shared library and its export list, made from the marks in the public headers.

add_library(marlo110k SHARED)
target_link_libraries(marlo110k PRIVATE marlo_objects)
target_include_directories(marlo110k INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(marlo110k INTERFACE cxx_std_20)
set_target_properties(marlo110k PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                           EXPORT_NAME marlo110k LINKER_LANGUAGE CXX)
add_library(marlo::marlo110k ALIAS marlo110k)

file(GLOB_RECURSE MARLO_PUBLIC_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/marlo110k/*.h)
set(MARLO_VERSION_SCRIPT ${CMAKE_BINARY_DIR}/marlo110k.map)
add_custom_command(
  OUTPUT ${MARLO_VERSION_SCRIPT}
  COMMAND ${CMAKE_COMMAND} -DHEADERS_DIR=${PROJECT_SOURCE_DIR}/include/marlo110k
          -DOUTPUT=${MARLO_VERSION_SCRIPT} -DNODE=MARLO_11.0 -P ${PROJECT_SOURCE_DIR}/cmake/MarloVersionScript.cmake
  DEPENDS ${MARLO_PUBLIC_HEADERS} ${PROJECT_SOURCE_DIR}/cmake/MarloVersionScript.cmake
  COMMENT "Export list")
add_custom_target(marlo_version_script DEPENDS ${MARLO_VERSION_SCRIPT})
add_dependencies(marlo110k marlo_version_script)
target_link_options(marlo110k PRIVATE -Wl,--version-script=${MARLO_VERSION_SCRIPT} -Wl,-z,relro,-z,now)
set_target_properties(marlo110k PROPERTIES LINK_DEPENDS ${MARLO_VERSION_SCRIPT})
if(NOT MARLO_SANITIZE)
  target_link_options(marlo110k PRIVATE -Wl,-z,defs)
endif()
