#ifndef QBPD_CAMERA_CAMERA_LINES_H_
#define QBPD_CAMERA_CAMERA_LINES_H_

#include <functional>
#include <string>
#include <vector>

namespace qbpd {

// The exchange files of the camera import: DevMon.dat from the device
// monitor and ImgAcq.dat from the camera transfer helper, each one line.
inline constexpr char kDevMonFile[] = "DevMon.dat";
inline constexpr char kImgAcqFile[] = "ImgAcq.dat";

// The device monitor's codes.
inline constexpr char kKnownDevice[] = "100";
inline constexpr char kNewDevice[] = "200";
// The helper's codes.
inline constexpr char kTransferBegun[] = "310";
inline constexpr char kTransferDone[] = "300";
inline constexpr char kTransferFailed[] = "400";
inline constexpr char kTransferNothing[] = "410";
inline constexpr char kTransferStopped[] = "420";

// A line of DevMon.dat: code in positions 1 to 3, one separator, the device
// text, one terminator. The device text is what lies between (empty when the
// line is shorter).
struct DevMonLine {
  std::string code;
  std::string device;
};
DevMonLine ParseDevMonLine(const std::string& trimmed_line);
// The line the monitor writes: code, a blank as the separator, the device,
// "|" as the terminator and a line feed (which the line reader takes).
std::string MakeDevMonLine(const std::string& code, const std::string& device);

// A line of ImgAcq.dat: code, one separator and, with "300", the folder,
// with a trailing NUL and then a trailing "|" cut off.
struct ImgAcqLine {
  std::string code;
  std::string folder;
};
ImgAcqLine ParseImgAcqLine(const std::string& trimmed_line);
std::string MakeImgAcqLine(const std::string& code,
                           const std::string& folder = "");

// The entries of GetAvailableDeviceList's answer: a trailing NUL and then a
// lone "|" removed, split at "|", single blanks and entries already there
// (compared without regard to case) left out, in order.
std::vector<std::string> DeviceListEntries(std::string answer);

// The transfer folder's name from the FolderName setting ("0": MM-DD-YYYY,
// "1": DD-MM-YYYY) on `year`, `month` and `day`; "" for any other value.
std::string DateFolderName(const std::string& folder_name,
                           int year,
                           int month,
                           int day);

// `path` when no folder is there; else `path` + "_001", counting on (_002,
// _003, ...) while the candidate exists, up to 999 tries; the last candidate
// is kept even when it exists.
std::string NumberedFolder(
    const std::string& path,
    const std::function<bool(const std::string&)>& exists);

// A name for a file in a move that would land on a taken name: the stem,
// "_001" (counting on) and the extension, the first that `taken` refuses not.
std::string FreeFileName(const std::string& name,
                         const std::function<bool(const std::string&)>& taken);

// The helper's picture name of photo `number` (from 1): the base name, a
// blank and the number, with the camera file's own extension.
std::string PictureName(const std::string& base,
                        int number,
                        const std::string& camera_name);

// Reads the one line of an exchange file and deletes it. False when the file
// is not there; `line` is "" for an empty file.
bool TakeExchangeLine(const std::string& path, std::string& line);

}  // namespace qbpd

#endif  // QBPD_CAMERA_CAMERA_LINES_H_
