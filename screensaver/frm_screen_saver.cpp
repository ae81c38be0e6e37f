#include "screensaver/frm_screen_saver.h"

#include "core/quil_mod.h"
#include "platform/forms/keys.h"
#include "presentation/picture_buttons.h"
#include "screensaver/scr_store.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 6600;
constexpr int kFormHeight = 3900;
constexpr int kMargin = 240;
constexpr int kFrameTop = 720;
constexpr int kFrameWidth = kFormWidth - 2 * kMargin;
constexpr int kFrameHeight = kFormHeight - kFrameTop - 600;
constexpr int kInner = 240;
constexpr int kFieldWidth = kFrameWidth - 2 * kInner - 300;
constexpr int kRow = 285;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;

constexpr char kOkButton[] = "26";
constexpr char kCancelButton[] = "25";

constexpr char kHead[] =
    "You can create a new screensaver or add photos to an existing one.";
constexpr char kNewOption[] = "Create a new screensaver";
constexpr char kNameLabel[] = "Enter a name for your screensaver :";
constexpr char kAddOption[] = "Add to an existing screensaver";
constexpr char kPrevLabel[] =
    "Select the screensaver you would like to add your photos to :";

constexpr char kNoName[] = "Please enter a name for your screensaver.";
constexpr char kBrackets[] = "Screensaver name should not contain [ or ] .";
// The two wordings are the program's own, one for each button.
constexpr char kExistsOk[] =
    "A screensaver with this name exists already. Please provide another "
    "name for your screensaver";
constexpr char kExistsContinue[] =
    "A screensaver with this name already exists. Please provide another "
    "name for your screensaver.";
constexpr char kWriteFailed[] = "Unable to save the screensaver.";

void PlaceButtons(PictureButton& ok, PictureButton& cancel, int top) {
  cancel.Move(kFrameWidth - kInner - kButtonWidth, top, kButtonWidth,
              kButtonHeight);
  ok.Move(cancel.Left() - 120 - kButtonWidth, top, kButtonWidth, kButtonHeight);
}

}  // namespace

frmScreenSaver::frmScreenSaver(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  SetKeyPreview(true);
  Move(0, 0, kFormWidth, kFormHeight);
  lblHead.Move(kMargin, 240, kFrameWidth, 400);
  lblHead.SetCaption(kHead);
  const int buttons_top = kFrameHeight - kButtonHeight - kInner;

  for (Frame* frame : {&fraMultiCont, &fraSingleCont, &fraPrevCont}) {
    frame->Move(kMargin, kFrameTop, kFrameWidth, kFrameHeight);
    frame->SetVisible(false);
  }
  for (Control* c : std::initializer_list<Control*>{
           &optnewscreensaver, &lblNewName, &txtNewscreensaver, &optAddtoprev,
           &cboPrevSsaver, &imgOK, &imgCancel}) {
    c->SetContainer("fraMultiCont");
  }
  optnewscreensaver.Move(kInner, 180, kFieldWidth, kRow);
  optnewscreensaver.SetCaption(kNewOption);
  lblNewName.Move(kInner + 300, 540, kFieldWidth, kRow);
  lblNewName.SetCaption(kNameLabel);
  txtNewscreensaver.Move(kInner + 300, 840, kFieldWidth, 315);
  optAddtoprev.Move(kInner, 1320, kFieldWidth, kRow);
  optAddtoprev.SetCaption(kAddOption);
  cboPrevSsaver.Move(kInner + 300, 1680, kFieldWidth, 315);
  cboPrevSsaver.SetStyle(2);
  PlaceButtons(imgOK, imgCancel, buttons_top);

  for (Control* c :
       std::initializer_list<Control*>{&lblSingleName, &txtSingleScrSaver,
                                       &imgSingleContinue, &imgSingleCancel}) {
    c->SetContainer("fraSingleCont");
  }
  lblSingleName.Move(kInner, 360, kFieldWidth, kRow);
  lblSingleName.SetCaption(kNameLabel);
  txtSingleScrSaver.Move(kInner, 720, kFieldWidth, 315);
  PlaceButtons(imgSingleContinue, imgSingleCancel, buttons_top);

  for (Control* c : std::initializer_list<Control*>{
           &lblPrevName, &cboScrSaverList, &imgPrevAddPhotos, &imgPrevCancel}) {
    c->SetContainer("fraPrevCont");
  }
  lblPrevName.Move(kInner, 360, kFieldWidth, kRow);
  lblPrevName.SetCaption(kPrevLabel);
  cboScrSaverList.Move(kInner, 720, kFieldWidth, 315);
  cboScrSaverList.SetStyle(2);
  PlaceButtons(imgPrevAddPhotos, imgPrevCancel, buttons_top);

  On("imgOK", "Click", &frmScreenSaver::imgOK_Click);
  On("imgSingleContinue", "Click", &frmScreenSaver::imgSingleContinue_Click);
  On("imgPrevAddPhotos", "Click", &frmScreenSaver::imgPrevAddPhotos_Click);
  for (const char* cancel : {"imgCancel", "imgSingleCancel", "imgPrevCancel"}) {
    On(cancel, "Click", &frmScreenSaver::Cancel_Click);
  }
  // Choosing an entry or typing a name chooses its option.
  On("cboPrevSsaver", "Click",
     [this](EventArgs&) { optAddtoprev.SetValue(true); });
  On("txtNewscreensaver", "Change", [this](EventArgs&) {
    if (!optnewscreensaver.Value()) {
      optnewscreensaver.SetValue(true);
    }
  });
}

