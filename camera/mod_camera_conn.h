#ifndef QBPD_CAMERA_MOD_CAMERA_CONN_H_
#define QBPD_CAMERA_MOD_CAMERA_CONN_H_

#include <string>

namespace qbpd {

class Application;
class frmMainWindow;
class ProgressBar;

// The camera import's routines (the program's modCameraConn). They work on
// the run's session values and settings, and reach the main window through
// the application's forms.

// Starts the camera transfer helper for `device` into a new folder under
// BaseFolder: base + BuildFolderName, numbered "_001", "_002", ... when that
// folder exists (999 tries, the last candidate kept). False when the name
// was empty or the helper could not be started.
bool StartImageAcq(Application& app, const std::string& device);
// The folder name of a transfer by FolderName: a date (today's), or the
// answer of frmImageTransfer for "2"; "" when cancelled or unknown.
std::string BuildFolderName(Application& app);
// The pictures' base name by PhotoName: "Picture", or a name made like the
// folder's; "" for other values.
std::string BuildPhotoName(Application& app);
// BaseFolder read, trimmed and ending in "/".
std::string CameraBaseFolder(Application& app);
// The path of an exchange file in the program's data folder.
std::string ExchangeFile(Application& app, const std::string& name);

// Waits for the helper's first answer and acts on it (the progress dialog
// for "310", the failure message for "400").
void CheckImageAcq(Application& app);
// Waits for the helper's last answer; with "300" the folder tree goes to
// the new folder.
void WaitForTransfer(Application& app);

// Lists the files of a drive into gsaCardFiles, breadth first, leaving out
// hidden files (a name beginning with "."). True when there is at least one.
bool ListCardFiles(Application& app, const std::string& drive);
// Copies (mode 1) or moves (mode 0) the files of gsaCardFiles into one new
// folder at `destination` (numbered as under StartImageAcq when it exists),
// growing `bar` (may be null) by one a file, then shows that folder. A move
// deletes a source only after its copy is verified; a name that a move
// would land on twice gets a free name ("_001" after the stem). A file that
// fails stays on the card, and the failure message says the import was not
// whole.
void CopyCardFiles(Application& app,
                   std::string source,
                   bool keep_tree,
                   std::string destination,
                   int mode,
                   ProgressBar* bar);

// The menu entry: the device list, then a card copy or the helper.
void GetCameraPhotos(Application& app);
// One tick of the main window's timerCamera: DevMon.dat and its codes.
void timerCamera_Timer(Application& app);

// Binds the main window's timerCamera and mnuFGetCameraPhotos to the
// routines above.
void WireCameraImport(frmMainWindow& window, Application& app);

}  // namespace qbpd

#endif  // QBPD_CAMERA_MOD_CAMERA_CONN_H_
