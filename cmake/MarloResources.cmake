# SPDX-License-Identifier: Apache-2.0
# Compiled resources inside an ELF object: section ".marlo_rsrc" holds the bytes of the compiled file, where the
# library's resource reader finds them by the section's name, also in a stripped file that isn't loaded.

find_program(MARLO_RESOURCE_COMPILER NAMES llvm-rc-14 llvm-rc-16 llvm-rc-15 llvm-rc REQUIRED
             DOC "Resource compiler (package llvm-14)")

# marlo_add_resources(TARGET SCRIPT): compiles SCRIPT and embeds it in TARGET. The script is UTF-8 and isn't
# preprocessed: numbers instead of names, non-ASCII text in L"" strings only.
function(marlo_add_resources target script)
  get_filename_component(script ${script} ABSOLUTE)
  get_filename_component(name ${script} NAME_WE)
  get_filename_component(folder ${script} DIRECTORY)
  get_filename_component(file ${script} NAME)
  set(compiled ${CMAKE_CURRENT_BINARY_DIR}/${name}.res)
  set(assembly ${CMAKE_CURRENT_BINARY_DIR}/${name}_resources.S)
  # The compiler takes a path that begins like one of its options ("/code/..." is "/C ode/...") for that option, so
  # it gets the script by its bare name.
  add_custom_command(
    OUTPUT ${compiled}
    COMMAND ${MARLO_RESOURCE_COMPILER} /no-preprocess /C 65001 /FO ${compiled} ${file}
    DEPENDS ${script}
    WORKING_DIRECTORY ${folder}
    COMMENT "Resources ${name}"
    VERBATIM)
  file(CONFIGURE OUTPUT ${assembly} @ONLY CONTENT [[
// Embeds a compiled resource file.
  .section .marlo_rsrc,"a",@progbits
  .balign 4
  .incbin "@compiled@"
  .section .note.GNU-stack,"",@progbits
]])
  # A target of its own carries the command, since TARGET may be made in another folder.
  add_custom_target(${target}_${name}_resources DEPENDS ${compiled})
  add_dependencies(${target} ${target}_${name}_resources)
  set_source_files_properties(${assembly} TARGET_DIRECTORY ${target} PROPERTIES OBJECT_DEPENDS ${compiled})
  target_sources(${target} PRIVATE ${assembly})
endfunction()

# marlo_add_language_module(TARGET NAME SCRIPT): builds NAME.LNG from SCRIPT, the language module of a module NAME. It
# holds resources and no code; put it beside its module.
function(marlo_add_language_module target name script)
  add_library(${target} MODULE)
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${name} SUFFIX .LNG LINKER_LANGUAGE CXX)
  target_link_options(${target} PRIVATE -nostdlib)
  marlo_add_resources(${target} ${script})
endfunction()
