#ifndef QBPD_PRINTORDER_PRINT_RESOLUTION_H_
#define QBPD_PRINTORDER_PRINT_RESOLUTION_H_

namespace qbpd {

// A photo's pixel size; 0 for a file that can't be read.
struct PhotoSize {
  int width = 0;
  int height = 0;
};

// Whether a photo has the pixels for a print of size row `row` (0 4 x 6,
// 1 5 x 7, 2 8 x 10, 3 wallet set): its short side at least 600, 600,
// 1024, 279 and its long side at least 900, 900, 1280, 419. The 5 x 7 row
// has the thresholds of the 4 x 6 row. An unreadable photo (0) fails all.
bool MeetsPrintSize(PhotoSize size, int row);

}  // namespace qbpd

#endif  // QBPD_PRINTORDER_PRINT_RESOLUTION_H_
