#ifndef QBPD_PLATFORM_MOUNT_TABLE_H_
#define QBPD_PLATFORM_MOUNT_TABLE_H_

#include <string>
#include <vector>

namespace qbpd {

// One line of the mount table.
struct MountEntry {
  std::string device;
  std::string folder;
  std::string type;
};

// The lines of a mount table in the kernel's format ("/proc/self/mounts"),
// with the octal escapes of blanks and other characters in names undone.
// Lines that don't have the three first fields are skipped; a table that
// can't be read gives nothing.
std::vector<MountEntry> ReadMountTable(
    const std::string& path = "/proc/self/mounts");
std::vector<MountEntry> ParseMountTable(const std::string& text);

// The folders of removable media in a table: what the desktop's disk
// service mounts for the user, under /media/ or /run/media/, in the order
// of the table.
std::vector<std::string> RemovableMediaFolders(
    const std::vector<MountEntry>& table);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_MOUNT_TABLE_H_
