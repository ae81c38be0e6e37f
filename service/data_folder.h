#ifndef QBPD_SERVICE_DATA_FOLDER_H_
#define QBPD_SERVICE_DATA_FOLDER_H_

#include <chrono>
#include <filesystem>

namespace qbpd::service {

// The service's data folder holds every account's session codes, addresses
// and photos, so only its owner may read it: folders are 0700 and files 0600,
// made so from their first write whatever the umask, and repaired on start
// when found wider. Symbolic links inside it are left alone, never followed.

// Makes `dir` (and missing parents of it) private, or repairs it and
// everything the service keeps in it: the database and its journal files,
// the photos folder, its album folders and their photos. A photo whose
// writing stopped half-way (a ".part" file of the service's own) is removed
// when it was last written `part_age` ago or longer: on a folder that
// several instances share, a younger one may be another's upload under way.
// Throws
// std::runtime_error when the folder can't be made or is shared with other
// users in a way the service must not change (a sticky folder such as /tmp,
// or another user's folder).
void PrepareDataFolder(const std::filesystem::path& dir,
                       std::chrono::seconds part_age = std::chrono::seconds(0));

// Makes `dir` as a private folder (0700) if it is missing; an existing one is
// made private too. Throws std::runtime_error on failure.
void MakePrivateFolder(const std::filesystem::path& dir);

// Creates the file `path` empty and private (0600) if it is missing, so that
// whatever opens it next inherits that mode; an existing one is made private.
void MakePrivateFile(const std::filesystem::path& path);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_DATA_FOLDER_H_
