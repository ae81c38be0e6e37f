// libFuzzer target: the driver's script syntax over any line. Each reader
// either understands its text or refuses it with a syntax error; nothing else
// may escape, and a quoted text never holds a raw line end or NUL.

#include "app/driver/script_syntax.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

template <typename F>
void Tolerant(F&& read) {
  try {
    read();
  } catch (const qbpd::script::ScriptSyntaxError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  namespace s = qbpd::script;
  const std::string line(reinterpret_cast<const char*>(data), size);
  std::vector<s::Token> tokens;
  Tolerant([&] { tokens = s::Tokenize(line); });
  for (const s::Token& token : tokens) {
    Tolerant([&] { s::ParseTarget(token.text, true); });
    Tolerant([&] { s::ParseTarget(token.text, false); });
    Tolerant([&] { s::Number(token); });
    Tolerant([&] { s::ButtonId(token.text); });
    Tolerant([&] { s::CheckOperator(token.text); });
    const std::string quoted = s::Quote(token.text);
    Check(quoted.find('\n') == std::string::npos);
    Check(quoted.find('\0') == std::string::npos);
  }
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    std::size_t at = i;
    Tolerant([&] {
      const s::ScriptPoint point = s::ParsePoint(tokens, at);
      Check(at > i && at <= tokens.size());
      s::Describe(point);
    });
  }
  return 0;
}
