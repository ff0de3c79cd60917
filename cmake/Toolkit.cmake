# What windows need besides code: resources and translations.
find_program(SR_COMPILE_RESOURCES glib-compile-resources REQUIRED)
find_program(SR_MSGFMT msgfmt REQUIRED)

# Compiles the resources that the file describes, paths from its folder, into the target.
function(sr_add_resources target description)
  get_filename_component(file ${description} ABSOLUTE)
  get_filename_component(folder ${file} DIRECTORY)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.resources.c)
  execute_process(COMMAND ${SR_COMPILE_RESOURCES} --generate-dependencies --sourcedir=${folder} ${file}
    OUTPUT_VARIABLE parts OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" parts "${parts}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  add_custom_command(OUTPUT ${source}
    COMMAND ${SR_COMPILE_RESOURCES} --generate-source --internal --sourcedir=${folder} --target=${source} ${file}
    DEPENDS ${file} ${parts}
    COMMENT "Compiling the resources of ${target}"
    VERBATIM)
  set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -w SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE ${source})
endfunction()
