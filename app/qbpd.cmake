qbpd_executable(NAME qbpd
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd.cpp
  DEPS qbpd_program qbpd_qt)
# The desktop program starts the reference service beside it on first use.
add_dependencies(qbpd qbpd-service)

# The real program on a fresh home: the default settings, the first folder
# and the folder of a later start.
add_test(NAME qbpd_first_run
  COMMAND bash ${PROJECT_SOURCE_DIR}/tests/app/first_run_test.sh
          $<TARGET_FILE:qbpd> $<TARGET_FILE:qbpd-reg> ${PROJECT_VERSION})
set_tests_properties(qbpd_first_run PROPERTIES LABELS integration)
