// libFuzzer target: the JSON reader over any text. Reading must either give a
// value or refuse; a value read must write out as JSON that reads back to the
// same value, and writing that again gives the same text.

#include "platform/json_value.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string error;
  const auto value = qbpd::ParseJson(text, &error);
  if (!value) {
    Check(!error.empty());
    return 0;
  }
  const std::string written = qbpd::SerializeJson(*value);
  const auto again = qbpd::ParseJson(written, &error);
  Check(again.has_value());
  Check(qbpd::SerializeJson(*again) == written);
  Check(again->kind() == value->kind());
  return 0;
}
