#ifndef QBPD_PLATFORM_FOLDER_LISTING_H_
#define QBPD_PLATFORM_FOLDER_LISTING_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// The names of the plain files directly in `folder`, in the order the file
// system gives them; a link counts as what it points to, and "." and ".."
// are never listed. The temporary files that a write killed half-way left
// behind (see RemoveIfStaleTemporaryFile) are removed as they are met and
// left out, so that one reading of the folder does both. A folder that
// can't be read lists nothing; one whose reading fails half-way lists what
// was read until then.
std::vector<std::string> ListPlainFiles(const std::string& folder);

// Whether `folder` holds at least one plain file (a link counting as what it
// points to) whose name `wanted` accepts. Stops at the first: a folder of
// thousands of photos answers after reading a few names. False when the
// folder can't be read.
bool HoldsPlainFile(const std::string& folder,
                    const std::function<bool(std::string_view name)>& wanted);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FOLDER_LISTING_H_
