// Files made for a script, and files acted on behind the program's back:
// deleted, renamed, made read-only, cut short or overwritten while the
// program runs.
#include "app/driver/runner.h"
#include "platform/forms/host.h"
#include "platform/image_operations.h"

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace qbpd::script {
namespace {

namespace fs = std::filesystem;

// "FF" "d8" ... as bytes.
std::string ParseBytes(const std::vector<Token>& t, size_t from) {
  std::string bytes;
  for (size_t i = from; i < t.size(); ++i) {
    const std::string& h = t[i].text;
    if (t[i].quoted || h.size() != 2 ||
        !std::isxdigit(static_cast<unsigned char>(h[0])) ||
        !std::isxdigit(static_cast<unsigned char>(h[1]))) {
      throw ScriptSyntaxError("expected bytes as two hex digits each, not \"" +
                              h + "\"");
    }
    bytes += static_cast<char>(std::stoi(h, nullptr, 16));
  }
  if (bytes.empty()) {
    throw ScriptSyntaxError("expected at least one byte");
  }
  return bytes;
}

void ChangeWritePermission(const std::string& path, bool writable) {
  std::error_code ec;
  fs::permissions(path,
                  writable ? fs::perms::owner_write
                           : fs::perms::owner_write | fs::perms::group_write |
                                 fs::perms::others_write,
                  writable ? fs::perm_options::add : fs::perm_options::remove,
                  ec);
  if (ec) {
    throw HostAbort("Can't make " + path +
                    (writable ? " writable: " : " read-only: ") + ec.message());
  }
}

uintmax_t FileSize(const std::string& path, const std::string& doing) {
  std::error_code ec;
  uintmax_t size = fs::file_size(path, ec);
  if (ec) {
    throw HostAbort("Can't " + doing + " " + path + ": " + ec.message());
  }
  return size;
}

}  // namespace

std::optional<Step> Runner::ParseFileStep(const std::vector<Token>& t) {
  const std::string& verb = t[0].text;
  const std::string what = t.size() > 1 ? t[1].text : "";
  Step s;
  if (verb == "make" && t.size() >= 4 && what == "photos") {
    // make photos N "folder" [WxH]: photo001.jpg ... in colour gradients.
    int count = 0;
    int width = 160;
    int height = 120;
    try {
      count = std::stoi(t[2].text);
      if (t.size() == 5) {
        size_t x = t[4].text.find('x');
        width = std::stoi(t[4].text.substr(0, x));
        height = std::stoi(t[4].text.substr(x + 1));
      }
    } catch (const std::exception&) {
      count = 0;
    }
    if (count <= 0 || t.size() > 5 || width <= 0 || height <= 0) {
      throw ScriptSyntaxError(
          "expected: make photos N \"folder\" [WIDTHxHEIGHT]");
    }
    std::string folder = t[3].text;
    s.run = [folder, count, width, height] {
      std::error_code ec;
      fs::create_directories(folder, ec);
      for (int i = 1; i <= count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "/photo%03d.jpg", i);
        if (!WriteTestPhoto(folder + name, width, height, i)) {
          throw HostAbort("Can't write a photo in " + folder);
        }
      }
    };
  } else if (verb == "make" && what == "photo") {
    // make photo "path" WxH [orientation N] [preview same|turned|none]
    const std::string usage =
        "make photo \"path\" WIDTHxHEIGHT [orientation 1-8] "
        "[preview same|turned|none]";
    if (t.size() < 4 || !t[2].quoted) {
      throw ScriptSyntaxError("expected: " + usage);
    }
    std::string path = t[2].text;
    size_t x = t[3].text.find('x');
    int width = 0;
    int height = 0;
    try {
      width = std::stoi(t[3].text.substr(0, x));
      height = std::stoi(t[3].text.substr(x + 1));
    } catch (const std::exception&) {
    }
    if (x == std::string::npos || width <= 0 || height <= 0) {
      throw ScriptSyntaxError("expected: " + usage);
    }
    int orientation = 1;
    TestPreview preview = TestPreview::kNone;
    bool exif = false;
    for (size_t i = 4; i < t.size(); i += 2) {
      if (i + 1 >= t.size()) {
        throw ScriptSyntaxError("expected: " + usage);
      }
      exif = true;
      if (t[i].text == "orientation") {
        orientation = Number(t[i + 1]);
        if (orientation < 1 || orientation > 8) {
          throw ScriptSyntaxError("an EXIF orientation is 1 to 8");
        }
      } else if (t[i].text == "preview" && t[i + 1].text == "same") {
        preview = TestPreview::kSame;
      } else if (t[i].text == "preview" && t[i + 1].text == "turned") {
        preview = TestPreview::kTurned;
      } else if (t[i].text != "preview" || t[i + 1].text != "none") {
        throw ScriptSyntaxError("expected: " + usage);
      }
    }
    s.run = [path, width, height, orientation, preview, exif] {
      const bool ok = exif ? WriteTestPhotoWithExif(path, width, height, 1,
                                                    orientation, preview)
                           : WriteTestPhoto(path, width, height, 1);
      if (!ok) {
        throw HostAbort("Can't write the photo " + path);
      }
    };
  } else if (verb == "make" && t.size() == 3 &&
             (what == "read-only" || what == "writable")) {
    std::string path = t[2].text;
    bool writable = what == "writable";
    s.run = [path, writable] { ChangeWritePermission(path, writable); };
  } else if (verb == "make") {
    if (t.size() != 3 || what != "folder") {
      throw ScriptSyntaxError(
          "expected: make folder|read-only|writable|photo \"path\"");
    }
    std::string path = t[2].text;
    s.run = [path] {
      std::error_code ec;
      fs::create_directories(path, ec);
      if (ec) {
        throw HostAbort("Can't make folder " + path + ": " + ec.message());
      }
    };
  } else if (verb == "write" && what == "bytes") {
    // write bytes "path" [at N] HH HH ...
    if (t.size() < 4 || !t[2].quoted) {
      throw ScriptSyntaxError(
          "expected: write bytes \"path\" [at OFFSET] HEX HEX ...");
    }
    std::string path = t[2].text;
    std::optional<long long> offset;
    size_t first = 3;
    if (t[3].text == "at" && !t[3].quoted) {
      if (t.size() < 5) {
        throw ScriptSyntaxError("expected an offset after at");
      }
      offset = Number(t[4]);
      if (*offset < 0) {
        throw ScriptSyntaxError("the offset can't be negative");
      }
      first = 5;
    }
    std::string bytes = ParseBytes(t, first);
    s.run = [path, offset, bytes] {
      if (!offset) {
        std::ofstream f(path, std::ios::binary | std::ios::trunc);
        f << bytes;
        if (!f) {
          throw HostAbort("Can't write file " + path);
        }
        return;
      }
      uintmax_t size = FileSize(path, "overwrite bytes of");
      if (static_cast<uintmax_t>(*offset) > size) {
        throw HostAbort("Can't write at " + std::to_string(*offset) + " in " +
                        path + ": it has only " + std::to_string(size) +
                        " bytes");
      }
      std::fstream f(path, std::ios::binary | std::ios::in | std::ios::out);
      f.seekp(*offset);
      f << bytes;
      if (!f) {
        throw HostAbort("Can't write file " + path);
      }
    };
  } else if (verb == "write") {
    if (t.size() != 4 || what != "file") {
      throw ScriptSyntaxError("expected: write file \"path\" \"content\"");
    }
    std::string path = t[2].text;
    std::string content = t[3].text;
    s.run = [path, content] {
      std::ofstream f(path, std::ios::binary);
      f << content;
      if (!f) {
        throw HostAbort("Can't write file " + path);
      }
    };
  } else if (verb == "copy") {
    Require(t, 3, "copy \"from\" \"to\"");
    std::string from = t[1].text;
    std::string to = t[2].text;
    s.run = [from, to] {
      std::error_code error;
      fs::copy(
          from, to,
          fs::copy_options::recursive | fs::copy_options::overwrite_existing,
          error);
      if (error) {
        throw HostAbort("Can't copy " + from + " to " + to + ": " +
                        error.message());
      }
    };
  } else if (verb == "delete") {
    Require(t, 2, "delete \"path\"");
    std::string path = t[1].text;
    s.run = [path] {
      std::error_code ec;
      if (!fs::exists(fs::symlink_status(path, ec))) {
        throw HostAbort("Can't delete " + path + ": there is no such file");
      }
      fs::remove_all(path, ec);
      if (ec) {
        throw HostAbort("Can't delete " + path + ": " + ec.message());
      }
    };
  } else if (verb == "rename") {
    Require(t, 3, "rename \"from\" \"to\"");
    std::string from = t[1].text;
    std::string to = t[2].text;
    s.run = [from, to] {
      std::error_code ec;
      if (fs::exists(fs::symlink_status(to, ec))) {
        throw HostAbort("Can't rename " + from + " to " + to +
                        ": that name is taken");
      }
      fs::rename(from, to, ec);
      if (ec) {
        throw HostAbort("Can't rename " + from + " to " + to + ": " +
                        ec.message());
      }
    };
  } else if (verb == "truncate") {
    Require(t, 3, "truncate \"path\" BYTES");
    std::string path = t[1].text;
    int bytes = Number(t[2]);
    if (bytes < 0) {
      throw ScriptSyntaxError("a file can't be cut to fewer than 0 bytes");
    }
    s.run = [path, bytes] {
      uintmax_t size = FileSize(path, "truncate");
      if (static_cast<uintmax_t>(bytes) > size) {
        throw HostAbort("Can't truncate " + path + " to " +
                        std::to_string(bytes) + " bytes: it has only " +
                        std::to_string(size));
      }
      std::error_code ec;
      fs::resize_file(path, static_cast<uintmax_t>(bytes), ec);
      if (ec) {
        throw HostAbort("Can't truncate " + path + ": " + ec.message());
      }
    };
  } else {
    return std::nullopt;
  }
  return s;
}

}  // namespace qbpd::script
