# Run by `cmake --install`: lays the device monitor's XDG autostart entry,
# with an Exec line that names the installed monitor. The folder is decided
# here, at install time, so that `cmake --install --prefix` moves it too:
# - QBPD_AUTOSTART_DIR when it is set (relative to the prefix unless
#   absolute);
# - otherwise /etc/xdg/autostart for the prefixes /usr and /usr/local: the
#   desktop sessions read the system's entries from the folders of
#   XDG_CONFIG_DIRS, which is /etc/xdg unless a distribution says otherwise,
#   never from /usr/local/etc;
# - otherwise <sysconfdir>/xdg/autostart under the prefix (a private prefix,
#   whose owner adds its etc/xdg to XDG_CONFIG_DIRS).
# DESTDIR is honoured, as file(INSTALL) honours it.
#
# Set before this runs (app/qbpd_devmon.cmake): QBPD_AUTOSTART_DIR,
# QBPD_AUTOSTART_ENTRY (the entry's source), QBPD_AUTOSTART_STAGE (where the
# finished entry is written first), QBPD_BINDIR and QBPD_SYSCONFDIR (the
# GNUInstallDirs folders, relative or absolute).
string(REGEX REPLACE "(.)/+$" "\\1" qbpd_prefix "${CMAKE_INSTALL_PREFIX}")

if(QBPD_AUTOSTART_DIR)
  set(qbpd_autostart "${QBPD_AUTOSTART_DIR}")
  if(NOT IS_ABSOLUTE "${qbpd_autostart}")
    set(qbpd_autostart "${qbpd_prefix}/${qbpd_autostart}")
  endif()
elseif(qbpd_prefix STREQUAL "/usr" OR qbpd_prefix STREQUAL "/usr/local")
  set(qbpd_autostart "/etc/xdg/autostart")
elseif(IS_ABSOLUTE "${QBPD_SYSCONFDIR}")
  set(qbpd_autostart "${QBPD_SYSCONFDIR}/xdg/autostart")
else()
  set(qbpd_autostart "${qbpd_prefix}/${QBPD_SYSCONFDIR}/xdg/autostart")
endif()

set(qbpd_monitor "${QBPD_BINDIR}/qbpd-devmon")
if(NOT IS_ABSOLUTE "${qbpd_monitor}")
  set(qbpd_monitor "${qbpd_prefix}/${qbpd_monitor}")
endif()
# One quoted argument, with the characters reserved inside quotes escaped as
# desktop entries want them (a backslash before the string escape's own).
string(REPLACE "\\" "\\\\\\" qbpd_exec "${qbpd_monitor}")
string(REPLACE "\"" "\\\\\"" qbpd_exec "${qbpd_exec}")
string(REPLACE "`" "\\\\`" qbpd_exec "${qbpd_exec}")
string(REPLACE "$" "\\\\$" qbpd_exec "${qbpd_exec}")

file(READ "${QBPD_AUTOSTART_ENTRY}" qbpd_entry)
# (A regular expression's replacement would eat the backslashes: the line is
# marked first and filled in plainly.)
string(REGEX REPLACE "\nExec=[^\n]*" "\nExec=@QBPD_EXEC@" qbpd_entry
       "${qbpd_entry}")
string(REPLACE "@QBPD_EXEC@" "\"${qbpd_exec}\"" qbpd_entry "${qbpd_entry}")
file(WRITE "${QBPD_AUTOSTART_STAGE}" "${qbpd_entry}")
file(INSTALL DESTINATION "${qbpd_autostart}" TYPE FILE
     FILES "${QBPD_AUTOSTART_STAGE}" RENAME qbpd-devmon.desktop)