void frmScreenSaver::Form_Load() {
  Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  WirePictureButton(*this, s, imgOK, kOkButton);
  WirePictureButton(*this, s, imgSingleContinue, kOkButton);
  WirePictureButton(*this, s, imgPrevAddPhotos, kOkButton);
  WirePictureButton(*this, s, imgCancel, kCancelButton);
  WirePictureButton(*this, s, imgSingleCancel, kCancelButton);
  WirePictureButton(*this, s, imgPrevCancel, kCancelButton);
  imgOK.SetTag("OK");
  imgSingleContinue.SetTag("Continue");
  imgPrevAddPhotos.SetTag("Add photos");

  MakeScrIniIfMissing(s.gsScrIniPath);
  RepairScreensavers(s.gsScrIniPath);
  s.gsaScrNames = ReadScreensaverNames(s.gsScrIniPath);
  s.giSsaverCount = static_cast<int>(s.gsaScrNames.size());
  for (ComboBox* box : {&cboPrevSsaver, &cboScrSaverList}) {
    box->Clear();
    for (const std::string& name : s.gsaScrNames) {
      box->AddItem(name);
    }
    if (box->ListCount() > 0) {
      box->SetListIndex(0);
    }
  }
  optnewscreensaver.SetValue(true);

  Frame* shown = &fraMultiCont;
  if (s.giSsaverCount == 0 || (s.gbScrFromMenu && s.gbScrCreateNew)) {
    shown = &fraSingleCont;
  } else if (s.gbScrFromMenu) {
    shown = &fraPrevCont;
  }
  shown->SetVisible(true);
}

void frmScreenSaver::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyEscape) {
    KeyAscii = 0;
    Cancel_Click();
  }
}

bool frmScreenSaver::ValidName(TextBox& box, const char* exists_message) {
  const Session& s = app_.session();
  const std::string name = Trim(box.Text());
  box.SetText(name);
  const char* problem = nullptr;
  if (name.empty()) {
    problem = kNoName;
  } else if (name.find_first_of("[]") != std::string::npos) {
    problem = kBrackets;
  } else if (HasScreensaverName(s.gsaScrNames, name)) {
    problem = exists_message;
  }
  if (problem == nullptr) {
    return true;
  }
  host().MsgBox(problem, kMbInformation, s.gsAppTitle);
  box.SetFocus();
  return false;
}

void frmScreenSaver::imgOK_Click() {
  if (optnewscreensaver.Value()) {
    if (ValidName(txtNewscreensaver, kExistsOk)) {
      Create(txtNewscreensaver.Text());
    }
    return;
  }
  if (cboPrevSsaver.ListIndex() >= 0) {
    AddTo(cboPrevSsaver.List(cboPrevSsaver.ListIndex()));
  }
}

void frmScreenSaver::imgSingleContinue_Click() {
  if (ValidName(txtSingleScrSaver, kExistsContinue)) {
    Create(txtSingleScrSaver.Text());
  }
}

void frmScreenSaver::imgPrevAddPhotos_Click() {
  if (cboScrSaverList.ListIndex() >= 0) {
    AddTo(cboScrSaverList.List(cboScrSaverList.ListIndex()));
  }
}

void frmScreenSaver::Cancel_Click() {
  Unload();
}

void frmScreenSaver::Create(const std::string& name) {
  Session& s = app_.session();
  int count = 0;
  if (!CreateScreensaver(s.gsScrIniPath, name, s.gdicSelectedPhotos.Items(),
                         count)) {
    host().MsgBox(kWriteFailed, kMbStop, s.gsAppTitle);
    return;
  }
  s.gsCurrentScrName = name;
  s.gsaScrNames.push_back(name);
  s.giSsaverCount = count;
  s.gbScrUpdated = false;
  ShowStep2();
}

void frmScreenSaver::AddTo(const std::string& name) {
  Session& s = app_.session();
  int added = 0;
  if (!AddPhotosToScreensaver(s.gsScrIniPath, name,
                              s.gdicSelectedPhotos.Items(), added)) {
    host().MsgBox(kWriteFailed, kMbStop, s.gsAppTitle);
    return;
  }
  s.gsCurrentScrName = name;
  s.gbScrUpdated = true;
  ShowStep2();
}

void frmScreenSaver::ShowStep2() {
  Unload();
  app_.forms().Get("frmScreensaverstep2").Show(/*modal=*/true);
}

}  // namespace qbpd
