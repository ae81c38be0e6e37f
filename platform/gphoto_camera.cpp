// libgphoto2 behind the camera interfaces: detection, the USB identity check
// of the device monitor, and the open camera of the transfer helper.
#include "platform/camera_connection.h"
#include "platform/camera_devices.h"

#include <gphoto2/gphoto2-camera.h>
#include <gphoto2/gphoto2-port-info-list.h>
#include <gphoto2/gphoto2-port-result.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <new>

namespace qbpd {
namespace {

constexpr char kDirectoryBrowse[] = "Directory Browse";
constexpr int kStillImageClass = 6;

std::string Error(int code) {
  return gp_result_as_string(code);
}

struct ContextFree {
  void operator()(GPContext* c) const { gp_context_unref(c); }
};
struct ListFree {
  void operator()(CameraList* l) const { gp_list_free(l); }
};
struct AbilitiesFree {
  void operator()(CameraAbilitiesList* l) const { gp_abilities_list_free(l); }
};
struct PortsFree {
  void operator()(GPPortInfoList* l) const { gp_port_info_list_free(l); }
};
using Context = std::unique_ptr<GPContext, ContextFree>;
using List = std::unique_ptr<CameraList, ListFree>;
using Abilities = std::unique_ptr<CameraAbilitiesList, AbilitiesFree>;
using Ports = std::unique_ptr<GPPortInfoList, PortsFree>;

List NewList() {
  CameraList* list = nullptr;
  gp_list_new(&list);
  return List(list);
}

Abilities LoadAbilities(GPContext* context) {
  CameraAbilitiesList* list = nullptr;
  if (gp_abilities_list_new(&list) < GP_OK) {
    return nullptr;
  }
  Abilities owned(list);
  if (gp_abilities_list_load(list, context) < GP_OK) {
    return nullptr;
  }
  return owned;
}

Ports LoadPorts() {
  GPPortInfoList* list = nullptr;
  if (gp_port_info_list_new(&list) < GP_OK) {
    return nullptr;
  }
  Ports owned(list);
  if (gp_port_info_list_load(list) < GP_OK) {
    return nullptr;
  }
  return owned;
}

class GphotoCamera final : public CameraConnection {
 public:
  GphotoCamera(Context context, Camera* camera)
      : context_(std::move(context)), camera_(camera) {}
  ~GphotoCamera() override {
    gp_camera_exit(camera_, context_.get());
    gp_camera_unref(camera_);
  }

  bool ListFiles(std::vector<CameraFile>& files, std::string& error) override {
    files.clear();
    std::deque<std::string> folders{"/"};
    while (!folders.empty()) {
      const std::string folder = folders.front();
      folders.pop_front();
      List names = NewList();
      int r = gp_camera_folder_list_folders(camera_, folder.c_str(),
                                            names.get(), context_.get());
      if (r < GP_OK) {
        error = Error(r);
        return false;
      }
      for (int i = 0; i < gp_list_count(names.get()); ++i) {
        const char* name = nullptr;
        gp_list_get_name(names.get(), i, &name);
        folders.push_back((folder == "/" ? "" : folder) + "/" + name);
      }
      List entries = NewList();
      r = gp_camera_folder_list_files(camera_, folder.c_str(), entries.get(),
                                      context_.get());
      if (r < GP_OK) {
        error = Error(r);
        return false;
      }
      for (int i = 0; i < gp_list_count(entries.get()); ++i) {
        const char* name = nullptr;
        gp_list_get_name(entries.get(), i, &name);
        files.push_back({folder, name});
      }
    }
    return true;
  }

  // The camera library hands each piece straight to `take`: no buffer of
  // its own that grows and is copied, mapped and unmapped for every photo.
  bool DownloadPieces(const CameraFile& file,
                      const CameraPieces& take,
                      std::string& error) override {
    Sink sink{&take};
    ::CameraFile* raw = nullptr;
    int r = gp_file_new_from_handler(&raw, &handler_, &sink);
    if (r < GP_OK) {
      error = Error(r);
      return false;
    }
    r = gp_camera_file_get(camera_, file.folder.c_str(), file.name.c_str(),
                           GP_FILE_TYPE_NORMAL, raw, context_.get());
    gp_file_unref(raw);
    if (sink.refused) {
      error = "A piece of " + file.name + " could not be kept.";
      return false;
    }
    if (r < GP_OK) {
      error = Error(r);
      return false;
    }
    return true;
  }

  bool Delete(const CameraFile& file, std::string& error) override {
    const int r = gp_camera_file_delete(camera_, file.folder.c_str(),
                                        file.name.c_str(), context_.get());
    if (r < GP_OK) {
      error = Error(r);
      return false;
    }
    return true;
  }

 private:
  // Where the pieces of the download under way go.
  struct Sink {
    const CameraPieces* take;
    std::uint64_t size = 0;
    bool refused = false;
  };

