# The throw-away authority of the tests and the benchmarks, made once for each build folder.
set(SR_TEST_AUTHORITY ${CMAKE_BINARY_DIR}/test-authority)
set(script ${CMAKE_SOURCE_DIR}/scripts/make-test-authority)
add_custom_command(OUTPUT ${SR_TEST_AUTHORITY}/ca.pem
  COMMAND ${script} ${SR_TEST_AUTHORITY}
  DEPENDS ${script}
  COMMENT "Making the tests' certificates"
  VERBATIM)
add_custom_target(test_authority DEPENDS ${SR_TEST_AUTHORITY}/ca.pem)
