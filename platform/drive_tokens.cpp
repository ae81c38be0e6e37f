#include "platform/drive_tokens.h"

#include "platform/atomic_file.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>

namespace qbpd {
namespace {

constexpr char kFirstLetter = 'D';
constexpr char kLastLetter = 'Z';

std::string Upper(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

}  // namespace

std::vector<DriveToken> ReadDriveTokens(const std::string& table) {
  std::vector<DriveToken> tokens;
  std::ifstream in(table);
  std::string line;
  while (std::getline(in, line)) {
    if (line.size() > 3 && line[2] == '\t' && line[3] == '/') {
      tokens.push_back({line.substr(0, 2), line.substr(3)});
    }
  }
  return tokens;
}

bool AssignDriveTokens(const std::string& table,
                       const std::vector<std::string>& mounted,
                       std::vector<DriveToken>& tokens) {
  const std::vector<DriveToken> old = ReadDriveTokens(table);
  tokens.clear();
  std::set<std::string> taken;
  for (const std::string& folder : mounted) {
    auto kept = std::find_if(old.begin(), old.end(), [&](const DriveToken& t) {
      return t.folder == folder;
    });
    if (kept != old.end() && taken.insert(Upper(kept->token)).second) {
      tokens.push_back({kept->token, folder});
    }
  }
  for (const std::string& folder : mounted) {
    if (std::any_of(tokens.begin(), tokens.end(),
                    [&](const DriveToken& t) { return t.folder == folder; })) {
      continue;
    }
    for (char letter = kFirstLetter; letter <= kLastLetter; ++letter) {
      const std::string token = std::string(1, letter) + ":";
      if (taken.insert(token).second) {
        tokens.push_back({token, folder});
        break;
      }
    }
  }
  // The table keeps the order of the mount table.
  std::vector<DriveToken> ordered;
  for (const std::string& folder : mounted) {
    for (const DriveToken& t : tokens) {
      if (t.folder == folder) {
        ordered.push_back(t);
        break;
      }
    }
  }
  tokens = ordered;
  bool same = old.size() == tokens.size();
  for (std::size_t i = 0; same && i < tokens.size(); ++i) {
    same = old[i].token == tokens[i].token && old[i].folder == tokens[i].folder;
  }
  if (same) {
    return true;
  }
  std::string text;
  for (const DriveToken& t : tokens) {
    text += t.token + "\t" + t.folder + "\n";
  }
  return WriteFileAtomically(table, text.data(), text.size());
}

std::string DriveTokenFolder(const std::string& table,
                             const std::string& token) {
  for (const DriveToken& t : ReadDriveTokens(table)) {
    if (Upper(t.token) == Upper(token)) {
      return t.folder;
    }
  }
  return "";
}

}  // namespace qbpd
