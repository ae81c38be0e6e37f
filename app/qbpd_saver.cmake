# qbpd-saver: the saver player, standalone or as a module of XScreenSaver.
find_package(Qt6 REQUIRED COMPONENTS Gui)
# The size of the window XScreenSaver gives is asked of the X server.
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
qbpd_executable(NAME qbpd-saver
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/qbpd_saver.cpp
          ${CMAKE_CURRENT_LIST_DIR}/saver_options.cpp
  DEPS qbpd_screensaver qbpd_platform Qt6::Gui PkgConfig::XCB)
# The program beside qbpd is what the desktop's screen saver is told to run.
add_dependencies(qbpd qbpd-saver)
