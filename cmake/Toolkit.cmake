# What windows need besides code: resources and translations.
find_program(SR_COMPILE_RESOURCES glib-compile-resources REQUIRED)
find_program(SR_MSGFMT msgfmt REQUIRED)

# Compiles the resources that the file describes, paths from its folder, into the target.
function(sr_add_resources target description)
  get_filename_component(file ${description} ABSOLUTE)
  get_filename_component(folder ${file} DIRECTORY)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.resources.c)
  add_custom_command(OUTPUT ${source}
    COMMAND ${SR_COMPILE_RESOURCES} --generate-source --internal --sourcedir=${folder} --target=${source}
      --dependency-file=${source}.d ${file}
    DEPENDS ${file}
    DEPFILE ${source}.d
    COMMENT "Compiling the resources of ${target}"
    VERBATIM)
  set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -w SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE ${source})
endfunction()
