qbpd_executable(NAME qbpd
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd.cpp
  DEPS qbpd_program qbpd_qt)
# The desktop program starts the reference service beside it on first use.
add_dependencies(qbpd qbpd-service)
