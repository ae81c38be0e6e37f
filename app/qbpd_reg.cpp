// qbpd-reg: lists, reads, writes and deletes values of the program's
// settings tree, and lays the installer's default set.
#include "core/settings.h"
#include "platform/places.h"
#include "platform/settings_store.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kOk = 0;
constexpr int kNotFound = 1;
constexpr int kUsage = 2;

constexpr char kUsageText[] =
    "usage: qbpd-reg [--db PATH] COMMAND\n"
    "commands:\n"
    "  list              every key that holds a value\n"
    "  list KEY          the values of KEY as NAME=DATA, in the order made\n"
    "  get KEY NAME      the data of one value\n"
    "  set KEY NAME DATA sets one value, making the key when missing\n"
    "  delete KEY NAME   removes one value\n"
    "  defaults [FILE]   lays the installer's default settings that are\n"
    "                    missing (FILE: default-settings.ini of the\n"
    "                    program's resources)\n"
    "KEY is a path such as \"Software\\Quillbay Picture Desk\\SiteSettings\";\n"
    "an empty NAME (\"\") is the key's default value. Exit status: 0 done,\n"
    "1 not found, 2 usage or failure.\n";

int Usage(std::string_view problem) {
  std::cerr << "qbpd-reg: " << problem << "\n" << kUsageText;
  return kUsage;
}

// Data as one readable line: control characters (a trailing NUL, line
// breaks) are shown as escapes.
std::string Printable(std::string_view data) {
  std::string out;
  for (char c : data) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '\0') {
      out += "\\0";
    } else if (code < 0x20 || code == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X", code);
      out += escape;
    } else {
      out += c;
    }
  }
  return out;
}

bool Holds(qbpd::SettingsStore& store,
           std::string_view key,
           std::string_view name,
           std::string* data) {
  for (const auto& [held, value] : store.List(key)) {
    if (held.size() == name.size() &&
        std::equal(held.begin(), held.end(), name.begin(), [](char a, char b) {
          return std::toupper(static_cast<unsigned char>(a)) ==
                 std::toupper(static_cast<unsigned char>(b));
        })) {
      if (data != nullptr) {
        *data = value;
      }
      return true;
    }
  }
  return false;
}

int Run(const std::vector<std::string>& args) {
  const qbpd::Places places = qbpd::FindPlaces();
  std::string db = places.config + "/settings.db";
  std::size_t at = 0;
  if (at < args.size() && args[at] == "--db") {
    if (at + 1 >= args.size() || args[at + 1].empty()) {
      return Usage("--db needs a path");
    }
    db = args[at + 1];
    at += 2;
  }
  if (at >= args.size()) {
    return Usage("no command given");
  }
  const std::string command = args[at];
  const std::vector<std::string> rest(args.begin() + at + 1, args.end());
  auto store = qbpd::MakeSqliteSettingsStore(db);

  if (command == "list" && rest.empty()) {
    for (const std::string& key : store->Keys()) {
      std::cout << key << "\n";
    }
    return kOk;
  }
  if (command == "list" && rest.size() == 1) {
    const auto values = store->List(rest[0]);
    if (values.empty()) {
      std::cerr << "qbpd-reg: no values under " << rest[0] << "\n";
      return kNotFound;
    }
    for (const auto& [name, data] : values) {
      std::cout << name << "=" << Printable(data) << "\n";
    }
    return kOk;
  }
  if (command == "get" && rest.size() == 2) {
    std::string data;
    if (!Holds(*store, rest[0], rest[1], &data)) {
      std::cerr << "qbpd-reg: no value \"" << rest[1] << "\" under " << rest[0]
                << "\n";
      return kNotFound;
    }
    std::cout << data << "\n";
    return kOk;
  }
  if (command == "set" && rest.size() == 3) {
    if (!store->Write(rest[0], rest[1], rest[2])) {
      std::cerr << "qbpd-reg: could not write to " << db << "\n";
      return kUsage;
    }
    return kOk;
  }
  if (command == "delete" && rest.size() == 2) {
    if (!store->Delete(rest[0], rest[1])) {
      std::cerr << "qbpd-reg: no value \"" << rest[1] << "\" under " << rest[0]
                << "\n";
      return kNotFound;
    }
    return kOk;
  }
  if (command == "defaults" && rest.size() <= 1) {
    std::string file;
    if (rest.empty()) {
      const std::string resources = qbpd::FindResourcesFolder(places);
      if (resources.empty()) {
        std::cerr << "qbpd-reg: the program's resources folder was not found\n";
        return kUsage;
      }
      file = resources + "/default-settings.ini";
    } else {
      file = rest[0];
    }
    int laid = 0;
    const bool ok = qbpd::LayDefaultSettings(
        *store, file, qbpd::InstallerVariables(places.pictures), &laid);
    std::cout << "laid " << laid << (laid == 1 ? " value" : " values")
              << " from " << file << "\n";
    if (!ok) {
      std::cerr << "qbpd-reg: the default settings in " << file
                << " could not all be laid (missing or unreadable file, an "
                   "unknown ${NAME}, or a failed write to "
                << db << ")\n";
      return kUsage;
    }
    return kOk;
  }
  return Usage("unknown command or wrong number of arguments: " + command);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
    std::cout << kUsageText;
    return kOk;
  }
  return Run(args);
}
