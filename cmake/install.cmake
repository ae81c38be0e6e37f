# What `cmake --install` lays down.
#
# The programs find their read-only files (pictures, help pages, default
# settings) at <prefix>/share/quillbay-picture-desk/resources, that is
# "../share/quillbay-picture-desk/resources" from the folder of the
# executable (FindResourcesFolder in platform/places.cpp). So the programs go
# to <prefix>/bin and the resources to <prefix>/share, whatever the
# GNUInstallDirs variables say.

set(QBPD_INSTALL_BIN bin)
set(QBPD_INSTALL_SHARE share)

# qbpd_executable (cmake/qbpd.cmake) already gives every program made with it
# an install rule and marks it QBPD_INSTALLED; a program made otherwise gets
# its rule here.
if(NOT CMAKE_INSTALL_BINDIR STREQUAL QBPD_INSTALL_BIN)
  message(WARNING "CMAKE_INSTALL_BINDIR is ${CMAKE_INSTALL_BINDIR}: the "
                  "installed programs will not find their resources, which "
                  "they look for at ../share/quillbay-picture-desk")
endif()
foreach(program IN ITEMS qbpd qbpd-script qbpd-service qbpd-reg)
  if(TARGET ${program})
    get_target_property(qbpd_installed ${program} QBPD_INSTALLED)
    if(NOT qbpd_installed)
      install(TARGETS ${program} RUNTIME DESTINATION ${QBPD_INSTALL_BIN})
    endif()
  endif()
endforeach()

# The resources, without what only the people drawing the pictures need.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources
        DESTINATION ${QBPD_INSTALL_SHARE}/quillbay-picture-desk
        PATTERN "README.md" EXCLUDE
        PATTERN "contact-sheet.png" EXCLUDE
        PATTERN "*.desktop" EXCLUDE
        PATTERN "icons" EXCLUDE)

install(FILES ${PROJECT_SOURCE_DIR}/resources/quillbay-picture-desk.desktop
        DESTINATION ${QBPD_INSTALL_SHARE}/applications)

foreach(size IN ITEMS 16 32 48 64 128 256)
  install(FILES
          ${PROJECT_SOURCE_DIR}/resources/icons/${size}x${size}/quillbay-picture-desk.png
          DESTINATION ${QBPD_INSTALL_SHARE}/icons/hicolor/${size}x${size}/apps)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/resources/icons/quillbay-picture-desk.svg
        DESTINATION ${QBPD_INSTALL_SHARE}/icons/hicolor/scalable/apps)
