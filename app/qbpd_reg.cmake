qbpd_executable(NAME qbpd-reg
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_reg.cpp
  DEPS qbpd_core qbpd_platform)

# The command's behaviour as a user sees it, on a private settings database.
add_test(NAME qbpd_reg_commands
  COMMAND bash ${PROJECT_SOURCE_DIR}/tests/app/qbpd_reg_test.sh
          $<TARGET_FILE:qbpd-reg>)
set_tests_properties(qbpd_reg_commands PROPERTIES LABELS integration)
