#ifndef QBPD_BENCH_UI_PHOTO_FOLDER_H_
#define QBPD_BENCH_UI_PHOTO_FOLDER_H_

#include <filesystem>

namespace qbpd::bench {

// Fills `folder` with `photos` JPEGs of `width` x `height`: `distinct` made
// with libvips and hard links to them under other names, so that every photo
// is a file of its own without filling the disk.
void MakePhotoFolder(const std::filesystem::path& folder,
                     int photos,
                     int distinct,
                     int width,
                     int height);

}  // namespace qbpd::bench

#endif  // QBPD_BENCH_UI_PHOTO_FOLDER_H_
