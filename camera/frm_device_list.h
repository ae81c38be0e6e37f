#ifndef QBPD_CAMERA_FRM_DEVICE_LIST_H_
#define QBPD_CAMERA_FRM_DEVICE_LIST_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The list of the devices attached now, from GetAvailableDeviceList. OK puts
// the chosen entry in gsSelectedDevice; any other end sets
// gbDeviceListCancelled. With nothing attached it says so on load and
// unloads cancelled.
class frmDeviceList : public Form {
 public:
  static constexpr std::string_view kName = "frmDeviceList";
  static constexpr char kNotACamera[] = "Not a camera";
  explicit frmDeviceList(Application& app);

  Label lblDescription{*this, "lblDescription"};
  ComboBox cboDeviceList{*this, "cboDeviceList"};
  CommandButton cmdOK{*this, "cmdOK"};
  CommandButton cmdCancel{*this, "cmdCancel"};

 protected:
  void Form_Load() override;
  void Form_QueryUnload(int& Cancel, int UnloadMode) override;

 private:
  void cmdOK_Click();
  void cmdCancel_Click();

  Application& app_;
  bool mbAnswered = false;
};

}  // namespace qbpd

#endif  // QBPD_CAMERA_FRM_DEVICE_LIST_H_
