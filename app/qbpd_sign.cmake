qbpd_executable(NAME qbpd-sign
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_sign.cpp
  DEPS qbpd_signature)
