// libFuzzer target: what the service does with an upload's fields and file
// (the part of the upload route after the HTTP library has split the
// multipart body): the core's Upload on a real data folder with its SQLite
// store, signed in as the demonstration account or with a code from the
// input. Every answer must be an envelope that can be sent as JSON, an
// accepted file must be a photo by its header and be stored as sent, and
// the album list must stay sendable whatever names were given.

#include "service/core_support.h"
#include "service/service_core.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <map>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qbpd::service::ServiceCore;

constexpr char kPassword[] = "fuzz-demo-password";
constexpr std::size_t kMaxUpload = 256 * 1024;

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

struct Service {
  fs::path folder;
  std::unique_ptr<ServiceCore> core;
  std::string code;
};

Service& TheService() {
  static Service* service = [] {
    auto* made = new Service;
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-upload-fuzz-XXXXXX").string();
    Check(::mkdtemp(pattern.data()) != nullptr);
    made->folder = pattern;
    qbpd::service::ServiceOptions options;
    options.data_dir = made->folder;
    options.seed_demo = true;
    options.demo_password = kPassword;
    options.max_upload_bytes = kMaxUpload;
    made->core = std::make_unique<ServiceCore>(std::move(options));
    const std::optional<json> login = made->core->Call(
        "LoginUser",
        {{"email", qbpd::service::kDemoEmail}, {"password", kPassword}});
    Check(login && (*login)["ok"] == true);
    made->code = (*login)["session"][0];
    std::atexit([] {
      std::error_code ignored;
      fs::remove_all(TheService().folder, ignored);
    });
    return made;
  }();
  return *service;
}

// Whether the answer can go out as JSON (a name that is not UTF-8 would
// make the writer throw).
bool Sendable(const json& answer) {
  try {
    (void)answer.dump();
    return true;
  } catch (const json::exception&) {
    return false;
  }
}

std::string FileText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  Service& service = TheService();
  FuzzedDataProvider in(data, size);
  std::map<std::string, std::string> query;
  query["authcode"] =
      in.ConsumeBool() ? service.code : in.ConsumeRandomLengthString(48);
  query["albumid"] = in.ConsumeRandomLengthString(24);
  query["albumname"] = in.ConsumeRandomLengthString(300);
  query["sourcecode"] = in.ConsumeRandomLengthString(24);
  query["file"] = in.ConsumeRandomLengthString(300);
  const std::string content = in.ConsumeRemainingBytesAsString();

  const json answer = service.core->Upload(query, content);
  Check(answer.is_object() && answer["ok"].is_boolean());
  Check(Sendable(answer));
  if (answer["ok"] != true) {
    Check(answer["errCode"].is_string());
    return 0;
  }
  Check(content.size() <= kMaxUpload);
  Check(qbpd::service::DetectPhotoType(content).has_value());
  const std::string album = answer["albumId"];
  const std::string image = answer["imageId"];
  Check(!album.empty() && !image.empty() && image[0] == 'P');
  // Stored as sent, whole.
  bool found = false;
  for (const auto& entry :
       fs::directory_iterator(service.folder / "photos" / album)) {
    found = found || (entry.path().extension() != ".part" &&
                      FileText(entry.path()) == content);
  }
  Check(found);
  const std::optional<json> albums =
      service.core->Call("GetAlbumList", {{"authCode", service.code}});
  Check(albums && (*albums)["ok"] == true && Sendable(*albums));
  return 0;
}
