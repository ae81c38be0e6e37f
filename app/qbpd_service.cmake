qbpd_executable(NAME qbpd-service
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_service.cpp
  DEPS qbpd_service Threads::Threads)
