// libFuzzer target: the profile-file parser over any text. Reading must not
// fail, and a value written into the file must read back as written, with
// every other section still there.

#include "platform/profile_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// Section names are matched without regard to the case of ASCII letters.
std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return text;
}

// Never destroyed, so that it outlives the exit handler that removes it.
const std::string& Folder() {
  static const std::string* folder = [] {
    auto* made = new std::string("/tmp/qbpd-profile-fuzz-XXXXXX");
    if (::mkdtemp(made->data()) == nullptr) {
      std::abort();
    }
    // libFuzzer ends the process with exit(): the folder goes with it.
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(Folder(), ignored);
    });
    return made;
  }();
  return *folder;
}

const std::string& FilePath() {
  static const std::string path = Folder() + "/scr.ini";
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string& path = FilePath();
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data),
              static_cast<std::streamsize>(size));
  }
  const auto sections = qbpd::GetProfileSectionNames(path);
  for (const auto& section : sections) {
    for (const auto& [key, value] : qbpd::GetProfileSection(path, section)) {
      const std::string read =
          qbpd::GetProfileString(path, section, key, "\x01missing");
      Check(read.size() < qbpd::kProfileValueBuffer);
    }
  }
  // A write of a fresh key keeps every section and reads back.
  if (qbpd::WriteProfileString(path, "Fuzz Section", "FuzzKey", "fuzz value")) {
    Check(qbpd::GetProfileString(path, "Fuzz Section", "FuzzKey", "") ==
          "fuzz value");
    const auto after = qbpd::GetProfileSectionNames(path);
    for (const auto& section : sections) {
      bool kept = false;
      for (const auto& name : after) {
        kept = kept || Lower(name) == Lower(section);
      }
      Check(kept);
    }
  }
  return 0;
}
