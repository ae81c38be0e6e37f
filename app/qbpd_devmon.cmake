qbpd_executable(NAME qbpd-devmon
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_devmon.cpp
  DEPS qbpd_camera qbpd_core qbpd_platform)

# Started with the desktop session.
install(FILES ${PROJECT_SOURCE_DIR}/resources/qbpd-devmon.desktop
        DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/xdg/autostart)

# The monitor as a real process on a loop-mounted medium (needs root).
add_test(NAME qbpd_devmon_mount
  COMMAND bash ${PROJECT_SOURCE_DIR}/tests/app/devmon_test.sh
          $<TARGET_FILE:qbpd-devmon> $<TARGET_FILE:qbpd-reg>)
set_tests_properties(qbpd_devmon_mount PROPERTIES LABELS integration
                     SKIP_RETURN_CODE 77)
