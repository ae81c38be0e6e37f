qbpd_executable(NAME qbpd-service
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_service.cpp
  DEPS qbpd_service qbpd_signature Threads::Threads)
# The version it offers as an upgrade unless told another.
target_compile_definitions(qbpd-service PRIVATE
  QBPD_VERSION="${PROJECT_VERSION}")