  static int SinkSize(void* sink, std::uint64_t* size) {
    *size = static_cast<Sink*>(sink)->size;
    return GP_OK;
  }
  static int SinkRead(void*, unsigned char*, std::uint64_t* size) {
    *size = 0;
    return GP_ERROR_NOT_SUPPORTED;
  }
  static int SinkWrite(void* raw, unsigned char* data, std::uint64_t* size) {
    auto* sink = static_cast<Sink*>(raw);
    try {
      if (!(*sink->take)(data, static_cast<std::size_t>(*size))) {
        sink->refused = true;
        return GP_ERROR_IO;
      }
    } catch (const std::bad_alloc&) {
      sink->refused = true;
      return GP_ERROR_NO_MEMORY;
    }
    sink->size += *size;
    return GP_OK;
  }

  Context context_;
  Camera* camera_;
  CameraFileHandler handler_{&SinkSize, &SinkRead, &SinkWrite};
};

}  // namespace

std::string CameraDeviceText(const DetectedCamera& camera) {
  return camera.model + " (" + camera.port + ")";
}

DetectedCamera ParseCameraDeviceText(const std::string& device) {
  DetectedCamera camera;
  const std::size_t open = device.rfind(" (");
  if (open != std::string::npos && !device.empty() && device.back() == ')') {
    camera.model = device.substr(0, open);
    camera.port = device.substr(open + 2, device.size() - open - 3);
  } else if (device.find(':') != std::string::npos &&
             device.find(' ') == std::string::npos) {
    camera.port = device;
  } else {
    camera.model = device;
  }
  return camera;
}

std::vector<DetectedCamera> DetectCameras() {
  std::vector<DetectedCamera> cameras;
  Context context(gp_context_new());
  List list = NewList();
  if (!context || !list ||
      gp_camera_autodetect(list.get(), context.get()) < GP_OK) {
    return cameras;
  }
  for (int i = 0; i < gp_list_count(list.get()); ++i) {
    const char* name = nullptr;
    const char* port = nullptr;
    gp_list_get_name(list.get(), i, &name);
    gp_list_get_value(list.get(), i, &port);
    cameras.push_back({name ? name : "", port ? port : ""});
  }
  return cameras;
}

bool IsCameraUsbDevice(int vendor, int product, int device_class) {
  if (device_class == kStillImageClass) {
    return true;
  }
  Context context(gp_context_new());
  Abilities abilities = LoadAbilities(context.get());
  if (!abilities) {
    return false;
  }
  const int count = gp_abilities_list_count(abilities.get());
  for (int i = 0; i < count; ++i) {
    CameraAbilities a;
    if (gp_abilities_list_get_abilities(abilities.get(), i, &a) >= GP_OK &&
        a.usb_vendor == vendor && a.usb_product == product && vendor != 0) {
      return true;
    }
  }
  return false;
}

std::unique_ptr<CameraConnection> OpenCamera(const std::string& device,
                                             std::string& error) {
  DetectedCamera wanted = ParseCameraDeviceText(device);
  if (wanted.port.empty()) {
    for (const DetectedCamera& found : DetectCameras()) {
      if (found.model == wanted.model) {
        wanted.port = found.port;
        break;
      }
    }
    if (wanted.port.empty()) {
      error = "No camera " + device + " is connected.";
      return nullptr;
    }
  }
  if (wanted.model.empty() && wanted.port.rfind("disk:", 0) == 0) {
    wanted.model = kDirectoryBrowse;
  }
  Context context(gp_context_new());
  Abilities abilities = LoadAbilities(context.get());
  Ports ports = LoadPorts();
  if (!context || !abilities || !ports) {
    error = "The camera library could not start.";
    return nullptr;
  }
  Camera* camera = nullptr;
  if (gp_camera_new(&camera) < GP_OK) {
    error = "The camera library could not start.";
    return nullptr;
  }
  auto give_up = [&](int code) -> std::unique_ptr<CameraConnection> {
    error = device + ": " + Error(code);
    gp_camera_unref(camera);
    return nullptr;
  };
  int r = GP_OK;
  if (!wanted.model.empty()) {
    const int model =
        gp_abilities_list_lookup_model(abilities.get(), wanted.model.c_str());
    if (model < GP_OK) {
      return give_up(model);
    }
    CameraAbilities a;
    r = gp_abilities_list_get_abilities(abilities.get(), model, &a);
    if (r < GP_OK || (r = gp_camera_set_abilities(camera, a)) < GP_OK) {
      return give_up(r);
    }
  }
  const int port =
      gp_port_info_list_lookup_path(ports.get(), wanted.port.c_str());
  if (port < GP_OK) {
    return give_up(port);
  }
  GPPortInfo info;
  r = gp_port_info_list_get_info(ports.get(), port, &info);
  if (r < GP_OK || (r = gp_camera_set_port_info(camera, info)) < GP_OK) {
    return give_up(r);
  }
  r = gp_camera_init(camera, context.get());
  if (r < GP_OK) {
    return give_up(r);
  }
  return std::make_unique<GphotoCamera>(std::move(context), camera);
}

}  // namespace qbpd
