#include "camera/frm_device_list.h"

#include "camera/camera_lines.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5400;
constexpr int kFormHeight = 2700;
constexpr int kMargin = 240;
constexpr int kButtonWidth = 1100;
constexpr int kButtonHeight = 375;
constexpr int kListOnly = 2;

constexpr char kCaption[] = "List of Available Devices";
constexpr char kDescription[] =
    "The device that you have connected seems to be a new device. Please "
    "select the device from the list below.";
constexpr char kNoCamera[] =
    "Sorry! There is no camera connected to your PC.  Please connect your "
    "camera and try again.";

}  // namespace

frmDeviceList::frmDeviceList(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblDescription.Move(kMargin, kMargin, kFormWidth - 2 * kMargin, 630);
  lblDescription.SetCaption(kDescription);
  lblDescription.SetWordWrap(true);
  cboDeviceList.Move(kMargin, 960, kFormWidth - 2 * kMargin, 315);
  cboDeviceList.SetStyle(kListOnly);
  const int top = kFormHeight - kButtonHeight - 720;
  cmdCancel.Move(kFormWidth - kMargin - kButtonWidth, top, kButtonWidth,
                 kButtonHeight);
  cmdCancel.SetCaption("Cancel");
  cmdCancel.SetCancel(true);
  cmdOK.Move(cmdCancel.Left() - 120 - kButtonWidth, top, kButtonWidth,
             kButtonHeight);
  cmdOK.SetCaption("OK");
  cmdOK.SetDefault(true);
  Field("mbAnswered", mbAnswered);
  On("cmdOK", "Click", &frmDeviceList::cmdOK_Click);
  On("cmdCancel", "Click", &frmDeviceList::cmdCancel_Click);
}

void frmDeviceList::Form_Load() {
  Session& s = app_.session();
  SetCaption(kCaption);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  s.gbDeviceListCancelled = true;
  const std::vector<std::string> entries =
      DeviceListEntries(app_.camera_devices().GetAvailableDeviceList());
  if (entries.empty()) {
    host().MsgBox(kNoCamera, kMbInformation, s.gsAppTitle);
    Unload();
    return;
  }
  for (const std::string& entry : entries) {
    cboDeviceList.AddItem(entry);
  }
  cboDeviceList.SetListIndex(0);
}

void frmDeviceList::Form_QueryUnload(int& Cancel, int UnloadMode) {
  (void)UnloadMode;
  Cancel = 0;
  if (!mbAnswered) {
    app_.session().gbDeviceListCancelled = true;
  }
}

void frmDeviceList::cmdOK_Click() {
  Session& s = app_.session();
  s.gsSelectedDevice = cboDeviceList.Text();
  s.gbDeviceListCancelled = false;
  mbAnswered = true;
  Unload();
}

void frmDeviceList::cmdCancel_Click() {
  app_.session().gbDeviceListCancelled = true;
  Unload();
}

}  // namespace qbpd
