qbpd_executable(NAME qbpd-script
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_script.cpp
  DEPS qbpd_driver qbpd_program)
