#include "platform/xscreensaver_config.h"

#include <cstdio>
#include <string_view>

namespace qbpd {
namespace {

// One resource of the file: the lines [first, last] (a value going on over
// lines ending in "\").
struct Resource {
  std::string name;
  size_t first = 0;
  size_t last = 0;
};

struct Parsed {
  std::vector<std::string> lines;
  std::vector<Resource> resources;
  // Whether the text ended in a line break.
  bool final_break = true;
};

std::string_view TrimView(std::string_view s) {
  const size_t a = s.find_first_not_of(" \t\r");
  if (a == std::string_view::npos) {
    return {};
  }
  const size_t b = s.find_last_not_of(" \t\r");
  return s.substr(a, b - a + 1);
}

bool EndsInBackslash(std::string_view line) {
  const std::string_view t = TrimView(line);
  return !t.empty() && t.back() == '\\';
}

std::optional<Parsed> Parse(const std::string& text) {
  if (text.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  Parsed p;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      p.lines.push_back(text.substr(start));
      p.final_break = false;
      break;
    }
    p.lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  for (size_t i = 0; i < p.lines.size(); ++i) {
    const std::string_view t = TrimView(p.lines[i]);
    if (t.empty() || t.front() == '#' || t.front() == '!') {
      continue;
    }
    const size_t colon = t.find(':');
    if (colon == std::string_view::npos || colon == 0) {
      return std::nullopt;
    }
    std::string_view name = TrimView(t.substr(0, colon));
    // "*name" and "xscreensaver.name" are the same resource.
    if (name.front() == '*') {
      name.remove_prefix(1);
    }
    if (name.substr(0, 13) == "xscreensaver.") {
      name.remove_prefix(13);
    }
    if (name.find_first_of(" \t\"") != std::string_view::npos) {
      return std::nullopt;
    }
    Resource r{std::string(name), i, i};
    while (EndsInBackslash(p.lines[r.last]) && r.last + 1 < p.lines.size()) {
      ++r.last;
    }
    p.resources.push_back(r);
    i = r.last;
  }
  return p;
}

const Resource* Find(const Parsed& p, const std::string& name) {
  for (const Resource& r : p.resources) {
    if (r.name == name) {
      return &r;
    }
  }
  return nullptr;
}

// The whole value of a resource: its lines joined, each continuation's "\"
// dropped.
std::string ValueOf(const Parsed& p, const Resource& r) {
  std::string value;
  for (size_t i = r.first; i <= r.last; ++i) {
    std::string_view line = p.lines[i];
    if (i == r.first) {
      line = line.substr(line.find(':') + 1);
    }
    std::string_view t = TrimView(line);
    if (i < r.last || EndsInBackslash(t)) {
      if (!t.empty() && t.back() == '\\') {
        t.remove_suffix(1);
      }
    }
    value += std::string(t);
    value += ' ';
  }
  return value;
}

std::vector<std::string> EntriesOf(const std::string& value) {
  std::vector<std::string> entries;
  size_t start = 0;
  while (start <= value.size()) {
    size_t end = value.find("\\n", start);
    const std::string_view part = TrimView(std::string_view(value).substr(
        start, end == std::string::npos ? std::string::npos : end - start));
    if (!part.empty()) {
      entries.emplace_back(part);
    }
    if (end == std::string::npos) {
      break;
    }
    start = end + 2;
  }
  return entries;
}

std::string Join(const Parsed& p) {
  std::string out;
  for (size_t i = 0; i < p.lines.size(); ++i) {
    out += p.lines[i];
    if (i + 1 < p.lines.size() || p.final_break) {
      out += '\n';
    }
  }
  return out;
}

// Sets a one-line resource, in place or added at the end.
void SetResource(Parsed& p, const std::string& name, const std::string& value) {
  const std::string line = name + ":\t" + value;
  if (const Resource* r = Find(p, name)) {
    p.lines[r->first] = line;
    p.lines.erase(p.lines.begin() + static_cast<long>(r->first) + 1,
                  p.lines.begin() + static_cast<long>(r->last) + 1);
    return;
  }
  if (!p.final_break && !p.lines.empty()) {
    p.final_break = true;
  }
  p.lines.push_back(line);
}

}  // namespace

std::optional<std::vector<std::string>> SaverEntries(const std::string& text) {
  const std::optional<Parsed> p = Parse(text);
  if (!p) {
    return std::nullopt;
  }
  const Resource* r = Find(*p, "programs");
  if (r == nullptr) {
    return std::vector<std::string>{};
  }
  return EntriesOf(ValueOf(*p, *r));
}

std::optional<std::string> SaverResource(const std::string& text,
                                         const std::string& name) {
  const std::optional<Parsed> p = Parse(text);
  if (!p) {
    return std::nullopt;
  }
  const Resource* r = Find(*p, name);
  return r == nullptr ? std::string() : std::string(TrimView(ValueOf(*p, *r)));
}

std::optional<std::string> SelectSaverEntry(const std::string& text,
                                            const std::string& entry,
                                            const std::string& marker) {
  std::optional<Parsed> p = Parse(text);
  if (!p) {
    return std::nullopt;
  }
  std::vector<std::string> entries;
  const Resource* r = Find(*p, "programs");
  size_t at = p->lines.size();
  if (r != nullptr) {
    entries = EntriesOf(ValueOf(*p, *r));
    at = r->first;
    p->lines.erase(p->lines.begin() + static_cast<long>(r->first),
                   p->lines.begin() + static_cast<long>(r->last) + 1);
  }
  size_t selected = entries.size();
  for (size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].find(marker) != std::string::npos) {
      selected = i;
      break;
    }
  }
  if (selected == entries.size()) {
    entries.push_back(entry);
  } else {
    entries[selected] = entry;
  }
  // Written as XScreenSaver writes it: each entry on a line of its own, a
  // blank line ending the value.
  std::vector<std::string> block{"programs:\t\\"};
  for (const std::string& e : entries) {
    block.push_back("\t\t" + e + "\t\\n\\");
  }
  block.emplace_back("");
  p->lines.insert(p->lines.begin() + static_cast<long>(at), block.begin(),
                  block.end());
  std::optional<Parsed> again = Parse(Join(*p));
  if (!again) {
    return std::nullopt;
  }
  SetResource(*again, "mode", "one");
  SetResource(*again, "selected", std::to_string(selected));
  return Join(*again);
}

std::optional<std::string> SetSaverTimeout(const std::string& text,
                                           int seconds) {
  std::optional<Parsed> p = Parse(text);
  if (!p) {
    return std::nullopt;
  }
  char value[32];
  std::snprintf(value, sizeof value, "%d:%02d:%02d", seconds / 3600,
                seconds / 60 % 60, seconds % 60);
  SetResource(*p, "timeout", value);
  return Join(*p);
}

}  // namespace qbpd
