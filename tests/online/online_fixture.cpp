#include "tests/online/online_fixture.h"

#include "platform/forms/runtime_error.h"

#include <vips/vips8>

namespace qbpd::testing_support {

namespace fs = std::filesystem;

OnlineTest::OnlineTest() {
  fs::create_directories(photos());
  fs::create_directories(dir_.path() / "Desktop");
}

OnlineTest::~OnlineTest() {
  app_.reset();
}

void OnlineTest::WritePhotos(int count) {
  for (int i = 1; i <= count; ++i) {
    ASSERT_TRUE(WriteTestPhoto(Photo(i), 64, 48, i));
  }
}

void OnlineTest::WriteDrawing(const std::string& name, int level) {
  vips::VImage::black(40, 30, vips::VImage::option()->set("bands", 3))
      .linear(1.0, level)
      .cast(VIPS_FORMAT_UCHAR)
      .pngsave((photos() / name).c_str());
}

std::string OnlineTest::Photo(int n) const {
  char name[32];
  std::snprintf(name, sizeof name, "photo%03d.jpg", n);
  return (photos() / name).string();
}

void OnlineTest::Start() {
  PlatformServices services;
  services.settings = MakeMemorySettingsStore();
  services.places.config = (dir_.path() / "config").string();
  services.places.data = (dir_.path() / "data").string();
  services.places.cache = (dir_.path() / "cache").string();
  services.places.desktop = (dir_.path() / "Desktop").string();
  services.places.pictures = dir_.path().string();
  services.images =
      MakeVipsImageOperations((dir_.path() / "cache" / "t").string());
  if (wrap_images_) {
    services.images = wrap_images_(std::move(services.images));
  }
  services.make_display = [] { return MakeVipsDisplayControl(); };
  services.resources = FindResourcesFolder(services.places);
  auto launcher = MakeRecordingLauncher();
  launcher_ = launcher.get();
  services.launcher = std::move(launcher);
  services.make_transport = make_transport_;
  services.numbers = numbers_;
  services.installer = std::move(installer_);
  services.upgrade_key = upgrade_key_;
  if (!real_client_) {
    services.make_client = [this] { return ForwardTo(*client_); };
    services.internet_check = [this](const std::string&) {
      ++internet_checks_;
      return internet_;
    };
  }
  SettingsStore& store = *services.settings;
  auto write = [&store](std::string_view key, std::string_view name,
                        std::string_view value) {
    EXPECT_TRUE(store.Write(key, name, value));
  };
  write(kSettingsKey, "LastOpenFolderInPreviousSession", "False");
  write(kSettingsKey, "DefaultFolder", photos().string());
  write(kDisplayKey, "ZoomSettings", "FitToWidth");
  write(kDisplayKey, "NoOfRecentFolders", "5");
  write(kRootKey, "Version", "1.0.0");
  write(kRootKey, "URL", site_);
  write(kRootKey, "IP", address_);
  write(kSettingsKey, "AutoLogin", "False");
  auto host = std::make_unique<ScriptedHost>();
  host_ = host.get();
  client_ = std::make_unique<ScriptedServiceClient>(*host_);
  app_ = std::make_unique<Application>(std::move(host), std::move(services),
                                       RegisterProgram);
  host_->SetIdleHook([this] { app_->forms().CollectGarbage(); });
  app_->Start("");
  Run();
  try {
    host_->Advance(500);
  } catch (const HostAbort& abort) {
    ADD_FAILURE() << "the start stopped: " << abort.message();
  }
}

void OnlineTest::Select(int count) {
  if (count == session().gdicPhotoList.Count()) {
    // Every photo, also those whose thumbnails are not loaded yet.
    user::Click(main().imgSelectAll);
  } else {
    for (int i = 0; i < count; ++i) {
      user::SetCheck(main().ctrlQuilImage[i], true);
    }
  }
  ASSERT_EQ(session().gdicSelectedPhotos.Count(), count);
}

void OnlineTest::StoreLogin(const std::string& user,
                            const std::string& password,
                            const std::string& auto_login) {
  ASSERT_TRUE(settings().Write(kSettingsKey, "UserName", user));
  ASSERT_TRUE(settings().Write(kSettingsKey, "EncryptedPassword",
                               EncryptPassword(password)));
  ASSERT_TRUE(settings().Write(kSettingsKey, "AutoLogin", auto_login));
}

void OnlineTest::QueueClick(const std::string& form,
                            const std::string& control) {
  host_->Queue("click " + form + "." + control, [this, form, control] {
    user::Click(app_->forms().Get(form).control(control));
  });
}

void OnlineTest::QueueClickInside(const std::string& form,
                                  const std::string& control,
                                  int skip) {
  host_->QueueInside(
      "click " + form + "." + control,
      [this, form, control] {
        user::Click(app_->forms().Get(form).control(control));
      },
      skip);
}

void OnlineTest::QueueText(const std::string& form,
                           const std::string& control,
                           const std::string& text) {
  host_->Queue("set " + form + "." + control, [this, form, control, text] {
    app_->forms().Get(form).control(control).SetProperty("Text", Value(text));
  });
}

void OnlineTest::ExpectBox(const std::string& text) {
  host_->QueueMsgBoxAnswer("expect " + text, [text](const MsgBoxCall& call) {
    EXPECT_EQ(call.prompt, text);
    return kIdOk;
  });
}

void OnlineTest::Run() {
  try {
    host_->Run();
  } catch (const HostAbort& abort) {
    ADD_FAILURE() << "the run stopped: " << abort.message();
  }
}

std::vector<std::string> OnlineTest::Messages() const {
  std::vector<std::string> texts;
  for (const MsgBoxCall& call : host_->MessageBoxes()) {
    texts.push_back(call.prompt);
  }
  return texts;
}

LoginUserReply LoginOk(const std::string& code, const std::string& user) {
  LoginUserReply r;
  r.session = {code, user};
  return r;
}

GetAlbumListReply Albums(const std::vector<std::string>& ids,
                         const std::vector<std::string>& names) {
  GetAlbumListReply r;
  r.albums = TextGrid::FromRows({ids, names});
  return r;
}

}  // namespace qbpd::testing_support
