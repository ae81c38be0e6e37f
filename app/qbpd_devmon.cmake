qbpd_executable(NAME qbpd-devmon
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_devmon.cpp
  DEPS qbpd_camera qbpd_core qbpd_platform)

# Started with the desktop session.
install(FILES ${PROJECT_SOURCE_DIR}/resources/qbpd-devmon.desktop
        DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/xdg/autostart)
