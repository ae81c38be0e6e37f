#ifndef QBPD_CORE_FRM_SPLASH_H_
#define QBPD_CORE_FRM_SPLASH_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The entry form: runs the start-up of the program, hands a second start
// over to the running instance, and brings up the main window.
class frmSplash : public Form {
 public:
  static constexpr std::string_view kName = "frmSplash";
  explicit frmSplash(Application& app);

  bool b_Unloadme = false;

  PictureBox imgSplash{*this, "imgSplash"};
  Label lblVersion{*this, "lblVersion"};

 protected:
  void Form_Load() override;

 private:
  // Brings the running instance forward; the restore is what makes it look
  // at the hand-over file.
  void ActivatePreviousInstance();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_FRM_SPLASH_H_
