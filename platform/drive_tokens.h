#ifndef QBPD_PLATFORM_DRIVE_TOKENS_H_
#define QBPD_PLATFORM_DRIVE_TOKENS_H_

#include <string>
#include <vector>

namespace qbpd {

// A drive of the device monitor's line ("E:", exactly two characters) stands
// for the folder where a removable medium is mounted. The table of tokens is
// a text file in the program's data folder ("Drives.dat"), one line a drive:
// the token, a tab and the folder. The device monitor and the program's
// device list hand out tokens; the program reads them back to find the
// folder. A token stays with its folder while that is mounted; the tokens of
// folders no longer mounted are given out again, lowest letter first, from
// "D:" to "Z:".
struct DriveToken {
  std::string token;
  std::string folder;
};

inline constexpr char kDriveTableName[] = "Drives.dat";

// The lines of the table at `table`; nothing when it is missing or unreadable.
// Lines that aren't a two-character token, a tab and an absolute folder are
// skipped.
std::vector<DriveToken> ReadDriveTokens(const std::string& table);

// The tokens of `mounted` (folders of removable media, in order): each keeps
// the token the table gives it, and a new folder gets the lowest free one.
// The table is rewritten (atomically) with exactly these lines when it
// changed. A folder beyond the 23 letters gets no token and is left out.
// False when the table had to change and could not be written; the tokens
// are then still given, for this answer only.
bool AssignDriveTokens(const std::string& table,
                       const std::vector<std::string>& mounted,
                       std::vector<DriveToken>& tokens);

// The folder of `token` in the table, compared without regard to case; ""
// when the table has no such token.
std::string DriveTokenFolder(const std::string& table,
                             const std::string& token);

// True when a device text is a drive: exactly two characters.
inline bool IsDriveText(const std::string& device) {
  return device.size() == 2;
}

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DRIVE_TOKENS_H_
