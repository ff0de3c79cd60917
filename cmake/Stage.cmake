# The installed tree, staged in the build folder, so that tests and the demo run the program as it is installed
# without installing anything.
set(SR_STAGE ${CMAKE_BINARY_DIR}/stage)
add_custom_target(stage ALL
  COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --prefix ${SR_STAGE} > ${CMAKE_BINARY_DIR}/stage.log
  COMMENT "Staging the application's folder"
  VERBATIM)
add_dependencies(stage ServiceRecords srctl ServiceRecordUI ServiceRecordUIView servicerecord-dialog
  servicerecord-dialog-window Warden_SDK servicerecord-credential servicerecord-launch servicerecords-stores)
