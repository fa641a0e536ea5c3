# SPDX-License-Identifier: Apache-2.0
# The library's own texts: one readable file a language becomes a table of descriptors at build time.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# marlo_add_catalogue(TARGET FOLDER): makes kernel/catalogue/texts.h and its source from the files of FOLDER. A text
# that takes other arguments than English fails the build.
function(marlo_add_catalogue target folder)
  set(generated ${CMAKE_BINARY_DIR}/generated)
  set(outputs ${generated}/kernel/catalogue/texts.h ${generated}/kernel/catalogue/texts.cpp)
  file(MAKE_DIRECTORY ${generated}/kernel/catalogue)
  file(GLOB texts CONFIGURE_DEPENDS ${folder}/*.txt)
  add_custom_command(
    OUTPUT ${outputs}
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/catalogue.py ${folder} ${outputs}
    DEPENDS ${texts} ${PROJECT_SOURCE_DIR}/scripts/catalogue.py
    COMMENT "Texts"
    VERBATIM)
  # A target of its own carries the command, since TARGET may be made in another folder.
  add_custom_target(${target}_catalogue DEPENDS ${outputs})
  add_dependencies(${target} ${target}_catalogue)
  list(GET outputs 1 source)
  set_source_files_properties(${source} TARGET_DIRECTORY ${target} PROPERTIES GENERATED ON)
  target_sources(${target} PRIVATE ${source})
  target_include_directories(${target} PUBLIC ${generated})
endfunction()
