qbpd_executable(NAME qbpd-devmon
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_devmon.cpp
  DEPS qbpd_camera qbpd_core qbpd_platform)

# Started with the desktop session: the autostart entry's folder and its Exec
# line are decided at install time (cmake/install_autostart.cmake).
set(QBPD_AUTOSTART_DIR "" CACHE PATH
    "Folder of the device monitor's autostart entry (relative: under the \
prefix); empty: /etc/xdg/autostart for the prefixes /usr and /usr/local, \
<sysconfdir>/xdg/autostart under any other")
install(CODE "
set(QBPD_AUTOSTART_DIR [[${QBPD_AUTOSTART_DIR}]])
set(QBPD_AUTOSTART_ENTRY [[${PROJECT_SOURCE_DIR}/resources/qbpd-devmon.desktop]])
set(QBPD_AUTOSTART_STAGE [[${CMAKE_CURRENT_BINARY_DIR}/qbpd-devmon.desktop]])
set(QBPD_BINDIR [[${CMAKE_INSTALL_BINDIR}]])
set(QBPD_SYSCONFDIR [[${CMAKE_INSTALL_SYSCONFDIR}]])
")
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/install_autostart.cmake)

# The monitor as a real process on a loop-mounted medium (needs root).
add_test(NAME qbpd_devmon_mount
  COMMAND bash ${PROJECT_SOURCE_DIR}/tests/app/devmon_test.sh
          $<TARGET_FILE:qbpd-devmon> $<TARGET_FILE:qbpd-reg>)
set_tests_properties(qbpd_devmon_mount PROPERTIES LABELS integration
                     SKIP_RETURN_CODE 77)
